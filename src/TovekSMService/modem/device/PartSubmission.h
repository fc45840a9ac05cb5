#pragma once

#include "TovekSMService/modem/at/AtDialogue.h"
#include "TovekSMService/modem/codec/SubmitPdu.h"
#include "TovekSMService/modem/device/RelayLink.h"

#include <functional>

namespace norvane {

/// Submits one part to the network: keeps the link up where more parts follow, hands the part over,
/// and judges the answer.
class PartSubmission
{
public:
    using Followers = norvane::Followers;

    struct Outcome
    {
        /// Where the outcome leaves the device.
        enum class Device {
            Ready,  ///< in command mode
            Broken, ///< its line is
            Lost,   ///< it has to be synchronised
        };

        Device device = Device::Ready;
        bool accepted = false;
        int reference = -1;  ///< of an accepted part; -1 if the device gave none
        SendFailure failure; ///< of one that isn't accepted
    };
    using Done = std::function<void(const Outcome &)>;

    PartSubmission(AtChannel &channel, AtDialogue &dialogue, const ModemTimings &timings,
                   TimeSource &time);

    /// Whether `start` does anything different for a part that has followers.
    bool asksForFollowers() const { return m_link.isToBeKept(); }

    /// Submits a part, once at a time. `done` isn't called for a device that is lost before the
    /// part's own command: `stop` calls it then.
    void start(const SubmitPart &part, Followers followers, Done done);
    /// Answers a part whose own command hasn't gone yet. To be called when the channel has been
    /// abandoned.
    void stop();
    /// The device is opened anew.
    void reset() { m_link.reset(); }

    static SendFailure failureOf(SendProblem problem, const QString &text);

private:
    void keepLinkThenSubmit(const SubmitPart &part, Done done);
    void submit(const SubmitPart &part, Done done);
    static Outcome outcomeOf(const AtAnswer &answer);
    static SendFailure failureWithoutResult(const AtAnswer &answer);

    AtChannel &m_channel;
    AtDialogue &m_dialogue;
    const ModemTimings m_timings;
    RelayLink m_link;
    Done m_awaitingLink; ///< of the part that waits for the link's command
};

} // namespace norvane
