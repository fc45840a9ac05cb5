#include "TovekSMService/admin/CommandLine.h"

#include "TovekSMService/admin/ExitCodes.h"
#include "TovekSMService/modem/at/PortParameter.h"

#include <QCommandLineParser>
#include <QTextStream>

#include <cstdlib>

namespace {

[[noreturn]] void refuse(const QString &reason)
{
    QTextStream(stderr) << "TovekSMService: " << reason << '\n';
    std::exit(ExitCode::Failed);
}

QString description()
{
    return QStringLiteral("The SMS engine: owns the GSM device, keeps the queue and sends.\n"
                          "Without an option that asks or stores it runs until its session ends.");
}

const QCommandLineOption &deviceOption()
{
    static const QCommandLineOption option(
        QStringLiteral("device"),
        QStringLiteral("Store where the device is, as in \"COM1, 9600\" "
                       "or \"/dev/ttyUSB0, 115200\"."),
        QStringLiteral("PATH, SPEED"));
    return option;
}

const QCommandLineOption &pinOption()
{
    static const QCommandLineOption option(
        QStringLiteral("pin"), QStringLiteral("Store the SIM's PIN; an empty one for none."),
        QStringLiteral("PIN"));
    return option;
}

const QCommandLineOption &statusOption()
{
    static const QCommandLineOption option(
        QStringLiteral("status"), QStringLiteral("Print the engine's state and settings."));
    return option;
}

const QCommandLineOption &jsonOption()
{
    static const QCommandLineOption option(
        QStringLiteral("json"),
        QStringLiteral("With --status: print the state for a monitor, and end with 0 for running, "
                       "1 for stopped, 2 for not up, 3 for trouble."));
    return option;
}

const QCommandLineOption &queueOption()
{
    static const QCommandLineOption option(
        QStringLiteral("queue"), QStringLiteral("Print the waiting messages, one a line."));
    return option;
}

const QCommandLineOption &reportOption()
{
    static const QCommandLineOption option(
        QStringLiteral("report"), QStringLiteral("Print what became of messages, one a line."));
    return option;
}

const QCommandLineOption &sinceOption()
{
    static const QCommandLineOption option(
        QStringLiteral("since"),
        QStringLiteral("With --report: from this day (yyyy-MM-dd) or moment "
                       "(yyyy-MM-ddTHH:mm:ss) on."),
        QStringLiteral("DATE"));
    return option;
}

const QCommandLineOption &formatOption()
{
    static const QCommandLineOption option(QStringLiteral("format"),
                                           QStringLiteral("With --report: text (default) or csv."),
                                           QStringLiteral("FORMAT"));
    return option;
}

const QCommandLineOption &backupOption()
{
    static const QCommandLineOption option(
        QStringLiteral("backup"),
        QStringLiteral("Copy the store, running or not, to a new file. It holds every text and "
                       "the PIN."),
        QStringLiteral("FILE"));
    return option;
}

const QCommandLineOption &logLevelOption()
{
    static const QCommandLineOption option(
        QStringLiteral("log-level"),
        QStringLiteral("Log errors, warnings too, what happens too (default), or every line to and "
                       "from the device too, without PINs and messages: error, warning, info, "
                       "debug."),
        QStringLiteral("LEVEL"));
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
        refuse(QStringLiteral("--%1 can't be \"%2\"").arg(option.names().constFirst(), *given));
    return *value;
}

void refuseWrong(const QCommandLineParser &parser, const CommandLine &commandLine)
{
    if (!parser.positionalArguments().isEmpty())
        refuse(QStringLiteral("unknown argument: ") + parser.positionalArguments().constFirst());
    if (commandLine.device && !parsePortParameter(*commandLine.device))
        refuse(QStringLiteral("not a device and a speed: \"%1\"").arg(*commandLine.device));
    if (commandLine.json && !commandLine.status)
        refuse(QStringLiteral("--json goes with --status"));
    if (!commandLine.report && (parser.isSet(sinceOption()) || parser.isSet(formatOption())))
        refuse(QStringLiteral("--since and --format go with --report"));
    // Each of these has the output to itself, for the program that reads it.
    if (commandLine.json && (commandLine.queue || commandLine.report))
        refuse(QStringLiteral("--status --json goes with no other list"));
    if (commandLine.report && (commandLine.queue || commandLine.status))
        refuse(QStringLiteral("--report goes with no other list"));
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
