#include "foundation/ui/WidgetMessageBoxes.h"

#include <QApplication>
#include <QMessageBox>

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

} // namespace

MessageBoxes::Answer WidgetMessageBoxes::show(const QString &text, Icon icon, Buttons buttons,
                                              const QString &title)
{
    QMessageBox box(QApplication::activeWindow());
    box.setTextFormat(Qt::PlainText);
    box.setIcon(widgetIcon(icon));
    box.setWindowTitle(title);
    box.setText(text);
    if (buttons == Buttons::Ok) {
        box.setStandardButtons(QMessageBox::Ok);
        box.exec();
        return Answer::Ok;
    }
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::Yes);
    box.setEscapeButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes ? Answer::Yes : Answer::No;
}
