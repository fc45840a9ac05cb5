#include "foundation/ui/WidgetMessageBoxes.h"

#include <QApplication>
#include <QGridLayout>
#include <QMessageBox>

#include <algorithm>

namespace norvane {

namespace {

QMessageBox::Icon widgetIcon(MessageBoxes::Icon icon)
{
    switch (icon) {
    case MessageBoxes::Icon::Critical:
        return QMessageBox::Critical;
    case MessageBoxes::Icon::Question:
        return QMessageBox::Question;
    case MessageBoxes::Icon::Exclamation:
        return QMessageBox::Warning;
    case MessageBoxes::Icon::Information:
        return QMessageBox::Information;
    case MessageBoxes::Icon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

/// Whether a box can stand over `window`. One over a minimised window would be as invisible.
bool canOwn(const QWidget *window)
{
    return window && window->isVisible() && !window->isMinimized() &&
           (window->windowType() == Qt::Window || window->windowType() == Qt::Dialog);
}

/// The window that a box belongs to: the active one. While none of them is (the dialog before has
/// just been closed, or another program is in front), the dialog that is open, else the console.
QWidget *boxOwner()
{
    for (QWidget *const window :
         {QApplication::activeWindow(), QApplication::activeModalWidget()}) {
        if (canOwn(window))
            return window;
    }
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto found = std::find_if(windows.cbegin(), windows.cend(), canOwn);
    return found == windows.cend() ? nullptr : *found;
}

/// Makes room for the whole title. Its face is the window manager's, which is unknown here and
/// often larger and bolder than the program's; beside it stand the window's icon and buttons.
void widenToTitle(QMessageBox &box)
{
    constexpr int besides = 110; // pixels
    const int title = box.fontMetrics().horizontalAdvance(box.windowTitle()) * 3 / 2;
    auto *const layout = qobject_cast<QGridLayout *>(box.layout());
    layout->addItem(new QSpacerItem(title + besides, 0), layout->rowCount(), 0, 1,
                    layout->columnCount());
}

} // namespace

MessageBoxes::Answer WidgetMessageBoxes::show(const QString &text, Icon icon, Buttons buttons,
                                              const QString &title)
{
    QMessageBox box(boxOwner());
    box.setTextFormat(Qt::PlainText);
    box.setIcon(widgetIcon(icon));
    box.setWindowTitle(title);
    box.setText(text);
    widenToTitle(box);
    if (buttons == Buttons::Ok) {
        box.setStandardButtons(QMessageBox::Ok);
        box.exec();
        return Answer::Ok;
    }
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(buttons == Buttons::YesNoDefaultNo ? QMessageBox::No : QMessageBox::Yes);
    box.setEscapeButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes ? Answer::Yes : Answer::No;
}

} // namespace norvane
