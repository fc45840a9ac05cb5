#include "gsm-simulator/PacedLine.h"

#include <algorithm>

namespace norvane {

namespace simulator {

namespace {
constexpr qint64 bitsPerByte = 10;
constexpr qint64 second = 1'000'000'000;
} // namespace

PacedLine::PacedLine(int bitsPerSecond) : m_bitsPerSecond(bitsPerSecond) {}

void PacedLine::push(const QByteArray &bytes, Time now)
{
    if (m_bytes.isEmpty()) {
        // The byte before may have left the line a moment ago only in name: it is never overtaken.
        m_start = std::max(now, arrival(m_delivered - 1));
        m_delivered = 0;
    }
    m_bytes += bytes;
}

QByteArray PacedLine::pop(Time now)
{
    if (m_bytes.isEmpty() || now < m_start)
        return {};
    qint64 arrived = 0;
    while (arrived < m_bytes.size() && arrival(m_delivered + arrived) <= now)
        ++arrived;
    if (arrived == 0)
        return {};
    const QByteArray bytes = m_bytes.left(arrived);
    m_bytes.remove(0, arrived);
    m_delivered += arrived;
    return bytes;
}

std::optional<PacedLine::Time> PacedLine::nextArrival() const
{
    if (m_bytes.isEmpty())
        return std::nullopt;
    return arrival(m_delivered);
}

PacedLine::Time PacedLine::arrival(qint64 index) const
{
    const qint64 bits = (index + 1) * bitsPerByte;
    return m_start +
           Time(bits / m_bitsPerSecond * second +
                (bits % m_bitsPerSecond * second + m_bitsPerSecond - 1) / m_bitsPerSecond);
}

} // namespace simulator

} // namespace norvane
