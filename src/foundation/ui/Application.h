#pragma once

#include "foundation/ui/PressFocus.h"
#include "foundation/ui/WheelFocus.h"

#include <QApplication>

namespace norvane {

/// The application object of the console. Every handler (of clicks, timers, engine events and
/// sockets) runs below notify(), so a failure that none of them catches ends there, in the fatal
/// report, and never crosses the event loop. It also holds what is the same in every window: which
/// presses and turns of the wheel need or give the focus.
class Application : public QApplication
{
    Q_OBJECT

public:
    Application(int &argc, char **argv);

    bool notify(QObject *receiver, QEvent *event) override;

private:
    PressFocus m_pressFocus;
    WheelFocus m_wheelFocus;
};

} // namespace norvane
