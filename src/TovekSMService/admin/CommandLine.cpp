#include "TovekSMService/admin/CommandLine.h"

#include "TovekSMService/admin/ExitCodes.h"
#include "TovekSMService/modem/at/PortParameter.h"

#include <QCommandLineParser>
#include <QTextStream>

#include <cstdlib>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void refuse(const QString &reason)
{
    QTextStream(stderr) << "TovekSMService: " << reason << '\n';
    std::exit(ExitCode::failed);
}

QString description()
{
    return u"The SMS engine: owns the GSM device, keeps the queue and sends.\n"
           "Without an option that asks or stores it runs until its session ends."_s;
}

const QCommandLineOption &deviceOption()
{
    static const QCommandLineOption option(u"device"_s,
                                           u"Store where the device is, as in \"COM1, 9600\" "
                                           "or \"/dev/ttyUSB0, 115200\"."_s,
                                           u"PATH, SPEED"_s);
    return option;
}

const QCommandLineOption &pinOption()
{
    static const QCommandLineOption option(
        u"pin"_s, u"Store the SIM's PIN; an empty one for none."_s, u"PIN"_s);
    return option;
}

const QCommandLineOption &statusOption()
{
    static const QCommandLineOption option(u"status"_s,
                                           u"Print the engine's state and settings."_s);
    return option;
}

const QCommandLineOption &jsonOption()
{
    static const QCommandLineOption option(
        u"json"_s, u"With --status: print the state for a monitor, and end with 0 for running, "
                   "1 for stopped, 2 for not up, 3 for trouble."_s);
    return option;
}

const QCommandLineOption &queueOption()
{
    static const QCommandLineOption option(u"queue"_s,
                                           u"Print the waiting messages, one a line."_s);
    return option;
}

const QCommandLineOption &reportOption()
{
    static const QCommandLineOption option(u"report"_s,
                                           u"Print what became of messages, one a line."_s);
    return option;
}

const QCommandLineOption &sinceOption()
{
    static const QCommandLineOption option(u"since"_s,
                                           u"With --report: from this day (yyyy-MM-dd) or moment "
                                           "(yyyy-MM-ddTHH:mm:ss) on."_s,
                                           u"DATE"_s);
    return option;
}

const QCommandLineOption &formatOption()
{
    static const QCommandLineOption option(u"format"_s, u"With --report: text (default) or csv."_s,
                                           u"FORMAT"_s);
    return option;
}

const QCommandLineOption &backupOption()
{
    static const QCommandLineOption option(
        u"backup"_s,
        u"Copy the store, running or not, to a new file. It holds every text and "
        "the PIN."_s,
        u"FILE"_s);
    return option;
}

const QCommandLineOption &logLevelOption()
{
    static const QCommandLineOption option(
        u"log-level"_s,
        u"Log errors, warnings too, what happens too (default), or every line to and "
        "from the device too, without PINs and messages: error, warning, info, "
        "debug."_s,
        u"LEVEL"_s);
    return option;
}

std::optional<QString> valueOf(const QCommandLineParser &parser, const QCommandLineOption &option)
{
    return parser.isSet(option) ? std::optional(parser.value(option)) : std::nullopt;
}

/// What `read` makes of the option's value, or `absent` without the option.
template <typename Value, typename Read>
Value readValue(const QCommandLineParser &parser, const QCommandLineOption &option, Value absent,
                Read read)
{
    const std::optional<QString> given = valueOf(parser, option);
    if (!given)
        return absent;
    const std::optional<Value> value = read(*given);
    if (!value)
        refuse(u"--%1 can't be \"%2\""_s.arg(option.names().constFirst(), *given));
    return *value;
}

void refuseWrong(const QCommandLineParser &parser, const CommandLine &commandLine)
{
    if (!parser.positionalArguments().isEmpty())
        refuse(u"unknown argument: "_s + parser.positionalArguments().constFirst());
    if (commandLine.device && !parsePortParameter(*commandLine.device))
        refuse(u"not a device and a speed: \"%1\""_s.arg(*commandLine.device));
    if (commandLine.json && !commandLine.status)
        refuse(u"--json goes with --status"_s);
    if (!commandLine.report && (parser.isSet(sinceOption()) || parser.isSet(formatOption())))
        refuse(u"--since and --format go with --report"_s);
    // Each of these has the output to itself, for the program that reads it.
    if (commandLine.json && (commandLine.queue || commandLine.report))
        refuse(u"--status --json goes with no other list"_s);
    if (commandLine.report && (commandLine.queue || commandLine.status))
        refuse(u"--report goes with no other list"_s);
}

} // namespace

CommandLine CommandLine::parse(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(description());
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({deviceOption(), pinOption(), statusOption(), jsonOption(), queueOption(),
                       reportOption(), sinceOption(), formatOption(), backupOption(),
                       logLevelOption()});
    parser.process(arguments);

    CommandLine commandLine;
    commandLine.status = parser.isSet(statusOption());
    commandLine.json = parser.isSet(jsonOption());
    commandLine.queue = parser.isSet(queueOption());
    commandLine.report = parser.isSet(reportOption());
    commandLine.since = readValue(parser, sinceOption(), QString(), OutcomeReport::moment);
    commandLine.format =
        readValue(parser, formatOption(), OutcomeReport::Format::Text, OutcomeReport::formatNamed);
    commandLine.device = valueOf(parser, deviceOption());
    commandLine.pin = valueOf(parser, pinOption());
    commandLine.backup = valueOf(parser, backupOption());
    if (parser.isSet(logLevelOption()))
        commandLine.logLevel =
            readValue(parser, logLevelOption(), EngineLog::Level::Info, EngineLog::levelNamed);
    refuseWrong(parser, commandLine);
    return commandLine;
}

} // namespace norvane
