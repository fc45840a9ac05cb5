#pragma once

#include <QByteArray>

#include <optional>
#include <vector>

namespace norvane {

namespace simulator {

enum class Form { Execute, Read, Test, Set };

/// One command of a command line (ITU-T V.250, 5.2 to 5.4), its name in capitals: "+CSQ", "E",
/// "&F", "S0".
struct AtCommand
{
    QByteArray name;
    Form form = Form::Execute;
    QByteArray arguments; ///< what follows the "=" or, for a basic command, its number
};

struct AtArgument
{
    QByteArray text; ///< without its quotes
    bool quoted = false;
};

/// Takes the commands of a line one after the other.
class AtCommandLine
{
public:
    /// @param body  the line behind its "AT"
    explicit AtCommandLine(const QByteArray &body);

    bool atEnd() const { return m_position >= m_body.size(); }

    /// The next command, or nothing if what stands there is none. Not to be called at the end.
    std::optional<AtCommand> next();

private:
    AtCommand extended();
    AtCommand basic(const QByteArray &name);
    AtCommand parameter();
    QByteArray digits();
    QByteArray untilSeparator();
    void skipSeparators();

    QByteArray m_body;
    qsizetype m_position = 0;
};

/// The arguments between commas; a comma within quotes is part of its argument.
std::vector<AtArgument> splitArguments(const QByteArray &arguments);

/// All arguments as numbers, an empty one as -1, or nothing if one is no number from 0 to
/// 9,999,999.
std::optional<std::vector<int>> numbersOf(const QByteArray &arguments);

} // namespace simulator

} // namespace norvane
