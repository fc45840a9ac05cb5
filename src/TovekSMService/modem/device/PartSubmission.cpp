#include "TovekSMService/modem/device/PartSubmission.h"

#include "TovekSMService/modem/codec/AnswerParsers.h"
#include "contract/ErrorCodes.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

SendFailure failureOfResult(const AtAnswer &answer)
{
    const AtResult &result = answer.result;
    SendFailure failure;
    failure.problem = result.kind == AtResult::Kind::CmsError   ? SendProblem::CmsError
                      : result.kind == AtResult::Kind::CmeError ? SendProblem::CmeError
                                                                : SendProblem::GenericError;
    failure.number = failureNumber(result);
    failure.text = QString::fromLatin1(result.text);
    failure.rule = failureRule(result);
    // The device gave up waiting for the network, which may have taken the part all the same.
    failure.mayBeDelivered = answer.payloadLeft && failure.rule.code == ErrorCode::networkTimeout;
    return failure;
}

} // namespace

PartSubmission::PartSubmission(AtChannel &channel, AtDialogue &dialogue,
                               const ModemTimings &timings, TimeSource &time)
    : m_channel(channel), m_dialogue(dialogue), m_timings(timings), m_link(timings, time)
{}

SendFailure PartSubmission::failureOf(SendProblem problem, const QString &text)
{
    const bool left = problem == SendProblem::LostAnswer || problem == SendProblem::LineBrokenAfter;
    return {problem, -1, text, failureRule(problem), left};
}

void PartSubmission::start(const SubmitPart &part, Followers followers, Done done)
{
    if (followers == Followers::Some && m_link.isToBeKept())
        keepLinkThenSubmit(part, std::move(done));
    else
        submit(part, std::move(done));
}

void PartSubmission::keepLinkThenSubmit(const SubmitPart &part, Done done)
{
    m_awaitingLink = std::move(done);
    m_dialogue.ask({RelayLink::command(), m_timings.commandMs, {}},
                   [this, part](const AtAnswer &answer) {
                       m_link.onCommandAnswered(answer.isOk());
                       submit(part, std::exchange(m_awaitingLink, nullptr));
                   });
}

void PartSubmission::submit(const SubmitPart &part, Done done)
{
    m_link.onSending();
    m_channel.submit({"AT+CMGS="_ba + QByteArray::number(part.length), m_timings.promptMs, {}},
                     part.hex, m_timings.sendMs,
                     [this, done = std::move(done)](const AtAnswer &answer) {
                         const Outcome outcome = outcomeOf(answer);
                         m_link.onSent(answer.end == AtAnswer::End::Final && outcome.accepted);
                         done(outcome);
                     });
}

void PartSubmission::stop()
{
    if (const Done done = std::exchange(m_awaitingLink, nullptr))
        done({Outcome::Device::Broken, false, -1,
              failureOf(SendProblem::LineBrokenBefore, u"the device was lost"_s)});
}

PartSubmission::Outcome PartSubmission::outcomeOf(const AtAnswer &answer)
{
    using End = AtAnswer::End;
    using Device = Outcome::Device;
    const std::optional<int> reference = AnswerParsers::messageReference(answer.lines);
    Outcome outcome;
    // The reference is the network's word, whatever became of the OK behind it.
    outcome.accepted = answer.payloadLeft && (answer.isOk() || reference);
    const bool isError = answer.end == End::Final && !answer.isOk() && !outcome.accepted;
    if (answer.end == End::LineBroken)
        outcome.device = Device::Broken;
    else if (!isError && !(answer.end == End::Final && outcome.accepted))
        outcome.device = Device::Lost;
    if (outcome.accepted)
        outcome.reference = reference.value_or(-1);
    else
        outcome.failure = isError ? failureOfResult(answer) : failureWithoutResult(answer);
    return outcome;
}

SendFailure PartSubmission::failureWithoutResult(const AtAnswer &answer)
{
    if (answer.end == AtAnswer::End::LineBroken)
        return failureOf(answer.payloadLeft ? SendProblem::LineBrokenAfter
                                            : SendProblem::LineBrokenBefore,
                         answer.lineFailure.detail);
    if (answer.payloadLeft)
        return failureOf(SendProblem::LostAnswer, u"no answer after the part had left"_s);
    return failureOf(SendProblem::NoPrompt, u"the device didn't ask for the part"_s);
}

} // namespace norvane
