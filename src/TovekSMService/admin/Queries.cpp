#include "TovekSMService/admin/Queries.h"

#include "TovekSMService/admin/Backup.h"
#include "TovekSMService/admin/CommandLine.h"
#include "TovekSMService/admin/ExitCodes.h"
#include "TovekSMService/admin/RunningEngine.h"
#include "TovekSMService/admin/StatusReport.h"
#include "TovekSMService/bus/EngineState.h"
#include "TovekSMService/log/OneLine.h"
#include "TovekSMService/platform/FileLock.h"
#include "TovekSMService/store/EngineFolder.h"
#include "TovekSMService/store/Store.h"
#include "contract/BusTypes.h"
#include "contract/SMSManager.h"

#include <QTextStream>

namespace {

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

int fail(const QString &reason)
{
    QTextStream(stderr) << "TovekSMService: " << reason << '\n';
    return ExitCode::Failed;
}

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

void printTrouble(const QStringList &trouble)
{
    for (const QString &each : trouble)
        out() << "trouble: " << onOneLine(each) << '\n';
    if (trouble.isEmpty())
        out() << "trouble: none\n";
}

void printQueue(const QList<QueueRow> &rows)
{
    for (const QueueRow &row : rows) {
        out() << onOneLine(row.deliveryDate) << '\t' << onOneLine(row.phone) << '\t'
              << onOneLine(row.message) << '\n';
    }
}

int printReport(const StatusReport &report)
{
    out() << report.json;
    return report.exitCode;
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
        if (commandLine.json)
            return printReport(StatusReport::ofRunning(engine.state()));
        if (commandLine.status) {
            const bool running = engine.ask<int>("GetEngineStatus") == SMSManager::Running;
            printState(running ? QStringLiteral("running") : QStringLiteral("stopped"),
                       engine.ask<int>("GetQueueSize"),
                       engine.ask<DeviceSettings>("GetDeviceSettings"));
            printTrouble(engine.state().value(QStringLiteral("trouble")).toStringList());
        }
        if (commandLine.queue)
            printQueue(engine.queue());
        return ExitCode::Done;
    } catch (const CallFailed &failure) {
        const QString reason = QString::fromStdString(failure.what());
        if (commandLine.json)
            return printReport(StatusReport::ofTrouble(reason));
        return fail(QStringLiteral("the running engine did not do it: ") + reason);
    }
}

int failInStore(const CommandLine &commandLine, const QString &reason)
{
    return commandLine.json ? printReport(StatusReport::ofTrouble(reason)) : fail(reason);
}

int carryOutInStore(const CommandLine &commandLine)
{
    const QString folder = EngineFolder::make();
    if (folder.isEmpty())
        return failInStore(commandLine,
                           QStringLiteral("the folder of the engine's data can't be made"));
    FileLock lock(EngineFolder::lockFile(folder));
    if (!lock.tryLock())
        return failInStore(
            commandLine,
            QStringLiteral("an engine runs that can't be reached over this session's bus"));
    try {
        Store store(EngineFolder::storeFile(folder));
        if (commandLine.device || commandLine.pin)
            store.setDeviceSettings(changed(store.deviceSettings(), commandLine));
        if (commandLine.json)
            return printReport(StatusReport::ofNone(EngineState::ofStore(store)));
        if (commandLine.status)
            printState(store.isToRun() ? QStringLiteral("not up, to run when it is")
                                       : QStringLiteral("not up, stopped"),
                       store.size(), store.deviceSettings());
        if (commandLine.queue)
            printQueue(store.rows());
        return ExitCode::Done;
    } catch (const StoreFailure &failure) {
        return failInStore(commandLine, failure.text());
    }
}

/// The outcomes are read from the file, beside an engine that may run.
int report(const CommandLine &commandLine)
{
    const QString file = EngineFolder::storeFile(EngineFolder::path());
    try {
        OutcomeReport::write(StoreReader(file), commandLine.since, commandLine.format, out());
        return ExitCode::Done;
    } catch (const StoreFailure &failure) {
        return fail(failure.text());
    }
}

int backUp(const QString &target)
{
    const QString reason = backUp(EngineFolder::storeFile(EngineFolder::path()), target);
    return reason.isEmpty() ? ExitCode::Done : fail(QStringLiteral("no backup: ") + reason);
}

bool talksToEngine(const CommandLine &commandLine)
{
    return commandLine.status || commandLine.queue || commandLine.device || commandLine.pin;
}

} // namespace

int carryOut(const CommandLine &commandLine)
{
    Bus::registerTypes();
    int result = ExitCode::Done;
    if (commandLine.backup)
        result = backUp(*commandLine.backup);
    if (result == ExitCode::Done && talksToEngine(commandLine))
        result =
            RunningEngine::isThere() ? carryOutOverBus(commandLine) : carryOutInStore(commandLine);
    if (result == ExitCode::Done && commandLine.report)
        result = report(commandLine);
    out().flush();
    return result;
}
