#pragma once

#include "support/PostgresFraming.h"

#include <chrono>
#include <deque>

namespace norvane {

/// Messages on their way over a line that takes its time but lets any number of them through at
/// once: none is late because of those before it.
class DelayedMessages
{
public:
    using Clock = std::chrono::steady_clock;

    void add(PostgresMessage message, Clock::time_point arrival);

    /// When the first one has arrived at the near end; the end of time if there is none.
    Clock::time_point firstArrival() const;
    /// @param arrivedUntil  now, less the delay
    bool isFirstDue(Clock::time_point arrivedUntil) const;
    const PostgresMessage &first() const { return m_messages.front().message; }
    /// Takes the first one out; there must be one.
    PostgresMessage takeFirst();
    int count() const { return static_cast<int>(m_messages.size()); }

private:
    struct Entry
    {
        PostgresMessage message;
        Clock::time_point arrival;
    };

    std::deque<Entry> m_messages;
};

} // namespace norvane
