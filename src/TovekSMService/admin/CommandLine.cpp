#include "TovekSMService/admin/CommandLine.h"

#include "TovekSMService/modem/device/DeviceParameter.h"

#include <QCommandLineParser>

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// An option as it was given, with the value that counts.
struct Given
{
    QString name;
    QString value;
};

using Noted = Result<void, AdminFailure>;

// What an option sets.

template <auto member>
Noted flag(CommandLine &commandLine, const Given &)
{
    commandLine.*member = true;
    return {};
}

template <auto member>
Noted text(CommandLine &commandLine, const Given &given)
{
    commandLine.*member = given.value;
    return {};
}

/// @param read  gives nothing for a value that can't be
template <auto member, auto read>
Noted parsed(CommandLine &commandLine, const Given &given)
{
    const auto value = read(given.value);
    if (!value)
        return failed(AdminFailure{u"--%1 can't be \"%2\""_s.arg(given.name, given.value)});
    commandLine.*member = *value;
    return {};
}

Noted engineName(CommandLine &commandLine, const Given &given)
{
    const auto name = EngineName::parse(given.value);
    if (!name)
        return failed(AdminFailure{u"--%1 can't be \"%2\": a name is %3"_s.arg(
            given.name, given.value, QLatin1String(EngineName::rule))});
    commandLine.name = *name;
    return {};
}

std::optional<CommandLine::OptOutTask> optOutTaskNamed(const QString &name)
{
    using Task = CommandLine::OptOutTask;
    if (name == "list"_L1)
        return Task::List;
    if (name == "add"_L1)
        return Task::Add;
    return name == "remove"_L1 ? std::optional(Task::Remove) : std::nullopt;
}

std::optional<CommandLine::QueueTarget> queueTargetNamed(const QString &name)
{
    if (name == "database"_L1)
        return CommandLine::QueueTarget::Database;
    return name == "file"_L1 ? std::optional(CommandLine::QueueTarget::File) : std::nullopt;
}

enum class Use {
    Setting, ///< of the engine, or of the option that it goes with
    Task,    ///< something to do other than to run the engine
    List,    ///< a task that prints, and may have the output to itself
};

struct Option
{
    const char *name;
    const char *value; ///< null: the option takes none
    const char *text;
    Use use;
    const char *goesWith; ///< options of which it needs one, as "a or b"; null: it stands alone
    Noted (*note)(CommandLine &commandLine, const Given &given);
};

constexpr Option options[] = {
    {"name", "NAME",
     "Be the engine of that name beside the unnamed one; with an option that asks or stores, mean "
     "that one.",
     Use::Setting, nullptr, engineName},
    {"device", "PATH, SPEED",
     "Store where the device is, as in \"COM1, 9600\" or \"/dev/ttyUSB0, 115200\".", Use::Task,
     nullptr, text<&CommandLine::device>},
    {"pin", "PIN", "Store the SIM's PIN; an empty one for none.", Use::Task, nullptr,
     text<&CommandLine::pin>},
    {"status", nullptr, "Print the engine's state and settings.", Use::List, nullptr,
     flag<&CommandLine::status>},
    {"json", nullptr,
     "With --status: print the state for a monitor, and end with 0 for running, 1 for stopped, 2 "
     "for not up, 3 for trouble.",
     Use::Setting, "status", flag<&CommandLine::json>},
    {"queue", nullptr, "Print the waiting messages, one a line.", Use::List, nullptr,
     flag<&CommandLine::queue>},
    {"report", nullptr, "Print what became of messages, one a line.", Use::List, nullptr,
     flag<&CommandLine::report>},
    {"inbox", nullptr, "Print the messages that were received, one a line.", Use::List, nullptr,
     flag<&CommandLine::inbox>},
    {"since", "DATE",
     "With --report or --inbox: from this day (yyyy-MM-dd) or moment (yyyy-MM-ddTHH:mm:ss) on.",
     Use::Setting, "report or inbox", parsed<&CommandLine::since, ReportLines::moment>},
    {"format", "FORMAT", "With --report or --inbox: text (default) or csv.", Use::Setting,
     "report or inbox", parsed<&CommandLine::format, ReportLines::formatNamed>},
    {"opt-out", "list|add|remove",
     "Print who wants no campaigns, or put the number that follows on that list or take it off.",
     Use::List, nullptr, parsed<&CommandLine::optOut, optOutTaskNamed>},
    {"backup", "FILE",
     "Copy the store, running or not, to a new file. It holds every text and the PIN.", Use::Task,
     nullptr, text<&CommandLine::backup>},
    {"engines", nullptr, "Print the engines that share the queue of a database, one a line.",
     Use::List, nullptr, flag<&CommandLine::engines>},
    {"retire", "NAME",
     "Give up an engine of that list which won't come back: what it left in the middle fails.",
     Use::Task, nullptr, text<&CommandLine::retire>},
    {"move-queue", "database|file",
     "Carry the waiting messages from the engine's own file into the database of its settings, or "
     "back. The engine must not be up.",
     Use::Task, nullptr, parsed<&CommandLine::moveQueue, queueTargetNamed>},
    {"log-level", "LEVEL",
     "Log errors, warnings too, what happens too (default), or every line to and from the device "
     "too, without PINs and messages: error, warning, info, debug.",
     Use::Setting, nullptr, parsed<&CommandLine::logLevel, EngineLog::levelNamed>},
};

QString described()
{
    return u"The SMS engine: owns the GSM device, keeps the queue and sends.\n"
           "Without an option that asks or stores it runs until its session ends."_s;
}

void addOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(described());
    parser.addHelpOption();
    parser.addVersionOption();
    for (const Option &option : options) {
        parser.addOption({QString::fromLatin1(option.name), QString::fromLatin1(option.text),
                          QString::fromLatin1(option.value)});
    }
}

bool isSet(const QCommandLineParser &parser, const Option &option)
{
    return parser.isSet(QString::fromLatin1(option.name));
}

Result<CommandLine, AdminFailure> read(const QCommandLineParser &parser)
{
    CommandLine commandLine;
    for (const Option &option : options) {
        if (!isSet(parser, option))
            continue;
        const QString name = QString::fromLatin1(option.name);
        if (const Noted noted = option.note(commandLine, {name, parser.value(name)}); !noted)
            return failed(noted.error());
        commandLine.isQuery |= option.use != Use::Setting;
    }
    return commandLine;
}

/// Refuses an option that goes with others where none of those is given.
Noted checkCompanions(const QCommandLineParser &parser, const Option &option)
{
    if (!option.goesWith || !isSet(parser, option))
        return {};
    const QString owners = QString::fromLatin1(option.goesWith);
    const QStringList owned = owners.split(u" or "_s);
    if (std::ranges::any_of(owned, [&](const QString &owner) { return parser.isSet(owner); }))
        return {};
    QStringList names;
    for (const Option &other : options) {
        if (other.goesWith && owners == QLatin1String(other.goesWith))
            names << u"--"_s + QLatin1String(other.name);
    }
    return failed(AdminFailure{u"%1 %2 with --%3"_s.arg(
        names.join(u" and "_s), names.size() == 1 ? u"goes"_s : u"go"_s, owned.join(u" or --"_s))});
}

/// The number that the list of opt-outs is changed by is the only argument beside the options.
Noted takePhone(const QCommandLineParser &parser, CommandLine &commandLine)
{
    using Task = CommandLine::OptOutTask;
    QStringList others = parser.positionalArguments();
    if (commandLine.optOut && *commandLine.optOut != Task::List) {
        if (others.isEmpty() || others.constFirst().trimmed().isEmpty())
            return failed(AdminFailure{u"--opt-out %1 needs a number"_s.arg(
                *commandLine.optOut == Task::Add ? u"add"_s : u"remove"_s)});
        commandLine.optOutPhone = others.takeFirst();
    }
    if (!others.isEmpty())
        return failed(AdminFailure{u"unknown argument: "_s + others.constFirst()});
    return {};
}

/// Two lists have the output to themselves, for the program that reads them.
Noted checkLists(const QCommandLineParser &parser, const CommandLine &commandLine)
{
    const auto lists = std::ranges::count_if(options, [&](const Option &option) {
        return option.use == Use::List && isSet(parser, option);
    });
    if (lists > 1 && commandLine.json)
        return failed(AdminFailure{u"--status --json goes with no other list"_s});
    if (lists > 1 && commandLine.report)
        return failed(AdminFailure{u"--report goes with no other list"_s});
    if (lists > 1 && commandLine.inbox)
        return failed(AdminFailure{u"--inbox goes with no other list"_s});
    return {};
}

Noted check(const QCommandLineParser &parser, const CommandLine &commandLine)
{
    if (commandLine.device && !parseDeviceParameter(*commandLine.device))
        return failed(AdminFailure{u"not a device and a speed: \"%1\""_s.arg(*commandLine.device)});
    for (const Option &option : options) {
        if (const Noted checked = checkCompanions(parser, option); !checked)
            return checked;
    }
    return checkLists(parser, commandLine);
}

} // namespace

Result<CommandLine, AdminFailure> CommandLine::parse(const QStringList &arguments)
{
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(arguments))
        return failed(AdminFailure{parser.errorText()});
    parser.process(arguments); // ends the program for --help and --version
    Result<CommandLine, AdminFailure> commandLine = read(parser);
    if (!commandLine)
        return commandLine;
    if (const Noted taken = takePhone(parser, *commandLine); !taken)
        return failed(taken.error());
    if (const Noted checked = check(parser, *commandLine); !checked)
        return failed(checked.error());
    return commandLine;
}

} // namespace norvane
