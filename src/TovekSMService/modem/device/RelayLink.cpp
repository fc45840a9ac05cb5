#include "TovekSMService/modem/device/RelayLink.h"

namespace norvane {

void RelayLink::onCommandAnswered(bool accepted)
{
    m_isKnown = accepted;
    m_isKept = accepted;
    m_pause.setRemainingTime(m_pauseMs);
}

void RelayLink::onSending()
{
    m_isKept = m_isKept && !m_pause.hasExpired();
}

void RelayLink::onSent(bool accepted)
{
    m_isKept = m_isKept && accepted;
    m_pause.setRemainingTime(m_pauseMs);
}

void RelayLink::reset()
{
    m_isKnown = true;
    m_isKept = false;
}

} // namespace norvane
