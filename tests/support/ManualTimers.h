#pragma once

#include "foundation/platform/TimerPlatform.h"

#include <QList>
#include <QStringList>

#include <stdexcept>

namespace norvane {

using namespace Qt::StringLiterals;

/// Timers that tick when a test says so, on a clock that stands still. They note what is asked of
/// them, and are the timers in use while they are in scope. The windows are the platform's own.
class ManualTimers : public TimerPlatform
{
public:
    struct Event
    {
        quint32 id;
        TimerProc callback;
        WindowHandle user;
        qint32 type;
    };

    ManualTimers() : m_previous(installTimerPlatform(this)) {}
    ~ManualTimers() override { installTimerPlatform(m_previous); }

    void beginPeriod(quint32 milliseconds) override
    {
        calls.append(u"begin %1"_s.arg(milliseconds));
    }
    void endPeriod(quint32 milliseconds) override { calls.append(u"end %1"_s.arg(milliseconds)); }
    quint32 setEvent(qint32 delay, qint32 resolution, TimerProc callback, WindowHandle user,
                     qint32 type) override
    {
        calls.append(u"set %1 %2 %3"_s.arg(delay).arg(resolution).arg(type));
        if (refusesEvents)
            return 0;
        events.append({++m_lastId, callback, user, type});
        return m_lastId;
    }
    void killEvent(quint32 id) override
    {
        calls.append(u"kill %1"_s.arg(id));
        events.removeIf([id](const Event &event) { return event.id == id; });
    }
    qint32 clockMs() override { return now; }

    WindowHandle createWindow(int &error) override
    {
        error = windowError;
        return windowError == 0 ? TimerPlatform::createWindow(error) : 0;
    }
    WindowProc windowProc(WindowHandle window) override
    {
        if (!windowsHaveProcedures)
            return nullptr;
        return ownProcedure ? ownProcedure : TimerPlatform::windowProc(window);
    }
    void setWindowProc(WindowHandle window, WindowProc procedure) override
    {
        if (proceduresFail)
            throw std::runtime_error("no procedure");
        TimerPlatform::setWindowProc(window, procedure);
    }
    void postMessage(WindowHandle window, quint32 message, quint64 wParam, qint64 lParam) override
    {
        if (postsFail)
            throw std::runtime_error("no queue");
        TimerPlatform::postMessage(window, message, wParam, lParam);
    }

    /// One tick of every timer. Its messages wait for the event loop.
    void tick()
    {
        const QList<Event> ticking = events;
        for (const Event &event : ticking) {
            if ((event.type & Periodic) == 0)
                events.removeIf([&](const Event &other) { return other.id == event.id; });
            event.callback(event.id, 0, static_cast<quintptr>(event.user), 0, 0);
        }
    }

    qint32 now = 0;
    bool refusesEvents = false;
    int windowError = 0; ///< other than 0: there is no window to be had
    bool windowsHaveProcedures = true;
    bool proceduresFail = false; ///< to be set in a window
    bool postsFail = false;
    WindowProc ownProcedure = nullptr; ///< that windows have at first, in place of the platform's
    QStringList calls;
    QList<Event> events; ///< those that run

private:
    TimerPlatform *m_previous;
    quint32 m_lastId = 0;
};

} // namespace norvane
