#include "foundation/ui/PictureButton.h"

#include <QKeyEvent>
#include <QStyleOptionButton>
#include <QStylePainter>

namespace norvane {

namespace {
constexpr int contentMargin = 3; // pixels between the button's edge and its content
constexpr int pictureGap = 2;    // pixels between picture and caption
} // namespace

void PictureButton::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter)
        QPushButton::keyPressEvent(event);
    else if (!event->isAutoRepeat())
        click();
}

void PictureButton::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    option.icon = QIcon();
    painter.drawControl(QStyle::CE_PushButton, option);

    QRect content = rect().adjusted(contentMargin, contentMargin, -contentMargin, -contentMargin);
    if (option.state.testFlag(QStyle::State_Sunken))
        content.translate(style()->pixelMetric(QStyle::PM_ButtonShiftHorizontal, &option, this),
                          style()->pixelMetric(QStyle::PM_ButtonShiftVertical, &option, this));

    const int textFlags = Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap |
                          (option.state.testFlag(QStyle::State_HasFocus) || text().contains(u'&')
                               ? Qt::TextShowMnemonic
                               : 0);
    const QRect textRect =
        text().isEmpty() ? QRect() : fontMetrics().boundingRect(content, textFlags, text());
    const int gap = text().isEmpty() ? 0 : pictureGap;
    // A picture too high for its button is drawn smaller, never the caption cut.
    const QSize room(content.width(), content.height() - gap - textRect.height());
    const QSize picture = iconSize().height() > room.height()
                              ? iconSize().scaled(room, Qt::KeepAspectRatio)
                              : iconSize();
    const int top =
        content.top() + (content.height() - picture.height() - gap - textRect.height()) / 2;

    const QIcon::Mode mode = isEnabled() ? QIcon::Normal : QIcon::Disabled;
    const QRect pictureRect(content.left() + (content.width() - picture.width()) / 2, top,
                            picture.width(), picture.height());
    icon().paint(&painter, pictureRect, Qt::AlignCenter, mode);
    if (!text().isEmpty()) {
        const QRect below(content.left(), top + picture.height() + gap, content.width(),
                          textRect.height());
        style()->drawItemText(&painter, below, textFlags, option.palette, isEnabled(), text(),
                              QPalette::ButtonText);
    }
}

} // namespace norvane
