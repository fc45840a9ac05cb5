#include "service/ipc/CommandLine.h"

#include "engine/contract/BusTypes.h"
#include "engine/contract/SMSManager.h"
#include "service/ipc/EngineFolder.h"
#include "service/modem/PortParameter.h"
#include "service/platform/FileLock.h"
#include "service/store/Store.h"

#include <QCommandLineParser>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QTextStream>

#include <cstdlib>
#include <stdexcept>

namespace {

constexpr int exitFailure = 1;

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

int fail(const QString &reason)
{
    QTextStream(stderr) << "TovekSMService: " << reason << '\n';
    return exitFailure;
}

/// A call that the running engine didn't answer.
class CallFailed : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The engine that runs, over the bus. A call that fails throws CallFailed.
class RunningEngine
{
public:
    static bool isThere()
    {
        const QDBusConnection bus = QDBusConnection::sessionBus();
        return bus.isConnected() &&
               bus.interface()->isServiceRegistered(QLatin1String(Bus::ServiceName));
    }

    QDBusMessage call(const char *operation, const QVariantList &arguments = {}) const
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            QLatin1String(Bus::ServiceName), QLatin1String(Bus::ObjectPath),
            QLatin1String(Bus::InterfaceName), QLatin1String(operation));
        message.setArguments(arguments);
        const QDBusMessage answer =
            QDBusConnection::sessionBus().call(message, QDBus::Block, Bus::CallTimeout);
        if (answer.type() != QDBusMessage::ReplyMessage)
            throw CallFailed(answer.errorMessage().toStdString());
        return answer;
    }

    template <typename Value>
    Value ask(const char *operation) const
    {
        return qdbus_cast<Value>(call(operation).arguments().value(0));
    }
};

DeviceSettings changed(DeviceSettings settings, const CommandLine &commandLine)
{
    if (commandLine.device) {
        settings.Parameter = *commandLine.device;
        settings.ConnectionMode = 1;
        settings.Protocol = 1;
    }
    settings.PINCode = commandLine.pin.value_or(settings.PINCode);
    return settings;
}

void printState(const QString &engine, qint32 size, const DeviceSettings &settings)
{
    out() << "engine: " << engine << '\n'
          << "queue: " << size << '\n'
          << "device: " << settings.Parameter << '\n'
          << "pin: " << (settings.PINCode.isEmpty() ? "none" : "set") << '\n';
}

/// `text` with a space for each control character, which would part lines and columns or steer the
/// terminal.
QString onOneLine(QString text)
{
    for (QChar &unit : text) {
        if (unit.category() == QChar::Other_Control)
            unit = u' ';
    }
    return text;
}

void printQueue(const QList<QueueRow> &rows)
{
    for (const QueueRow &row : rows) {
        out() << onOneLine(row.deliveryDate) << '\t' << onOneLine(row.phone) << '\t'
              << onOneLine(row.message) << '\n';
    }
}

QList<QueueRow> queueOf(const RunningEngine &engine)
{
    QList<QueueRow> rows;
    quint64 snapshot = 0;
    quint32 total = 0;
    do {
        const QDBusMessage page = engine.call(
            "GetQueue", {QVariant(snapshot), QVariant(static_cast<quint32>(rows.size()))});
        if (page.arguments().at(0).toULongLong() != snapshot)
            rows.clear();
        snapshot = page.arguments().at(0).toULongLong();
        total = page.arguments().at(1).toUInt();
        const auto received = qdbus_cast<BusQueueRows>(page.arguments().at(2));
        if (received.isEmpty())
            break;
        rows += received;
    } while (static_cast<quint32>(rows.size()) < total);
    return rows;
}

void storeOverBus(const RunningEngine &engine, const CommandLine &commandLine)
{
    const auto settings = engine.ask<DeviceSettings>("GetDeviceSettings");
    const QDBusMessage answer =
        engine.call("SetDeviceSettings", {QVariant::fromValue(changed(settings, commandLine))});
    if (!answer.arguments().value(0).toBool())
        throw CallFailed("it did not store the settings");
    engine.call("ApplySettings");
}

int carryOutOverBus(const CommandLine &commandLine)
{
    try {
        const RunningEngine engine;
        if (commandLine.device || commandLine.pin)
            storeOverBus(engine, commandLine);
        if (commandLine.status) {
            const bool running = engine.ask<int>("GetEngineStatus") == SMSManager::Running;
            printState(running ? QStringLiteral("running") : QStringLiteral("stopped"),
                       engine.ask<int>("GetQueueSize"),
                       engine.ask<DeviceSettings>("GetDeviceSettings"));
        }
        if (commandLine.queue)
            printQueue(queueOf(engine));
        return EXIT_SUCCESS;
    } catch (const CallFailed &failure) {
        return fail(QStringLiteral("the running engine did not do it: ") +
                    QString::fromStdString(failure.what()));
    }
}

int carryOutInStore(const CommandLine &commandLine)
{
    const QString folder = EngineFolder::make();
    if (folder.isEmpty())
        return fail(QStringLiteral("the folder of the engine's data can't be made"));
    FileLock lock(EngineFolder::lockFile(folder));
    if (!lock.tryLock())
        return fail(QStringLiteral("an engine runs that can't be reached over this session's bus"));
    try {
        Store store(EngineFolder::storeFile(folder));
        if (commandLine.device || commandLine.pin)
            store.setDeviceSettings(changed(store.deviceSettings(), commandLine));
        if (commandLine.status)
            printState(store.isToRun() ? QStringLiteral("not up, to run when it is")
                                       : QStringLiteral("not up, stopped"),
                       store.size(), store.deviceSettings());
        if (commandLine.queue)
            printQueue(store.rows());
        return EXIT_SUCCESS;
    } catch (const StoreFailure &failure) {
        return fail(failure.text());
    }
}

} // namespace

CommandLine CommandLine::parse(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The SMS engine: owns the GSM device, keeps the queue and sends.\n"
                       "Without an option it runs until its session ends."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption device(
        QStringLiteral("device"),
        QStringLiteral("Store where the device is, as in \"COM1, 9600\" "
                       "or \"/dev/ttyUSB0, 115200\"."),
        QStringLiteral("PATH, SPEED"));
    const QCommandLineOption pin(QStringLiteral("pin"),
                                 QStringLiteral("Store the SIM's PIN; an empty one for none."),
                                 QStringLiteral("PIN"));
    const QCommandLineOption status(QStringLiteral("status"),
                                    QStringLiteral("Print the engine's state and settings."));
    const QCommandLineOption queue(QStringLiteral("queue"),
                                   QStringLiteral("Print the waiting messages, one a line."));
    parser.addOptions({device, pin, status, queue});
    parser.process(arguments);

    CommandLine commandLine;
    commandLine.status = parser.isSet(status);
    commandLine.queue = parser.isSet(queue);
    if (parser.isSet(device))
        commandLine.device = parser.value(device);
    if (parser.isSet(pin))
        commandLine.pin = parser.value(pin);
    if (!parser.positionalArguments().isEmpty())
        std::exit(
            fail(QStringLiteral("unknown argument: ") + parser.positionalArguments().constFirst()));
    return commandLine;
}

int carryOut(const CommandLine &commandLine)
{
    if (commandLine.device && !parsePortParameter(*commandLine.device))
        return fail(QStringLiteral("not a device and a speed: \"%1\"").arg(*commandLine.device));
    Bus::registerTypes();
    const int result =
        RunningEngine::isThere() ? carryOutOverBus(commandLine) : carryOutInStore(commandLine);
    out().flush();
    return result;
}
