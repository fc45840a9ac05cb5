#include "TovekSMService/dispatch/RetryPolicy.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int mostDoublings = 20; // beyond any longest delay, and far from overflow

qint64 doubled(qint64 shortest, qint64 longest, int times)
{
    return std::min(longest, shortest << std::clamp(times, 0, mostDoublings));
}

} // namespace

RetryPolicy::RetryPolicy(Random random, const RetryTimes &times)
    : m_random(std::move(random)), m_times(times)
{}

qint64 RetryPolicy::messageDelay(int attempts) const
{
    const qint64 delay = doubled(m_times.shortestDelay, m_times.longestDelay, attempts - 1);
    return delay + static_cast<qint64>(static_cast<double>(delay) * m_times.jitterPercent / 100 *
                                       m_random());
}

int RetryPolicy::reopenDelay(int failures) const
{
    return static_cast<int>(
        doubled(m_times.shortestReopenMs, m_times.longestReopenMs, failures - 1));
}
