#pragma once

#include "TovekSMService/modem/at/AtDialogue.h"
#include "TovekSMService/modem/device/PinGate.h"
#include "TovekSMService/time/Deadline.h"
#include "TovekSMService/time/Timer.h"

#include <functional>
#include <optional>

namespace norvane {

/// What a SIM waits for.
enum class SimState {
    Ready,
    Pin,
    Puk,
    Pin2,
    Puk2,
    DeviceLocked, ///< the device or the network asks for a code of its own
    NotInserted,
    Busy, ///< not ready yet, or no clear word: worth another look
    Failed,
    Unknown, ///< the device doesn't know the question
    Unexpected,
};

/// Reads the answer to +CPIN? (3GPP TS 27.007, 8.3 and 9.2).
SimState simState(const AtAnswer &answer);

/// What is known of a SIM that the device doesn't see.
enum class SimPresence {
    Told,        ///< it isn't there
    JustPowered, ///< it may not have been read yet
};

/// Brings the SIM to READY, with the PIN where it asks for one and the gate allows it.
class SimUnlock
{
public:
    using Finished = AtDialogue::Finished;

    /// @param pinResolved called when the SIM has taken a PIN; not from where the talk may be ended
    SimUnlock(AtDialogue &dialogue, PinGate &gate, const ModemTimings &timings,
              std::function<void()> pinResolved, TimeSource &time = TimeSource::system());

    /// @param details its IMEI is asked for where the SIM has to be told from others and doesn't
    ///                tell its own number
    void start(const QString &pin, DeviceDetails *details, Finished finished,
               SimPresence presence = SimPresence::Told);
    /// Ends without a word to the function given to `start`.
    void stop();

    /// A PIN has left, and what became of it isn't known yet. Stopping now leaves it on record as
    /// one that must not be tried again.
    bool awaitsPinOutcome() const { return m_awaitsPinOutcome; }

private:
    void look();
    void onState(SimState state);
    void onNotInserted();
    void onPinAsked();
    void identify();
    void onIdentified();
    void askTries();
    void decide(std::optional<int> triesLeft);
    void tryPin();
    void onPinAnswer(const AtAnswer &answer);
    void retryLater(int code, const QString &text);
    void refuse(int code, const QString &text);
    void noteAccepted();
    void finish(const ModemResult &unlocked);
    void fail(const ModemFailure &failure);
    SimIdentity sim() const;

    AtDialogue &m_dialogue;
    PinGate &m_gate;
    const ModemTimings m_timings;
    const std::function<void()> m_pinResolved;
    Timer m_poll;
    Deadline m_deadline;

    QString m_pin;
    QString m_iccid;
    DeviceDetails *m_details = nullptr;
    Finished m_finished;
    SimPresence m_presence = SimPresence::Told;
    /// The PIN has left, and isn't known to have been taken.
    bool m_attempted = false;
    bool m_awaitsPinOutcome = false;
    /// The SIM wasn't ready to tell its number.
    bool m_numberUncertain = false;
};

} // namespace norvane
