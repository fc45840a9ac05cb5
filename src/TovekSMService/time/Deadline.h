#pragma once

#include "TovekSMService/time/TimeSource.h"

namespace norvane {

/// A moment on a time source; over as long as none is set.
class Deadline
{
public:
    /// @param time  must outlive this object
    explicit Deadline(const TimeSource &time) : m_time(&time), m_at(time.nanoseconds()) {}

    /// @param milliseconds  from now
    void setRemainingTime(qint64 milliseconds)
    {
        m_at = m_time->nanoseconds() + milliseconds * 1'000'000;
    }
    /// In milliseconds; 0 or less once it has expired.
    qint64 remainingTime() const { return (m_at - m_time->nanoseconds()) / 1'000'000; }
    bool hasExpired() const { return m_time->nanoseconds() >= m_at; }

private:
    const TimeSource *m_time;
    qint64 m_at;
};

} // namespace norvane
