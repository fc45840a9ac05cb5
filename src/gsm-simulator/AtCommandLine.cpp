#include "gsm-simulator/AtCommandLine.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool isLetter(char character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

bool opensExtendedCommand(char character)
{
    return "+^%#$*"_ba.contains(character);
}

} // namespace

AtCommandLine::AtCommandLine(const QByteArray &body) : m_body(body)
{
    skipSeparators();
}

std::optional<AtCommand> AtCommandLine::next()
{
    const char first = m_body.at(m_position);
    std::optional<AtCommand> command;
    if (opensExtendedCommand(first)) {
        command = extended();
    } else if (first == 'S' || first == 's') {
        ++m_position;
        command = parameter();
    } else if (first == 'D' || first == 'd') {
        command = AtCommand{"D"_ba, Form::Execute, m_body.mid(m_position + 1)};
        m_position = m_body.size();
    } else if (isLetter(first)) {
        ++m_position;
        command = basic(QByteArray(1, first));
    } else if (first == '&' && m_position + 1 < m_body.size() &&
               isLetter(m_body.at(m_position + 1))) {
        m_position += 2;
        command = basic(m_body.mid(m_position - 2, 2));
    }
    skipSeparators();
    return command;
}

AtCommand AtCommandLine::extended()
{
    const QByteArray whole = untilSeparator().trimmed();
    AtCommand command;
    qsizetype end = 1;
    while (end < whole.size() && (isLetter(whole.at(end)) || isDigit(whole.at(end))))
        ++end;
    command.name = whole.left(end).toUpper();
    const QByteArray rest = whole.mid(end);
    if (rest == "?") {
        command.form = Form::Read;
    } else if (rest == "=?") {
        command.form = Form::Test;
    } else if (rest.startsWith('=')) {
        command.form = Form::Set;
        command.arguments = rest.mid(1);
    } else if (!rest.isEmpty()) {
        command.name += rest; // no command has such a name
    }
    return command;
}

AtCommand AtCommandLine::basic(const QByteArray &name)
{
    return {name.toUpper(), Form::Execute, digits()};
}

AtCommand AtCommandLine::parameter()
{
    AtCommand command;
    command.name = "S"_ba + digits();
    if (atEnd())
        return command;
    if (m_body.at(m_position) == '?') {
        ++m_position;
        command.form = Form::Read;
    } else if (m_body.at(m_position) == '=') {
        ++m_position;
        command.form = Form::Set;
        command.arguments = digits();
    }
    return command;
}

QByteArray AtCommandLine::digits()
{
    const qsizetype start = m_position;
    while (!atEnd() && isDigit(m_body.at(m_position)))
        ++m_position;
    return m_body.mid(start, m_position - start);
}

QByteArray AtCommandLine::untilSeparator()
{
    const qsizetype start = m_position;
    bool quoted = false;
    while (!atEnd() && (quoted || m_body.at(m_position) != ';')) {
        if (m_body.at(m_position) == '"')
            quoted = !quoted;
        ++m_position;
    }
    return m_body.mid(start, m_position - start);
}

void AtCommandLine::skipSeparators()
{
    while (!atEnd() && (m_body.at(m_position) == ' ' || m_body.at(m_position) == ';'))
        ++m_position;
}

std::vector<AtArgument> splitArguments(const QByteArray &arguments)
{
    std::vector<AtArgument> found(1);
    bool quoted = false;
    for (const char character : arguments) {
        if (character == '"') {
            quoted = !quoted;
            found.back().quoted = true;
        } else if (character == ',' && !quoted) {
            found.emplace_back();
        } else if (character != ' ' || quoted) {
            found.back().text += character;
        }
    }
    return found;
}

std::optional<std::vector<int>> numbersOf(const QByteArray &arguments)
{
    constexpr qsizetype maxDigits = 7;
    std::vector<int> numbers;
    for (const AtArgument &argument : splitArguments(arguments)) {
        if (argument.quoted || argument.text.size() > maxDigits)
            return std::nullopt;
        for (const char character : argument.text) {
            if (!isDigit(character))
                return std::nullopt;
        }
        numbers.push_back(argument.text.isEmpty() ? -1 : argument.text.toInt());
    }
    return numbers;
}

} // namespace simulator

} // namespace norvane
