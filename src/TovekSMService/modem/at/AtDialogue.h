#pragma once

#include "TovekSMService/modem/at/AtChannel.h"
#include "TovekSMService/modem/at/ModemTypes.h"

#include <QList>

#include <functional>

namespace norvane {

/// Questions to a device one after the other, each of which it may leave unanswered: after a
/// time-out the channel is synchronised before the dialogue goes on.
class AtDialogue
{
public:
    /// A question of a list.
    struct Question
    {
        AtCommand command;
        /// Looks at the answer. A failure that it gives ends the list.
        std::function<ModemResult(const AtAnswer &)> take;
        /// Whether the question is asked at all, decided when its turn comes; empty for always.
        std::function<bool()> wanted = {};
        /// One that the dialogue can do without when the device is short of answers.
        bool optional = true;
    };

    using Asked = std::function<void(const AtAnswer &)>;
    using Finished = std::function<void(const ModemResult &)>;

    /// @param lost called when the device has stopped answering altogether; the function of the
    ///             question or list is not called then. A broken line is told by the channel alone.
    AtDialogue(AtChannel &channel, const ModemTimings &timings,
               std::function<void(const ModemFailure &)> lost);

    /// Asks one question. The answer is a final result or a time-out.
    void ask(const AtCommand &command, Asked asked);

    /// Asks a list of questions. When more than `unansweredDetails` have stayed unanswered, the
    /// optional rest is skipped.
    void askAll(QList<Question> questions, Finished finished);

private:
    void askNext();
    void takeAnswer(const AtAnswer &answer);

    AtChannel &m_channel;
    const ModemTimings m_timings;
    std::function<void(const ModemFailure &)> m_lost;
    QList<Question> m_questions;
    Finished m_finished;
    int m_unanswered = 0;
};

/// What it means that synchronising ended otherwise than with an answer.
ModemFailure failureOf(SyncOutcome outcome);

} // namespace norvane
