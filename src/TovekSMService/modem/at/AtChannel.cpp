#include "TovekSMService/modem/at/AtChannel.h"

#include <algorithm>
#include <utility>

namespace norvane {

namespace {
constexpr char carriageReturn = '\r';
constexpr char endOfPayload = 0x1A;
/// ESC leaves a prompt without sending (3GPP TS 27.005, 3.5.1). The carriage return takes it off
/// the command line of a device that wasn't at a prompt.
constexpr char leavePromptSequence[] = "\x1B\r";
/// How many late prompts a try of synchronising gives up: a device that asks on and on is not
/// answered on and on.
constexpr int maxLatePrompts = 3;
constexpr char attention[] = "AT";
constexpr char echoOff[] = "ATE0";

const char *nameOf(SyncOutcome outcome)
{
    switch (outcome) {
    case SyncOutcome::Answered:
        return "in command mode";
    case SyncOutcome::Refused:
        return "not in command mode: it answers, but never with OK";
    case SyncOutcome::Garbage:
        return "not in command mode: nothing that came is an answer; is the speed right?";
    case SyncOutcome::Silent:
        return "not in command mode: nothing came";
    case SyncOutcome::LineBroken:
        break;
    }
    return "the line broke";
}

} // namespace

AtChannel::AtChannel(SerialLine *line, const ModemTimings &timings, TimeSource &time,
                     QObject *parent)
    : QObject(parent), m_line(line), m_timings(timings), m_limit(time),
      m_quiet(time, Qt::PreciseTimer)
{
    connect(&m_limit, &Timer::timeout, this, &AtChannel::onLimit);
    connect(&m_quiet, &Timer::timeout, this, &AtChannel::onQuiet);
    connect(m_line, &SerialLine::received, this, &AtChannel::onReceived);
    connect(m_line, &SerialLine::broken, this, &AtChannel::onBroken);
}

void AtChannel::run(const AtCommand &command, Answered answered)
{
    Q_ASSERT(isIdle());
    m_answered = std::move(answered);
    begin(command, Step::AwaitingFinal);
}

void AtChannel::submit(const AtCommand &command, const QByteArray &payload, int answerMs,
                       Answered answered)
{
    Q_ASSERT(isIdle());
    m_answered = std::move(answered);
    m_payload = payload;
    m_payloadAnswerMs = answerMs;
    begin(command, Step::AwaitingPrompt);
}

void AtChannel::begin(const AtCommand &command, Step step)
{
    ++m_owed;
    m_answer = {};
    enter(step);
    m_reader.begin(command.text, command.prefixes);
    m_reader.expectPrompt(step == Step::AwaitingPrompt);
    m_limit.start(command.limitMs);
    m_trace.sent(command.text, m_owed);
    write(command.text + carriageReturn);
}

void AtChannel::enter(Step step)
{
    m_step = step;
    ++m_stepNumber;
}

void AtChannel::write(const QByteArray &bytes)
{
    if (m_line->write(bytes))
        return;
    // Told later, so that no answer comes from within the call that starts a command.
    QMetaObject::invokeMethod(
        this,
        [this, failedStep = m_stepNumber] {
            if (isIdle() || failedStep != m_stepNumber)
                return;
            m_line->close();
            onBroken({LineError::WriteFailed, {}});
        },
        Qt::QueuedConnection);
}

void AtChannel::onReceived(const QByteArray &bytes)
{
    m_reader.append(bytes);
    while (const std::optional<AtToken> token = m_reader.next())
        take(*token);
    if (m_quiet.isActive())
        m_quiet.start();
}

void AtChannel::take(const AtToken &token)
{
    m_trace.received(token, m_owed);
    if (isSynchronising() && token.kind != AtToken::Kind::Echo)
        m_hasOutput = true;

    switch (token.kind) {
    case AtToken::Kind::Echo:
        return;
    case AtToken::Kind::Unsolicited:
        Q_EMIT unsolicited(token.line);
        return;
    case AtToken::Kind::Information:
        if (m_answer.lines.size() < maxLines)
            m_answer.lines.append(token.line);
        return;
    case AtToken::Kind::Prompt:
        if (isSynchronising())
            giveUpPrompt();
        else if (m_step == Step::AwaitingPrompt)
            sendPayload();
        return;
    case AtToken::Kind::Final:
        takeFinal(token.result);
        return;
    }
}

void AtChannel::takeFinal(const AtResult &result)
{
    m_owed = std::max(m_owed - 1, 0);
    switch (m_step) {
    case Step::AwaitingFinal:
    case Step::AwaitingPrompt:
        m_answer.result = result;
        finish(AtAnswer::End::Final);
        return;
    case Step::Probing:
        onProbed(result);
        return;
    case Step::Idle:
    case Step::Draining:
    case Step::Settling:
        return;
    }
}

void AtChannel::sendPayload()
{
    m_reader.expectPrompt(false);
    m_reader.payloadSent(m_payload);
    enter(Step::AwaitingFinal);
    m_limit.start(m_payloadAnswerMs);
    // From here on the network may get the message, whatever happens to the line.
    m_answer.payloadLeft = true;
    m_trace.sentPayload(m_owed);
    write(std::exchange(m_payload, QByteArray()) + endOfPayload);
}

void AtChannel::finish(AtAnswer::End end)
{
    m_limit.stop();
    m_reader.end();
    enter(Step::Idle);
    m_payload.clear();
    m_answer.end = end;
    const Answered answered = std::exchange(m_answered, nullptr);
    const AtAnswer answer = std::exchange(m_answer, AtAnswer());
    if (answered)
        answered(answer);
}

void AtChannel::onLimit()
{
    switch (m_step) {
    case Step::AwaitingFinal:
    case Step::AwaitingPrompt:
        m_trace.note("no answer within the time limit");
        finish(AtAnswer::End::TimedOut);
        return;
    case Step::Draining:
        probe(attention);
        return;
    case Step::Probing:
        startTry();
        return;
    case Step::Settling:
        endSync(SyncOutcome::Answered);
        return;
    case Step::Idle:
        return;
    }
}

void AtChannel::onBroken(const LineFailure &failure)
{
    endCommand(failure);
    Q_EMIT broken(failure);
}

void AtChannel::endCommand(const LineFailure &failure)
{
    m_owed = 0;
    if (isSynchronising()) {
        endSync(SyncOutcome::LineBroken);
    } else if (!isIdle()) {
        m_answer.lineFailure = failure;
        finish(AtAnswer::End::LineBroken);
    }
}

void AtChannel::abandon(LineError reason)
{
    m_reader.clear();
    endCommand({reason, {}});
}

void AtChannel::synchronise(int tries, Synchronised synchronised)
{
    Q_ASSERT(isIdle());
    m_synchronised = std::move(synchronised);
    m_triesLeft = tries;
    m_hasOutput = false;
    m_refused = false;
    m_reader.clear();
    startTry();
}

bool AtChannel::isSynchronising() const
{
    return m_step == Step::Draining || m_step == Step::Probing || m_step == Step::Settling;
}

/// Leaves a prompt and waits for stillness.
void AtChannel::startTry()
{
    if (m_triesLeft-- <= 0) {
        const bool hasOutput =
            m_hasOutput || m_reader.noise() > 0 || !m_reader.unfinishedLine().isEmpty();
        if (m_refused)
            endSync(SyncOutcome::Refused);
        else
            endSync(hasOutput ? SyncOutcome::Garbage : SyncOutcome::Silent);
        return;
    }
    enter(Step::Draining);
    m_promptsLeft = maxLatePrompts;
    m_echoProbed = false;
    m_reader.begin(attention);
    m_reader.expectPrompt(true);
    m_limit.start(m_timings.drainMs);
    m_quiet.start(m_timings.quietMs);
    leavePrompt();
}

void AtChannel::giveUpPrompt()
{
    // The prompt came late: the ESC was too early for it.
    if (m_promptsLeft-- > 0)
        leavePrompt();
}

void AtChannel::leavePrompt()
{
    m_trace.sentEscape();
    write(QByteArrayLiteral(leavePromptSequence));
}

void AtChannel::probe(const QByteArray &command)
{
    m_quiet.stop();
    enter(Step::Probing);
    ++m_owed;
    m_reader.begin(command);
    m_limit.start(m_timings.probeMs);
    m_trace.sent(command, m_owed);
    write(command + carriageReturn);
}

void AtChannel::onProbed(const AtResult &result)
{
    m_refused = result.kind != AtResult::Kind::Ok;
    if (!m_refused)
        complete();
    else if (!std::exchange(m_echoProbed, true))
        probe(echoOff);
}

void AtChannel::complete()
{
    enter(Step::Settling);
    m_limit.start(m_timings.drainMs);
    m_quiet.start(m_timings.quietMs);
}

void AtChannel::onQuiet()
{
    if (m_step == Step::Draining)
        probe(attention);
    else if (m_step == Step::Settling && m_owed > 0)
        m_quiet.start(); // a slow device may still answer what it was asked before
    else if (m_step == Step::Settling)
        endSync(SyncOutcome::Answered);
}

void AtChannel::endSync(SyncOutcome outcome)
{
    m_trace.note(nameOf(outcome));
    m_limit.stop();
    m_quiet.stop();
    m_owed = 0;
    m_reader.clear();
    enter(Step::Idle);
    m_answer = {};
    const Synchronised synchronised = std::exchange(m_synchronised, nullptr);
    if (synchronised)
        synchronised(outcome);
}

} // namespace norvane
