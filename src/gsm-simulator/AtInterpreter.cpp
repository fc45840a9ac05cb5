#include "gsm-simulator/AtInterpreter.h"

#include "gsm-simulator/CommandTable.h"
#include "gsm-simulator/Submission.h"

#include <algorithm>
#include <array>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

constexpr char backspace = 0x08;
constexpr char lineEnd = '\r';
constexpr char endOfEntry = 0x1A;
constexpr char cancelEntry = 0x1B;
constexpr qsizetype maxLineLength = 2048;
constexpr qsizetype maxEntryLength = 2048;
constexpr qsizetype bufferSize = 16384;

bool isControl(char byte)
{
    return (byte >= 0 && byte < ' ') || byte == 0x7F;
}

qsizetype findAttention(const QByteArray &line)
{
    for (qsizetype i = 0; i + 1 < line.size(); ++i) {
        if ((line.at(i) | 0x20) == 'a' && (line.at(i + 1) | 0x20) == 't')
            return i;
    }
    return -1;
}

} // namespace

AtInterpreter::AtInterpreter(const ModemSettings &settings)
    : m_modem(settings), m_statusWatch(m_modem), m_noise(settings.seed),
      m_reference(settings.firstReference)
{}

Step AtInterpreter::take(const QByteArray &bytes)
{
    Step step;
    if (m_modem.settings.silent || m_unplugged)
        return step;
    m_input += isPaused() ? bytes.left(bufferSize - m_input.size()) : bytes;
    process(step);
    receive(step);
    return step;
}

Step AtInterpreter::resume()
{
    Step step;
    if (!m_pending)
        return step;
    finishSubmission(step);
    process(step);
    receive(step);
    return step;
}

Step AtInterpreter::wake()
{
    Step step;
    receive(step);
    return step;
}

ControlCommands::Outcome AtInterpreter::control(const QByteArray &line)
{
    const ControlCommands::Outcome outcome = ControlCommands(m_modem).run(line);
    m_unplugged = m_unplugged || outcome.unplugs;
    return outcome;
}

std::optional<QDateTime> AtInterpreter::nextWake() const
{
    if (m_modem.settings.silent || m_unplugged)
        return std::nullopt;
    std::optional<QDateTime> next = m_modem.reception.deadline();
    if (isBeingWritten())
        return next;
    std::optional<QDateTime> due = m_modem.network.nextDue();
    if (!m_modem.isRegistered() && (due || m_statusWatch.isAsked(m_modem)))
        due = m_modem.registrationDue();
    if (due)
        next = next ? std::min(*next, *due) : due;
    return next;
}

/// What the network delivers has to wait while a command or a message is being written.
void AtInterpreter::receive(Step &step)
{
    if (m_modem.settings.silent || m_unplugged)
        return;
    m_modem.reception.expire(m_modem);
    if (isBeingWritten())
        return;
    QByteArrayList lines = m_statusWatch.changes(m_modem);
    lines += m_modem.reception.receive(m_modem);
    lines += m_statusWatch.changes(m_modem); // a message that has come is one
    for (const QByteArray &line : lines) {
        if (m_modem.settings.noise)
            step.output += m_noise.burst();
        step.output += "\r\n" + line + "\r\n";
    }
}

void AtInterpreter::process(Step &step)
{
    while (m_position < m_input.size() && !isPaused() && !m_unplugged) {
        const char byte = m_input.at(m_position++);
        if (m_reading == Reading::Command) {
            takeCommandByte(byte, step);
        } else {
            takeEntryByte(byte, step);
        }
    }
    m_input.remove(0, m_position);
    m_position = 0;
}

void AtInterpreter::takeCommandByte(char byte, Step &step)
{
    if (m_modem.profile.echo == 1)
        step.output += byte;
    if (byte == lineEnd) {
        runLine(step);
    } else if (byte == backspace) {
        m_line.chop(1);
    } else if (!isControl(byte)) {
        if (m_line.size() < maxLineLength) {
            m_line += byte;
        } else {
            m_overlong = true;
        }
    }
}

void AtInterpreter::runLine(Step &step)
{
    const QByteArray line = std::exchange(m_line, QByteArray());
    const bool overlong = std::exchange(m_overlong, false);
    const qsizetype attention = findAttention(line);
    if (attention < 0)
        return;
    disturb(step);
    if (overlong) {
        write(error(), step);
        return;
    }
    AtCommandLine commands(line.mid(attention + 2));
    AtAnswer answer = commands.atEnd() && m_modem.settings.refusesBareAttention ? error() : ok();
    while (!commands.atEnd() && answer.final == Final::Ok) {
        const std::optional<AtCommand> command = commands.next();
        answer = command ? run(*command) : error();
        if (answer.final == Final::Prompt && !commands.atEnd())
            answer = error();
        write(answer.lines, step);
    }
    if (answer.final == Final::Prompt) {
        openPrompt(step);
    } else {
        write({{}, answer.final, answer.code}, step);
    }
}

AtAnswer AtInterpreter::run(const AtCommand &command)
{
    const CommandHandler handler = handlerOf(command.name);
    return handler != nullptr ? handler(m_modem, command) : error();
}

void AtInterpreter::openPrompt(Step &step)
{
    if (m_modem.entryAcknowledges) {
        m_reading = Reading::Acknowledgement;
    } else {
        m_reading = m_modem.profile.textFormat == 1 ? Reading::Text : Reading::Pdu;
    }
    m_entry.clear();
    m_overlong = false;
    step.output += "\r\n> ";
}

void AtInterpreter::takeEntryByte(char byte, Step &step)
{
    if (byte == endOfEntry) {
        closeEntry(step);
        return;
    }
    if (byte == cancelEntry) {
        m_reading = Reading::Command;
        write(ok(), step);
        return;
    }
    if (m_modem.profile.echo == 1)
        step.output += byte;
    // A client that ends its command with CR and LF leaves the LF for the prompt.
    if (m_entry.isEmpty() && (byte == '\n' || (byte == lineEnd && m_reading != Reading::Text)))
        return;
    if (m_reading == Reading::Text && byte == lineEnd)
        step.output += "\r\n> ";
    if (m_reading == Reading::Text && byte == backspace) {
        m_entry.chop(1);
    } else if (m_entry.size() < maxEntryLength) {
        m_entry += byte;
    } else {
        m_overlong = true;
    }
}

void AtInterpreter::closeEntry(Step &step)
{
    if (m_reading == Reading::Acknowledgement) {
        closeAcknowledgement(step);
        return;
    }
    m_pending = judgeEntry();
    m_reading = Reading::Command;
    m_entry.clear();
    m_overlong = false;
    if (m_modem.settings.latency.count() > 0 && m_pending->fromNetwork) {
        m_modem.isSubmitting = true;
        step.pause = m_modem.settings.latency;
        return;
    }
    finishSubmission(step);
}

void AtInterpreter::closeAcknowledgement(Step &step)
{
    m_reading = Reading::Command;
    const AtAnswer answer = m_overlong ? messageError(MessageFailure::badPduParameter)
                                       : acknowledgeWithPdu(m_modem, std::exchange(m_entry, {}));
    disturb(step);
    write(answer, step);
}

AtInterpreter::Pending AtInterpreter::judgeEntry()
{
    std::optional<SubmittedPart> part;
    if (m_reading == Reading::Text) {
        if (!m_overlong)
            part = readTextSubmission(m_modem.entryAddress, m_entry, m_modem.profile);
        if (!part)
            return {messageError(MessageFailure::badTextParameter), {}, false};
    } else {
        auto read = decodeSubmission(m_entry, m_modem.entryLength);
        if (m_overlong || std::holds_alternative<PduFault>(read))
            return {messageError(MessageFailure::badPduParameter), {}, false};
        part = std::get<SubmittedPart>(std::move(read));
    }
    if (!m_modem.isRegistered())
        return {messageError(MessageFailure::noNetwork), {}, false};
    const bool linkKept = m_modem.link.use(m_modem.settings.clock());
    ++m_submissions;
    const int failEvery = m_modem.settings.failEvery;
    if (failEvery > 0 && m_submissions % failEvery == 0)
        return {messageError(m_modem.settings.failCode), {}, true, linkKept};
    const int refusal = m_modem.settings.reports.refusal;
    if (part->reportRequested && refusal >= 0)
        return {messageError(refusal), {}, true, linkKept};
    return {ok(), std::move(part), true, linkKept};
}

void AtInterpreter::finishSubmission(Step &step)
{
    Pending pending = std::move(*m_pending);
    m_pending.reset();
    m_modem.isSubmitting = false;
    if (pending.fromNetwork)
        m_modem.link.answered(m_modem.settings.clock());
    if (pending.part) {
        pending.answer.lines += "+CMGS: " + QByteArray::number(m_reference);
        m_modem.network.accept(*pending.part, m_reference, m_modem.settings.clock());
        step.accepted.push_back({std::move(*pending.part), m_reference, pending.linkKept});
        m_reference = (m_reference + 1) % 256;
        ++m_acceptedCount;
        m_unplugged = m_acceptedCount == m_modem.settings.dropAfter;
        step.unplugged = m_unplugged;
        if (m_unplugged && m_modem.settings.loseLastAnswer)
            return;
    }
    disturb(step);
    write(pending.answer.lines, step);
    write({{}, pending.answer.final, pending.answer.code}, step);
}

void AtInterpreter::write(const QByteArrayList &lines, Step &step)
{
    for (const QByteArray &line : lines)
        step.output += (m_modem.profile.verbose == 1 ? "\r\n" : "") + line + "\r\n";
}

void AtInterpreter::write(const AtAnswer &answer, Step &step)
{
    write(answer.lines, step);
    if (m_modem.profile.quiet == 1)
        return;
    const QByteArray text = finalText(answer);
    if (m_modem.profile.verbose == 1) {
        step.output += "\r\n" + text + "\r\n";
    } else {
        step.output += text + '\r';
    }
}

QByteArray AtInterpreter::finalText(const AtAnswer &answer) const
{
    const bool verbose = m_modem.profile.verbose == 1;
    switch (answer.final) {
    case Final::Ok:
    case Final::Prompt:
        return verbose ? "OK" : "0";
    case Final::NoCarrier:
        return verbose ? "NO CARRIER" : "3";
    case Final::MessageError:
        return "+CMS ERROR: " + QByteArray::number(answer.code);
    case Final::EquipmentError:
        if (m_modem.profile.errorForm == 1)
            return "+CME ERROR: " + QByteArray::number(answer.code);
        if (m_modem.profile.errorForm == 2)
            return "+CME ERROR: " + equipmentErrorText(answer.code);
        break;
    case Final::Error:
        break;
    }
    return verbose ? "ERROR" : "4";
}

/// What a bad line and a talkative modem put in front of an answer.
void AtInterpreter::disturb(Step &step)
{
    constexpr int linesBetween = 3;
    if (m_modem.settings.noise) {
        step.output += m_noise.burst();
        if (m_modem.profile.verbose == 0)
            step.output += "\r\n"; // no line end opens the answer
    }
    if (m_modem.settings.unsolicited && ++m_answeredLines % linesBetween == 0)
        step.output += nextUnsolicited();
}

QByteArray AtInterpreter::nextUnsolicited()
{
    static constexpr std::array<const char *, 5> chatterLines{
        "RING", "+CMTI: \"SM\",1", "^RSSI: 18", "+CREG: 1", "+CIEV: 2,4"};
    const char *line = chatterLines.at(m_nextUnsolicited++ % chatterLines.size());
    return "\r\n"_ba + line + "\r\n";
}

QByteArray AtInterpreter::unsolicitedLine()
{
    if (m_modem.settings.silent || m_unplugged || isBeingWritten())
        return {};
    return (m_modem.settings.noise ? m_noise.burst() : QByteArray()) + nextUnsolicited();
}

} // namespace simulator

} // namespace norvane
