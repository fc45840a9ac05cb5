#pragma once

#include "foundation/MTimerMM.h"

#include <QObject>

#include <memory>

namespace norvane {

/// A timer with millisecond accuracy that raises its event on the interface thread.
///
/// A running timer is registered, and so lives on when its owner drops it; the owner ends it by
/// setting Enabled to false.
class CTimerMM : public QObject, public std::enable_shared_from_this<CTimerMM>
{
    Q_OBJECT

public:
    /// A stopped timer whose properties are all zero.
    static std::shared_ptr<CTimerMM> create();
    ~CTimerMM() override;

    bool Enabled() const { return m_enabled; }
    /// Starts or stops the timer; the value that it has already does nothing.
    /// @throws NumberedFailure 380 if Interval is below 1 or Resolution below 0, 51 if the hidden
    ///         window can't be had
    void setEnabled(bool enabled);

    /// Milliseconds. A new value counts from the next start.
    qint32 Interval() const { return m_interval; }
    /// @throws NumberedFailure 380 below 1
    void setInterval(qint32 milliseconds);

    /// Milliseconds. A new value counts from the next start.
    qint32 Resolution() const { return m_resolution; }
    /// @throws NumberedFailure 380 below 0
    void setResolution(qint32 milliseconds);

    /// 0 for one tick, 1 for a tick after each interval; handed on as it stands. After its one tick
    /// a timer stays enabled.
    qint32 EventType() const { return m_eventType; }
    void setEventType(qint32 eventType) { m_eventType = eventType; }

Q_SIGNALS:
    /// @param lMilliseconds  from the start, or from the end of the previous event's handling, to
    ///                       this tick
    void Timer(qint32 lMilliseconds);

private:
    CTimerMM() = default;

    friend qint64 MTimerMM::TimerWindowProc(WindowHandle, quint32, quint64, qint64);
    /// @throws NumberedFailure 6 if the clock has passed from 0x7FFFFFFF to 0x80000000 since the
    ///         last event; no event is raised then
    void RaiseTimerEvent();

    qint32 m_interval = 0;
    qint32 m_resolution = 0;
    qint32 m_eventType = 0;
    quint32 m_timerId = 0;
    qint32 m_lastTick = 0;
    qint32 m_thisTick = 0;
    WindowHandle m_window = 0;
    bool m_enabled = false;
};

} // namespace norvane
