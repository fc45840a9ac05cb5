#include "foundation/ui/ConsoleStyle.h"

#include "foundation/ui/Contrast.h"
#include "foundation/ui/SvgPicture.h"

#include <QAbstractScrollArea>
#include <QCheckBox>
#include <QEvent>
#include <QPainter>
#include <QRadioButton>
#include <QStyleOption>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int boxPicture = 32;
constexpr qreal edgeRadius = 2;
constexpr qreal focusWidth = 2;

QString boxPictureFile(QStyle::StandardPixmap picture)
{
    switch (picture) {
    case QStyle::SP_MessageBoxQuestion:
        return u":/images/box-question.svg"_s;
    case QStyle::SP_MessageBoxWarning:
        return u":/images/box-warning.svg"_s;
    case QStyle::SP_MessageBoxCritical:
        return u":/images/box-critical.svg"_s;
    case QStyle::SP_MessageBoxInformation:
        return u":/images/box-information.svg"_s;
    default:
        return {};
    }
}

/// The line around a field: the toolkit darkens the window's colour, which can't be seen on a dark
/// window.
QColor outlineOf(const QStyleOption &option)
{
    const QColor text = option.palette.color(QPalette::WindowText);
    const QColor ground = option.palette.color(QPalette::Window);
    return QColor((text.red() + ground.red()) / 2, (text.green() + ground.green()) / 2,
                  (text.blue() + ground.blue()) / 2);
}

/// The colour that marks the focus: that of selections, in enough contrast to the window.
QColor focusColour(const QStyleOption &option)
{
    return Contrast::apart(option.palette.color(QPalette::Highlight),
                           option.palette.color(QPalette::Window), Contrast::leastOfOutlines);
}

void drawOutline(QPainter &painter, const QStyleOption &option, const QPen &pen, bool round)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    const qreal inset = pen.widthF() / 2;
    const QRectF edge = QRectF(option.rect).adjusted(inset, inset, -inset, -inset);
    if (round)
        painter.drawEllipse(edge);
    else
        painter.drawRoundedRect(edge, edgeRadius, edgeRadius);
    painter.restore();
}

void drawFocus(QPainter &painter, const QStyleOption &option)
{
    drawOutline(painter, option, {focusColour(option), focusWidth}, false);
}

bool hasFocus(const QStyleOption &option)
{
    return option.state.testFlag(QStyle::State_HasFocus);
}

bool isField(QStyle::PrimitiveElement element)
{
    return element == QStyle::PE_FrameLineEdit || element == QStyle::PE_IndicatorCheckBox ||
           element == QStyle::PE_IndicatorRadioButton;
}

/// Whether the frame is that of a text box or grid.
bool isScrolled(QStyle::PrimitiveElement element, const QWidget *widget)
{
    return element == QStyle::PE_Frame && qobject_cast<const QAbstractScrollArea *>(widget);
}

/// Whether the focus is shown on what is drawn, and the toolkit shows it there too faintly.
bool showsFocus(QStyle::PrimitiveElement element, const QWidget *widget)
{
    if (element == QStyle::PE_FrameFocusRect)
        return qobject_cast<const QRadioButton *>(widget) ||
               qobject_cast<const QCheckBox *>(widget);
    return element == QStyle::PE_FrameLineEdit || element == QStyle::PE_PanelButtonCommand ||
           isScrolled(element, widget);
}

} // namespace

ConsoleStyle::ConsoleStyle() : QProxyStyle(u"Fusion"_s) {}

void ConsoleStyle::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    if (qobject_cast<QAbstractScrollArea *>(widget))
        widget->installEventFilter(this);
}

void ConsoleStyle::unpolish(QWidget *widget)
{
    widget->removeEventFilter(this);
    QProxyStyle::unpolish(widget);
}

bool ConsoleStyle::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        static_cast<QWidget *>(watched)->update(); // its frame, which it leaves alone itself
    return QProxyStyle::eventFilter(watched, event);
}

int ConsoleStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                            QStyleHintReturn *returnData) const
{
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons)
        return 0;
    return QProxyStyle::styleHint(hint, option, widget, returnData);
}

int ConsoleStyle::pixelMetric(PixelMetric metric, const QStyleOption *option,
                              const QWidget *widget) const
{
    return metric == PM_MessageBoxIconSize ? boxPicture
                                           : QProxyStyle::pixelMetric(metric, option, widget);
}

QIcon ConsoleStyle::standardIcon(StandardPixmap standardIcon, const QStyleOption *option,
                                 const QWidget *widget) const
{
    const QString file = boxPictureFile(standardIcon);
    return file.isEmpty() ? QProxyStyle::standardIcon(standardIcon, option, widget)
                          : SvgPicture::icon(file, {boxPicture, boxPicture});
}

void ConsoleStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option,
                                 QPainter *painter, const QWidget *widget) const
{
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    if (hasFocus(*option) && showsFocus(element, widget))
        drawFocus(*painter, *option);
    else if ((isScrolled(element, widget) || isField(element)) && Contrast::isDark(option->palette))
        drawOutline(*painter, *option, outlineOf(*option), element == PE_IndicatorRadioButton);
}

void ConsoleStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                                      QPainter *painter, const QWidget *widget) const
{
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control != CC_SpinBox && control != CC_ComboBox)
        return;
    if (hasFocus(*option))
        drawFocus(*painter, *option);
    else if (Contrast::isDark(option->palette))
        drawOutline(*painter, *option, outlineOf(*option), false);
}

} // namespace norvane
