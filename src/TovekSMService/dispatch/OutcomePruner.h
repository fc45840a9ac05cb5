#pragma once

#include "TovekSMService/time/Timer.h"

#include <QObject>

namespace norvane {

class Clock;
class Outcomes;

/// Forgets outcomes that are older than they are to be kept, a few at a time, so that nothing else
/// waits for it.
class OutcomePruner : public QObject
{
    Q_OBJECT

public:
    struct Pace
    {
        int outcomes = 200;     ///< in one step
        int stepMs = 1000;      ///< between two steps while there is more to forget
        int restMs = 3'600'000; ///< until it looks again
    };

    /// @param outcomes, clock  must outlive this object
    OutcomePruner(Outcomes &outcomes, const Clock &clock, int keepDays, const Pace &pace);

private:
    void step();

    Outcomes &m_outcomes;
    const Clock &m_clock;
    const qint64 m_keepSeconds;
    const Pace m_pace;
    Timer m_timer;
};

} // namespace norvane
