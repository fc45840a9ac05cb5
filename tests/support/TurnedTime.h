#pragma once

#include "TovekSMService/time/TimeSource.h"

#include <QList>
#include <QObject>

#include <functional>

namespace norvane {

/// Time that passes when a test says so. Between two alarms everything happens that waits for
/// nothing but its turn in the event loop, so a busy machine makes no difference.
class TurnedTime : public TimeSource
{
public:
    TurnedTime();
    ~TurnedTime() override;

    qint64 nanoseconds() const override { return m_now; }
    std::unique_ptr<Alarm> makeAlarm(std::function<void()> due) override;

    /// Milliseconds since the beginning.
    qint64 elapsed() const { return m_now / nanosecondsPerMs; }

    /// Lets everything happen that waits for nothing but its turn; no time passes.
    void settle();
    /// Passes so much time, with everything that falls due in it.
    void pass(qint64 milliseconds);
    /// Passes time, alarm by alarm, until `condition` holds. Nothing ends it early: the limit is
    /// one of the time that is turned.
    /// @return whether it holds
    bool until(const std::function<bool()> &condition, qint64 limitMs = 3'600'000);

    /// The alarms that are set.
    qsizetype alarms() const { return m_set.size(); }
    /// How many alarms have rung since the beginning.
    int rung() const { return m_rung; }
    /// When the next alarm is due, in milliseconds from now; -1 for none.
    qint64 untilNext() const;

private:
    class TurnedAlarm;
    class Turns;

    static constexpr qint64 nanosecondsPerMs = 1'000'000;

    TurnedAlarm *next() const;
    /// Moves to the next alarm, if it is due by `limit`, and lets it ring.
    bool ringNext(qint64 limit);
    bool takeTurn();

    qint64 m_now = 0;
    quint64 m_sequence = 0;
    int m_rung = 0;
    QList<TurnedAlarm *> m_set;
    std::unique_ptr<Turns> m_turns;
};

} // namespace norvane
