#include "TovekSMService/modem/codec/AtReader.h"

#include "TovekSMService/modem/codec/Hexadecimal.h"

#include <algorithm>
#include <array>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr QByteArrayView tagStarts("+^*$%#");

/// Results of calls. This engine never dials, so they speak of someone else's call.
constexpr std::array<QByteArrayView, 5> callResults = {"NO CARRIER", "BUSY", "NO ANSWER",
                                                       "NO DIALTONE", "NO DIAL TONE"};

/// Lines without a tag that devices send by themselves.
constexpr std::array<QByteArrayView, 9> bareUnsolicited = {"RING",
                                                           "RDY",
                                                           "CALL READY",
                                                           "SMS READY",
                                                           "PB DONE",
                                                           "SMS DONE",
                                                           "SYSSTART",
                                                           "NORMAL POWER DOWN",
                                                           "UNDER-VOLTAGE WARNING"};

/// How some devices say ERROR to a command that they don't know.
constexpr std::array<QByteArrayView, 3> notSupported = {
    "COMMAND NOT SUPPORT", "COMMAND NOT SUPPORTED", "TOO MANY PARAMETERS"};

/// Messages whose second line is the TPDU (3GPP TS 27.005, 3.4.1).
constexpr std::array<QByteArrayView, 3> twoLines = {"+CMT", "+CBM", "+CDS"};

/// Registration reports have the same name whether asked for or not (3GPP TS 27.007, 7.2).
constexpr std::array<QByteArrayView, 4> registration = {"+CREG", "+CGREG", "+CEREG", "+C5GREG"};

template <typename Container>
bool contains(const Container &container, QByteArrayView text)
{
    return std::find(container.begin(), container.end(), text) != container.end();
}

/// "+CREG" of "+CREG: 0,1"; empty for a line without such a beginning.
QByteArray tagOf(const QByteArray &line)
{
    if (line.isEmpty() || !tagStarts.contains(line.front()))
        return {};
    const qsizetype colon = line.indexOf(':');
    return colon > 1 ? line.left(colon).trimmed().toUpper() : QByteArray();
}

/// "+CREG" of "AT+CREG?"; empty for a basic command.
QByteArray tagOfCommand(const QByteArray &command)
{
    qsizetype end = 2;
    while (end < command.size() && command.at(end) != '=' && command.at(end) != '?')
        ++end;
    return command.mid(2, end - 2).toUpper();
}

AtResult numberedResult(AtResult::Kind kind, const QByteArray &rest)
{
    const QByteArray text = rest.trimmed();
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    return {kind, isNumber && number >= 0 ? number : -1, text};
}

} // namespace

void AtReader::begin(const QByteArray &command, const QList<QByteArray> &prefixes)
{
    m_inCommand = true;
    m_staleEnd = m_buffer.size();
    m_command = command;
    m_commandTag = tagOfCommand(command);
    m_prefixes = prefixes;
    m_payload.clear();
}

void AtReader::end()
{
    m_inCommand = false;
    m_promptExpected = false;
}

void AtReader::append(QByteArrayView bytes)
{
    m_buffer.append(bytes);
}

std::optional<AtToken> AtReader::next()
{
    while (m_position < m_buffer.size()) {
        const char byte = m_buffer.at(m_position++);
        if (byte == '\r' || byte == '\n') {
            if (m_line.isEmpty())
                continue;
            const QByteArray line = std::exchange(m_line, QByteArray()).trimmed();
            if (!line.isEmpty())
                return classify(line);
            continue;
        }
        const auto code = static_cast<quint8>(byte);
        if (code == 0 || code > 0x7E)
            ++m_noise;
        else if (code >= 0x20 && m_line.size() < maxLine)
            m_line.append(byte);
        if (m_promptExpected && isFresh() && m_line == "> ") {
            m_line.clear();
            return AtToken{AtToken::Kind::Prompt, "> "_ba, {}};
        }
    }
    m_buffer.clear();
    m_position = 0;
    m_staleEnd = 0;
    return std::nullopt;
}

void AtReader::clear()
{
    m_buffer.clear();
    m_position = 0;
    m_staleEnd = 0;
    m_line.clear();
    m_secondLineDue = false;
    m_noise = 0;
    end();
}

std::optional<AtToken> AtReader::classify(const QByteArray &line)
{
    if (m_promptExpected && isFresh() && line == ">")
        return AtToken{AtToken::Kind::Prompt, line, {}};
    if (std::exchange(m_secondLineDue, false) && isHexadecimal(line))
        return AtToken{AtToken::Kind::Unsolicited, line, {}};
    if (isFresh()) {
        if (line == m_command || (!m_payload.isEmpty() && line == m_payload))
            return AtToken{AtToken::Kind::Echo, line, {}};
        if (const std::optional<AtResult> result = finalResult(line))
            return AtToken{AtToken::Kind::Final, line, *result};
    }
    if (isUnsolicited(line))
        return AtToken{AtToken::Kind::Unsolicited, line, {}};
    return AtToken{AtToken::Kind::Information, line, {}};
}

bool AtReader::isUnsolicited(const QByteArray &line)
{
    const QByteArray tag = tagOf(line);
    const bool asked = isFresh() && belongsToCommand(tag, line);
    if (!asked && contains(twoLines, tag))
        m_secondLineDue = true;
    if (!isFresh())
        return true;
    if (!tag.isEmpty())
        return !asked;
    const QByteArray upper = line.toUpper();
    return contains(bareUnsolicited, upper) || contains(callResults, upper);
}

bool AtReader::belongsToCommand(const QByteArray &tag, const QByteArray &line) const
{
    if (contains(m_prefixes, tag))
        return true;
    if (tag != m_commandTag)
        return false;
    if (!contains(registration, tag))
        return true;
    // An asked-for report has a mode in front of the state; one sent by itself begins with the
    // state, followed by a quoted area code if by anything.
    const QByteArray rest = line.mid(line.indexOf(':') + 1);
    const QList<QByteArray> fields = rest.split(',');
    return fields.size() > 1 && !fields.at(1).trimmed().startsWith('"');
}

std::optional<AtResult> AtReader::finalResult(const QByteArray &line) const
{
    using Kind = AtResult::Kind;
    if (line == "OK")
        return AtResult{Kind::Ok, -1, {}};
    if (line == "ERROR")
        return AtResult{Kind::Error, -1, {}};
    // Before ATV1 a device may speak in numbers (ITU-T V.250, 6.2.6); a command with a tag of its
    // own could mean the number as its information.
    const bool basic =
        m_commandTag.isEmpty() || m_commandTag.startsWith('E') || m_commandTag.startsWith('V');
    if (basic && line == "0")
        return AtResult{Kind::Ok, -1, {}};
    if (basic && line == "4")
        return AtResult{Kind::Error, -1, {}};
    for (const auto &[name, kind] : {std::pair(QByteArrayView("+CME ERROR"), Kind::CmeError),
                                     std::pair(QByteArrayView("+CMS ERROR"), Kind::CmsError)}) {
        if (line.startsWith(name)) {
            const QByteArray rest = line.mid(name.size()).trimmed();
            return numberedResult(kind, rest.startsWith(':') ? rest.mid(1) : rest);
        }
    }
    const QByteArray upper = line.toUpper();
    if (contains(notSupported, upper))
        return AtResult{Kind::NotSupported, -1, line};
    if (m_commandTag.startsWith('D') && contains(callResults, upper))
        return AtResult{Kind::CallEnded, -1, line};
    return std::nullopt;
}

} // namespace norvane
