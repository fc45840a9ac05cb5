#pragma once

#include "foundation/platform/MessageWindows.h"

#include <QtGlobal>

namespace norvane {

/// What a platform's timer calls at each of its ticks, on a thread of the platform's own.
using TimerProc = void (*)(quint32 id, quint32 message, quintptr user, quintptr reserved1,
                           quintptr reserved2);

/// The platform's millisecond timers, its clock, and the windows that the ticks are sent to. A test
/// puts its own in their place.
class TimerPlatform
{
public:
    enum EventType : qint32 { OneShot = 0, Periodic = 1 };

    TimerPlatform() = default;
    TimerPlatform(const TimerPlatform &) = delete;
    TimerPlatform &operator=(const TimerPlatform &) = delete;
    virtual ~TimerPlatform() = default;

    /// Asks for a system clock that ticks every so many milliseconds, and no longer. Calls come in
    /// pairs.
    virtual void beginPeriod(quint32 milliseconds) = 0;
    virtual void endPeriod(quint32 milliseconds) = 0;

    /// Starts a timer that calls `callback` with `user` after each `delay`, or once.
    /// @param delay       milliseconds
    /// @param resolution  how late a tick may be, in milliseconds; 0 for as exact as can be
    /// @param type        Periodic if its lowest bit is set, else OneShot
    /// @return the timer's id, 0 if it can't be started
    virtual quint32 setEvent(qint32 delay, qint32 resolution, TimerProc callback, WindowHandle user,
                             qint32 type) = 0;
    /// Ends a timer. When it returns, the callback isn't running any more and won't again. Nothing
    /// happens for an id that isn't known.
    virtual void killEvent(quint32 id) = 0;

    /// Milliseconds on a clock of 32 bits that can't be set.
    virtual qint32 clockMs() = 0;

    /// A new window that is never seen.
    /// @param error  the platform's error if no window can be created
    /// @return 0 in that case
    virtual WindowHandle createWindow(int &error);
    /// @return null if the window has none
    virtual WindowProc windowProc(WindowHandle window);
    virtual void setWindowProc(WindowHandle window, WindowProc procedure);
    /// Queues a message behind all that were sent before.
    virtual void postMessage(WindowHandle window, quint32 message, quint64 wParam, qint64 lParam);
};

/// The timers in use: the platform's own until others are installed.
TimerPlatform &timerPlatform();

/// Makes `platform` the timers in use until the next call, null the platform's own; they must
/// outlive it and every timer that was started meanwhile.
/// @return what was installed before, null for the platform's own
TimerPlatform *installTimerPlatform(TimerPlatform *platform);

} // namespace norvane
