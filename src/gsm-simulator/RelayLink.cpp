#include "gsm-simulator/RelayLink.h"

namespace norvane {

namespace simulator {

namespace {

/// The standard leaves it to the modem: 1 to 5 seconds.
constexpr qint64 maxPauseMs = 5000;

} // namespace

int RelayLink::mode(const QDateTime &now)
{
    expire(now);
    return m_mode;
}

void RelayLink::setMode(int mode)
{
    m_mode = mode;
    if (mode == Closed)
        m_lastAnswer = QDateTime();
}

bool RelayLink::use(const QDateTime &now)
{
    expire(now);
    return m_lastAnswer.isValid();
}

void RelayLink::answered(const QDateTime &now)
{
    m_lastAnswer = m_mode == Closed ? QDateTime() : now;
}

void RelayLink::expire(const QDateTime &now)
{
    if (!m_lastAnswer.isValid() || m_lastAnswer.msecsTo(now) <= maxPauseMs)
        return;
    m_lastAnswer = QDateTime();
    if (m_mode == KeptForRow)
        m_mode = Closed;
}

} // namespace simulator

} // namespace norvane
