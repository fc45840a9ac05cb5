#pragma once

#include <QByteArray>

#include <chrono>
#include <optional>

namespace norvane {

namespace simulator {

/// One direction of a serial line: bytes go in at once and come out one by one, each when a line
/// with a start bit, eight data bits and a stop bit would have delivered it. Holds no clock.
class PacedLine
{
public:
    using Time = std::chrono::nanoseconds;

    /// @param bitsPerSecond  above 0
    explicit PacedLine(int bitsPerSecond);

    void push(const QByteArray &bytes, Time now);

    /// The bytes that have arrived by `now`.
    QByteArray pop(Time now);

    /// When the next byte arrives, or nothing if none is on its way.
    std::optional<Time> nextArrival() const;

    qsizetype size() const { return m_bytes.size(); }
    void clear() { m_bytes.clear(); }

private:
    Time arrival(qint64 index) const;

    qint64 m_bitsPerSecond;
    QByteArray m_bytes;
    Time m_start{0};        ///< when the line took up the bytes without a gap since
    qint64 m_delivered = 0; ///< how many of those have come out
};

} // namespace simulator

} // namespace norvane
