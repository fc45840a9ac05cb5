#include "support/DelayedMessages.h"

#include <utility>

namespace norvane {

void DelayedMessages::add(PostgresMessage message, Clock::time_point arrival)
{
    m_messages.push_back({std::move(message), arrival});
}

DelayedMessages::Clock::time_point DelayedMessages::firstArrival() const
{
    return m_messages.empty() ? Clock::time_point::max() : m_messages.front().arrival;
}

bool DelayedMessages::isFirstDue(Clock::time_point arrivedUntil) const
{
    return !m_messages.empty() && firstArrival() <= arrivedUntil;
}

PostgresMessage DelayedMessages::takeFirst()
{
    PostgresMessage message = std::move(m_messages.front().message);
    m_messages.pop_front();
    return message;
}

} // namespace norvane
