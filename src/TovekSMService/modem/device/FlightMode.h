#pragma once

#include "TovekSMService/modem/at/AtDialogue.h"
#include "TovekSMService/time/Deadline.h"
#include "TovekSMService/time/Timer.h"

#include <functional>

namespace norvane {

/// Brings a device back on the air that another program, a modem manager say, has left in flight
/// mode.
///
/// 3GPP TS 27.007, 8.2, table 61: +CFUN 0 is the minimum functionality, 4 has the transmitter and
/// the receiver turned off, 1 is full functionality. Whether the device is registered then is told
/// by +CREG (7.2) or +CEREG (10.1.22).
class FlightMode
{
public:
    using Done = std::function<void()>;

    FlightMode(AtDialogue &dialogue, const ModemTimings &timings,
               TimeSource &time = TimeSource::system());

    /// Asks for the functionality and switches the device on if it is off.
    void leave(Done done);
    /// Whether leave() has switched the device on. Its SIM may need a moment then.
    bool wasLeft() const { return m_wasLeft; }
    /// Waits until a device that leave() has switched on is registered, for a limited time.
    void awaitNetwork(Done done);
    /// Ends without a word to the function that waits.
    void stop();

private:
    void switchOn();
    void ask(const QByteArray &command, const QByteArray &tag, const Done &otherwise);
    void look();
    void retryLater();
    void finish();

    AtDialogue &m_dialogue;
    const ModemTimings m_timings;
    Timer m_poll;
    Deadline m_deadline;
    bool m_wasLeft = false;
    Done m_done;
};

} // namespace norvane
