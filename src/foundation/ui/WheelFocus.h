#pragma once

#include <QObject>

namespace norvane {

/// Only a box that has the focus listens to the wheel: spin, date and time boxes and drop-down
/// lists are not changed by a pointer that just stands over them, and the wheel doesn't give them
/// the focus.
///
/// To be installed as an event filter of the application.
class WheelFocus : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override;
};

} // namespace norvane
