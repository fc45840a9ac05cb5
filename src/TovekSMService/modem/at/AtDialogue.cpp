#include "TovekSMService/modem/at/AtDialogue.h"

#include "contract/ErrorCodes.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

AtDialogue::AtDialogue(AtChannel &channel, const ModemTimings &timings,
                       std::function<void(const ModemFailure &)> lost)
    : m_channel(channel), m_timings(timings), m_lost(std::move(lost))
{}

void AtDialogue::ask(const AtCommand &command, Asked asked)
{
    m_channel.run(command, [this, asked = std::move(asked)](const AtAnswer &answer) {
        if (answer.end == AtAnswer::End::LineBroken)
            return;
        if (answer.end == AtAnswer::End::Final) {
            asked(answer);
            return;
        }
        m_channel.synchronise(m_timings.probeTries, [this, asked, answer](SyncOutcome outcome) {
            if (outcome == SyncOutcome::Answered)
                asked(answer);
            else if (outcome != SyncOutcome::LineBroken)
                m_lost(failureOf(outcome));
        });
    });
}

void AtDialogue::askAll(QList<Question> questions, Finished finished)
{
    m_questions = std::move(questions);
    m_finished = std::move(finished);
    m_unanswered = 0;
    askNext();
}

void AtDialogue::askNext()
{
    while (!m_questions.isEmpty()) {
        const Question &question = m_questions.constFirst();
        const bool skipped = question.optional && m_unanswered > m_timings.unansweredDetails;
        if (!skipped && (!question.wanted || question.wanted())) {
            ask(question.command, [this](const AtAnswer &answer) { takeAnswer(answer); });
            return;
        }
        m_questions.removeFirst();
    }
    std::exchange(m_finished, nullptr)({});
}

void AtDialogue::takeAnswer(const AtAnswer &answer)
{
    if (answer.end == AtAnswer::End::TimedOut)
        ++m_unanswered;
    const Question question = m_questions.takeFirst();
    const ModemResult taken = question.take ? question.take(answer) : ModemResult();
    if (taken) {
        askNext();
        return;
    }
    m_questions.clear();
    std::exchange(m_finished, nullptr)(taken);
}

ModemFailure failureOf(SyncOutcome outcome)
{
    switch (outcome) {
    case SyncOutcome::Silent:
        return {ErrorCode::noRespond, u"the device doesn't answer"_s, false};
    case SyncOutcome::Garbage:
        return {ErrorCode::unexpectedAnswer, u"the device sends something else than answers"_s,
                false};
    case SyncOutcome::Refused:
        return {ErrorCode::phoneInit, u"the device answers AT and ATE0 with an error"_s, false};
    case SyncOutcome::LineBroken:
        return {ErrorCode::portClosed, u"the line broke"_s, false};
    case SyncOutcome::Answered:
        break;
    }
    Q_UNREACHABLE();
}

} // namespace norvane
