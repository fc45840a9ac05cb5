#pragma once

#include "TovekSMService/time/TimeSource.h"

#include <optional>

namespace norvane {

/// Measures what has passed on a time source since it was started.
class Stopwatch
{
public:
    /// @param time  must outlive this object
    explicit Stopwatch(const TimeSource &time) : m_time(&time) {}

    void start() { m_started = m_time->nanoseconds(); }
    void invalidate() { m_started.reset(); }
    /// Whether it was started.
    bool isValid() const { return m_started.has_value(); }

    /// Since the start; needs a valid one.
    qint64 nsecsElapsed() const { return m_time->nanoseconds() - *m_started; }
    qint64 elapsed() const { return nsecsElapsed() / 1'000'000; }
    /// Whether it is valid and `milliseconds` have passed.
    bool hasExpired(qint64 milliseconds) const { return isValid() && elapsed() >= milliseconds; }

private:
    const TimeSource *m_time;
    std::optional<qint64> m_started;
};

} // namespace norvane
