#include "foundation/ui/WheelFocus.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QEvent>

namespace norvane {

namespace {

/// The box that `object` is and that the wheel would change; null if it is none.
QWidget *boxOf(QObject *object)
{
    if (auto *const spinBox = qobject_cast<QAbstractSpinBox *>(object))
        return spinBox;
    return qobject_cast<QComboBox *>(object);
}

} // namespace

bool WheelFocus::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Polish) {
        QWidget *const box = boxOf(watched);
        if (box && box->focusPolicy() == Qt::WheelFocus)
            box->setFocusPolicy(Qt::StrongFocus);
    } else if (event->type() == QEvent::Wheel) {
        QWidget *const box = boxOf(watched);
        if (box && !box->hasFocus()) {
            event->ignore(); // it is for what lies below the box
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace norvane
