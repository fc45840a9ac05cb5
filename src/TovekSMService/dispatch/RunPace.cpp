#include "TovekSMService/dispatch/RunPace.h"

#include <algorithm>

namespace norvane {

namespace {

constexpr qint64 msNs = 1'000'000;

} // namespace

qint64 RunPace::momentNs() const
{
    const qint64 shortest = m_limits.momentMs * msNs;
    return std::max(shortest, std::min(m_commitNs, m_limits.maxMomentMs * msNs));
}

qint64 RunPace::stretched(qint64 time) const
{
    return time * momentNs() / std::max<qint64>(m_limits.momentMs * msNs, 1);
}

void RunPace::recordTaken(int messages, qint64 nanoseconds)
{
    const qint64 each = std::max<qint64>(nanoseconds / std::max(messages, 1), 1);
    const qint64 inAMoment = momentNs() / each;
    // It grows step by step: one fast answer promises no others.
    const qint64 max = std::max(std::min(m_limits.max, 2 * m_length), 1);
    m_length = static_cast<int>(std::clamp<qint64>(inAMoment, 1, max));
}

} // namespace norvane
