#include "foundation/ui/PressFocus.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QFocusEvent>

namespace norvane {

bool PressFocus::eventFilter(QObject *watched, QEvent *event)
{
    // Each widget is polished before it is shown for the first time. Every way to press a button
    // emits pressed() before it emits clicked().
    if (event->type() == QEvent::Polish) {
        if (auto *const button = qobject_cast<QAbstractButton *>(watched))
            connect(button, &QAbstractButton::pressed, this, [button] { giveFocusTo(button); });
    }
    return QObject::eventFilter(watched, event);
}

void PressFocus::giveFocusTo(QAbstractButton *button)
{
    if ((button->focusPolicy() & Qt::ClickFocus) != Qt::ClickFocus)
        return;
    QWidget *const former = button->window()->focusWidget();
    if (former == button)
        return;
    const bool isActive = button->isActiveWindow();
    button->setFocus(Qt::OtherFocusReason);
    // In an inactive window the toolkit moves the focus without an event for the widget that loses
    // it.
    if (!isActive && former) {
        QFocusEvent leave(QEvent::FocusOut, Qt::OtherFocusReason);
        QCoreApplication::sendEvent(former, &leave);
    }
}

} // namespace norvane
