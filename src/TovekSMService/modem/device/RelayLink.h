#pragma once

#include "TovekSMService/modem/at/ModemTimings.h"
#include "TovekSMService/time/Deadline.h"

#include <QByteArray>

namespace norvane {

using namespace Qt::StringLiterals;

/// Whether the link to the network stays up between messages that follow one another.
///
/// 3GPP TS 27.005, 3.5.6: with +CMMS=1 the device keeps the link until 1 to 5 seconds have passed
/// between the answer to a message and the next message, and then goes back to +CMMS=0 by itself.
/// So the command is given once for a row of messages, and again behind a pause.
class RelayLink
{
public:
    explicit RelayLink(const ModemTimings &timings, TimeSource &time = TimeSource::system())
        : m_pauseMs(timings.linkPauseMs), m_pause(time)
    {}

    /// The command that keeps the link.
    static QByteArray command() { return "AT+CMMS=1"_ba; }
    /// Whether the command has to go before a message that others follow. A device that refuses it
    /// isn't asked again before it is opened anew.
    bool isToBeKept() const { return m_isKnown && (!m_isKept || m_pause.hasExpired()); }

    void onCommandAnswered(bool accepted);
    void onSending();
    void onSent(bool accepted);
    /// The device has been opened anew.
    void reset();

private:
    int m_pauseMs;
    bool m_isKnown = true; ///< the command hasn't been refused
    bool m_isKept = false;
    Deadline m_pause; ///< since the last answer; the link may be down when it has expired
};

} // namespace norvane
