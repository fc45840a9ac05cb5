#include "TovekSMService/dispatch/RetryPolicy.h"

#include <algorithm>
#include <utility>

namespace norvane {

namespace {

constexpr int maxDoublings = 20; // beyond any longest delay, and far from overflow

qint64 doubled(qint64 min, qint64 max, int times)
{
    return std::min(max, min << std::clamp(times, 0, maxDoublings));
}

} // namespace

RetryPolicy::RetryPolicy(Random random, const RetryTimes &times)
    : m_random(std::move(random)), m_times(times)
{}

qint64 RetryPolicy::messageDelay(int attempts) const
{
    const qint64 delay = doubled(m_times.minDelay, m_times.maxDelay, attempts - 1);
    return delay + static_cast<qint64>(static_cast<double>(delay) * m_times.jitterPercent / 100 *
                                       m_random());
}

int RetryPolicy::reopenDelay(int failures) const
{
    return static_cast<int>(doubled(m_times.minReopenMs, m_times.maxReopenMs, failures - 1));
}

} // namespace norvane
