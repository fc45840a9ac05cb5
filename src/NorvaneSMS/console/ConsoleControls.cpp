#include "NorvaneSMS/console/ConsoleControls.h"

#include "NorvaneSMS/console/CondensedCellDelegate.h"
#include "NorvaneSMS/console/ConsoleDesign.h"
#include "NorvaneSMS/console/ConsoleLayout.h"
#include "NorvaneSMS/console/QueueGrid.h"
#include "NorvaneSMS/console/QueueGridModel.h"
#include "NorvaneSMS/console/TerminalView.h"
#include "foundation/ui/CaptionedFrame.h"
#include "foundation/ui/Contrast.h"
#include "foundation/ui/FormSetUp.h"
#include "foundation/ui/ImageControl.h"
#include "foundation/ui/MessageEdit.h"
#include "foundation/ui/PhoneEdit.h"
#include "foundation/ui/PictureButton.h"
#include "foundation/ui/SvgPicture.h"
#include "foundation/ui/Twips.h"

#include <QDateEdit>
#include <QHeaderView>
#include <QLabel>
#include <QTableView>

#include <algorithm>
#include <cmath>
#include <vector>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using ConsoleDesign::Control;
using ConsoleDesign::Kind;

QString pictureFile(QLatin1String name)
{
    return u":/images/"_s + name + u".svg"_s;
}

PictureButton *makeButton(const Control &design, QWidget *parent)
{
    auto *const button = new PictureButton(parent);
    const QSize size(design.pictureSize, design.pictureSize);
    const QString disabled =
        design.disabledPicture.isEmpty() ? QString() : pictureFile(design.disabledPicture);
    button->setIcon(SvgPicture::icon(pictureFile(design.picture), size, disabled));
    button->setIconSize(size);
    button->setText(design.text);
    return button;
}

QLabel *makeLabel(const Control &design, QWidget *parent)
{
    auto *const label = new QLabel(design.text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(design.kind == Kind::CentredLabel ? Qt::AlignHCenter | Qt::AlignTop
                                                          : Qt::AlignLeft | Qt::AlignTop);
    return label;
}

CaptionedFrame *makeFrame(const Control &design, QWidget *parent)
{
    auto *const frame = new CaptionedFrame(parent);
    frame->setCaption(design.text);
    return frame;
}

QDateEdit *makeDateBox(QWidget *parent)
{
    auto *const box = new QDateEdit(parent);
    box->setDisplayFormat(u"dd/MM/yyyy"_s);
    box->setDateRange(QDate(100, 1, 1), QDate(9999, 12, 31));
    box->setCalendarPopup(true);
    return box;
}

QTimeEdit *makeTimeBox(QWidget *parent)
{
    auto *const box = new QTimeEdit(parent);
    box->setDisplayFormat(u"HH:mm:ss"_s);
    // The box has just the room for its digits; they are typed, or turned with the arrow keys.
    box->setButtonSymbols(QAbstractSpinBox::NoButtons);
    return box;
}

TerminalView *makeTerminal(QWidget *parent)
{
    auto *const terminal = new TerminalView(parent);
    QFont font(u"Liberation Mono"_s);
    font.setStyleHint(QFont::Monospace);
    font.setPointSizeF(9.75);
    terminal->setFont(font);
    QPalette colours = terminal->palette();
    colours.setColor(QPalette::Base, colours.color(QPalette::Button));
    terminal->setPalette(colours);
    terminal->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    return terminal;
}

MessageEdit *makeMessageBox(QWidget *parent)
{
    auto *const box = new MessageEdit(parent);
    box->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    box->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QPalette colours = box->palette();
    colours.setColor(QPalette::Base, Qt::white);
    colours.setColor(QPalette::Text, Qt::black);
    box->setPalette(colours);
    return box;
}

void setUpGrid(QTableView *grid)
{
    grid->setTabKeyNavigation(false);
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid->setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
    grid->setWordWrap(false);
    grid->setAlternatingRowColors(true);
    grid->setItemDelegateForColumn(QueueGridModel::DeliveryDate, new CondensedCellDelegate(grid));
    grid->verticalHeader()->hide();
    grid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    grid->verticalHeader()->setDefaultSectionSize(grid->fontMetrics().height() + 5);
    grid->horizontalHeader()->setHighlightSections(false);
    grid->horizontalHeader()->setSectionsClickable(false);
    grid->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
}

QTableView *makeQueueGrid(QWidget *parent)
{
    auto *const grid = new QueueGrid(parent);
    grid->setSelectionMode(QAbstractItemView::ExtendedSelection);
    setUpGrid(grid);
    return grid;
}

/// A log: nothing in it can be edited or selected.
QTableView *makeSentGrid(QWidget *parent)
{
    auto *const grid = new QTableView(parent);
    grid->setSelectionMode(QAbstractItemView::NoSelection);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    setUpGrid(grid);
    return grid;
}

QWidget *make(const Control &design, QWidget *parent)
{
    switch (design.kind) {
    case Kind::Panel:
        return new QWidget(parent);
    case Kind::Frame:
        return makeFrame(design, parent);
    case Kind::Button:
        return makeButton(design, parent);
    case Kind::Label:
    case Kind::CentredLabel:
        return makeLabel(design, parent);
    case Kind::PhoneBox:
        return new PhoneEdit(parent);
    case Kind::MessageBox:
        return makeMessageBox(parent);
    case Kind::DateBox:
        return makeDateBox(parent);
    case Kind::TimeBox:
        return makeTimeBox(parent);
    case Kind::Terminal:
        return makeTerminal(parent);
    case Kind::QueueGrid:
        return makeQueueGrid(parent);
    case Kind::SentGrid:
        return makeSentGrid(parent);
    case Kind::Image:
        return new ImageControl(pictureFile(design.picture), parent);
    }
    Q_UNREACHABLE();
}

} // namespace

template <typename Widget>
ConsoleControls::Named::operator Widget *() const
{
    auto *const control = qobject_cast<Widget *>(m_control);
    Q_ASSERT_X(control, "ConsoleControls", m_name);
    return control;
}

ConsoleControls::ConsoleControls(QWidget *window) : m_window(window), m_byName(makeAll())
{
    setTabOrder();
    setColours();
    lblPhone->setBuddy(txtPhone);
    lblDeliveryDate->setBuddy(dtDeliveryDate);
    // Of the pictures in one place only one is shown: "not running" and "empty", until the state is
    // known.
    imgEngineStatus[1]->hide();
    imgQueue[1]->hide();
    picLateralPanel->raise();
}

QSizeF ConsoleControls::twipsPerPixel() const
{
    return norvane::twipsPerPixel(m_window);
}

void ConsoleControls::place(QWidget *control, const Twips::Rect &place) const
{
    control->setGeometry(Twips::toPixels(place, twipsPerPixel()));
}

void ConsoleControls::place(const ConsoleLayout &layout, float width, float height) const
{
    place(picTopPanel, {0, 0, width, layout.topPanelHeight});
    place(picBottomPanel, {0, height - layout.bottomPanelHeight, width, layout.bottomPanelHeight});
    place(picMiddlePanel, layout.picMiddlePanel);
    place(fraCommunication, layout.fraCommunication);
    place(picLateralPanel, layout.picLateralPanel);
    place(txtTerm, layout.txtTerm);
    place(fraSentDetails, layout.fraSentDetails);
    place(fraQueueDetails, layout.fraQueueDetails);
    place(grdQueue, layout.grdQueue);
    place(grdSentDetails, layout.grdSentDetails);
    place(btnClearQueue, layout.btnClearQueue);
    place(btnStop, layout.btnStop);
    place(btnStart, layout.btnStart);
}

void ConsoleControls::setColumnWidths() const
{
    const qreal twipsPerPixel = this->twipsPerPixel().width();
    for (QTableView *const grid : std::initializer_list<QTableView *>{grdQueue, grdSentDetails}) {
        int column = 0;
        for (const float width : ConsoleDesign::columnWidths)
            grid->setColumnWidth(column++, static_cast<int>(std::lround(width / twipsPerPixel)));
    }
}

void ConsoleControls::setServerEnabled(bool enabled) const
{
    // Each control has an enabled flag of its own, whatever its frame's is, and one of the two
    // status pictures is left out.
    for (CaptionedFrame *const frame : {fraCommunication, fraDeviceStatus, fraEngineStatus,
                                        fraQueueDetails, fraQueueStatus, fraSentDetails})
        frame->setFrameEnabled(enabled);

    const std::initializer_list<QWidget *> controls = {
        btnTestDevice,   btnClearQueue,      btnStart,     btnStop,     grdQueue,
        grdSentDetails,  imgEngineStatus[0], imgQueue[0],  imgQueue[1], lblDeviceInfo,
        lblDeviceStatus, lblEngineStatus,    lblEstimated, lblQueueSize};
    for (QWidget *const control : controls)
        control->setEnabled(enabled);
}

void ConsoleControls::setCaption(const QString &name, const QString &text) const
{
    QWidget *const control = m_byName.value(name);
    if (auto *const frame = qobject_cast<CaptionedFrame *>(control))
        frame->setCaption(text);
    else if (auto *const button = qobject_cast<PictureButton *>(control))
        button->setText(text);
    else if (auto *const label = qobject_cast<QLabel *>(control))
        label->setText(text);
}

void ConsoleControls::setAccessibleName(const QString &name, const QString &text) const
{
    QWidget *const control = m_byName.value(name);
    control->setAccessibleName(text);
    const auto *const button = qobject_cast<PictureButton *>(control);
    if (button && button->text().isEmpty())
        control->setToolTip(text);
}

QHash<QString, QWidget *> ConsoleControls::makeAll() const
{
    QHash<QString, QWidget *> made;
    for (const Control &design : ConsoleDesign::controls()) {
        QWidget *const container =
            design.container.isEmpty() ? m_window : made.value(design.container);
        QWidget *const control = make(design, container);
        control->setObjectName(design.name);
        made.insert(design.name, control);
        place(control, design.place);
    }
    return made;
}

void ConsoleControls::setTabOrder() const
{
    std::vector<std::pair<int, QWidget *>> order;
    for (const Control &design : ConsoleDesign::controls()) {
        QWidget *const control = m_byName.value(design.name);
        if (design.tab != ConsoleDesign::noTab && control->focusPolicy() != Qt::NoFocus)
            order.emplace_back(design.tab, control);
    }
    std::sort(order.begin(), order.end());
    for (size_t i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order[i - 1].second, order[i].second);
}

void ConsoleControls::setColours() const
{
    QPalette counter = lblSMSChars->palette();
    counter.setColor(QPalette::WindowText, QColor(0x66, 0x7E, 0xA2));
    // On the window of a dark desktop the colour can't be read.
    if (Contrast::isDark(m_window->palette())) {
        counter.setColor(QPalette::Window, Contrast::plainGround(m_window->palette()));
        lblSMSChars->setAutoFillBackground(true);
        // An indent would move the text down as well, off the label.
        lblSMSChars->setContentsMargins(2, 0, 2, 0);
    }
    lblSMSChars->setPalette(counter);
}

} // namespace norvane
