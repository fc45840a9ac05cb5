#include "support/TurnedTime.h"

#include <QCoreApplication>

#include <algorithm>
#include <tuple>
#include <utility>

namespace norvane {

namespace {

/// After so many turns without a pause, whoever talks without end has taken a millisecond for it.
constexpr int turnsOfAMillisecond = 1000;

} // namespace

class TurnedTime::TurnedAlarm : public TimeSource::Alarm
{
public:
    TurnedAlarm(TurnedTime &time, std::function<void()> due) : m_time(time), m_due(std::move(due))
    {}
    ~TurnedAlarm() override { cancel(); }

    void set(int milliseconds, Qt::TimerType) override
    {
        cancel();
        m_at = m_time.m_now + milliseconds * nanosecondsPerMs;
        m_number = ++m_time.m_sequence;
        m_time.m_set.append(this);
    }
    void cancel() override { m_time.m_set.removeAll(this); }
    bool isSet() const override { return m_time.m_set.contains(this); }

    qint64 at() const { return m_at; }
    /// In the order in which they were set, where they fall due together.
    auto order() const { return std::tuple(m_at, m_number); }
    void ring()
    {
        cancel();
        const std::function<void()> due = m_due;
        due();
    }

private:
    TurnedTime &m_time;
    const std::function<void()> m_due;
    qint64 m_at = 0;
    quint64 m_number = 0;
};

/// Counts the events that are delivered.
class TurnedTime::Turns : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *) override
    {
        ++delivered;
        return false;
    }

    quint64 delivered = 0;
};

TurnedTime::TurnedTime() : m_turns(std::make_unique<Turns>())
{
    qApp->installEventFilter(m_turns.get());
}

TurnedTime::~TurnedTime() = default;

std::unique_ptr<TimeSource::Alarm> TurnedTime::makeAlarm(std::function<void()> due)
{
    return std::make_unique<TurnedAlarm>(*this, std::move(due));
}

TurnedTime::TurnedAlarm *TurnedTime::next() const
{
    const auto first = std::min_element(m_set.cbegin(), m_set.cend(),
                                        [](const TurnedAlarm *one, const TurnedAlarm *other) {
                                            return one->order() < other->order();
                                        });
    return first == m_set.cend() ? nullptr : *first;
}

qint64 TurnedTime::untilNext() const
{
    const TurnedAlarm *const alarm = next();
    return alarm == nullptr ? -1 : (alarm->at() - m_now) / nanosecondsPerMs;
}

bool TurnedTime::ringNext(qint64 limit)
{
    TurnedAlarm *const alarm = next();
    if (alarm == nullptr || alarm->at() > limit)
        return false;
    m_now = std::max(m_now, alarm->at());
    ++m_rung;
    alarm->ring();
    return true;
}

/// @return whether anything happened
bool TurnedTime::takeTurn()
{
    const quint64 before = m_turns->delivered;
    QCoreApplication::processEvents();
    return m_turns->delivered != before || ringNext(m_now);
}

void TurnedTime::settle()
{
    for (int turn = 0; turn < turnsOfAMillisecond && takeTurn(); ++turn) {
    }
}

void TurnedTime::pass(qint64 milliseconds)
{
    const qint64 end = m_now + milliseconds * nanosecondsPerMs;
    settle();
    while (ringNext(end))
        settle();
    m_now = end;
}

bool TurnedTime::until(const std::function<bool()> &condition, qint64 limitMs)
{
    const qint64 end = m_now + limitMs * nanosecondsPerMs;
    for (int turn = 1;; ++turn) {
        if (condition())
            return true;
        if (turn % turnsOfAMillisecond == 0)
            pass(1);
        if (m_now <= end && (takeTurn() || ringNext(end)))
            continue;
        m_now = std::max(m_now, end);
        return condition();
    }
}

} // namespace norvane
