#include "TovekSMService/dispatch/RunPace.h"

#include <algorithm>

namespace norvane {

void RunPace::recordTaken(int messages, qint64 nanoseconds)
{
    const qint64 each = std::max<qint64>(nanoseconds / std::max(messages, 1), 1);
    const qint64 inAMoment = m_limits.momentMs * Q_INT64_C(1'000'000) / each;
    // It grows step by step: one fast answer promises no others.
    const qint64 max = std::max(std::min(m_limits.max, 2 * m_length), 1);
    m_length = static_cast<int>(std::clamp<qint64>(inAMoment, 1, max));
}

} // namespace norvane
