#include "TovekSMService/admin/Queries.h"

#include "TovekSMService/admin/Backup.h"
#include "TovekSMService/admin/CommandLine.h"
#include "TovekSMService/admin/ExitCodes.h"
#include "TovekSMService/admin/InboxReport.h"
#include "TovekSMService/admin/OutcomeReport.h"
#include "TovekSMService/admin/RunningEngine.h"
#include "TovekSMService/admin/SharedEngines.h"
#include "TovekSMService/admin/StatusReport.h"
#include "TovekSMService/bus/EngineState.h"
#include "TovekSMService/dispatch/EngineSettings.h"
#include "TovekSMService/dispatch/StoreMaker.h"
#include "TovekSMService/log/OneLine.h"
#include "TovekSMService/platform/FileLock.h"
#include "TovekSMService/reports/OptOuts.h"
#include "TovekSMService/store/EngineFolder.h"
#include "TovekSMService/store/SharedReportSource.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/store/StoreReader.h"
#include "TovekSMService/time/Clock.h"
#include "contract/BusTypes.h"
#include "contract/SMSManager.h"

#include <QTextStream>

#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

int fail(const QString &reason)
{
    return report(AdminFailure{reason});
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

void printFault(const QStringList &fault)
{
    for (const QString &each : fault)
        out() << "trouble: " << onOneLine(each) << '\n';
    if (fault.isEmpty())
        out() << "trouble: none\n";
}

void printQueue(const QList<QueueRow> &rows)
{
    for (const QueueRow &row : rows) {
        out() << onOneLine(row.deliveryDate) << '\t' << onOneLine(row.phone) << '\t'
              << onOneLine(row.message) << '\n';
    }
}

void printOptOuts(const QList<OptOut> &optOuts)
{
    for (const OptOut &each : optOuts)
        out() << onOneLine(each.at) << '\t' << onOneLine(each.phone) << '\n';
}

int printReport(const StatusReport &report)
{
    out() << report.json;
    return report.exitCode;
}

Result<void, AdminFailure> storeOverBus(const RunningEngine &engine, const CommandLine &commandLine)
{
    const auto settings = engine.ask<DeviceSettings>("GetDeviceSettings");
    if (!settings)
        return failed(settings.error());
    const auto answer =
        engine.call("SetDeviceSettings", {QVariant::fromValue(changed(*settings, commandLine))});
    if (!answer)
        return failed(answer.error());
    if (!answer->arguments().value(0).toBool())
        return failed(AdminFailure{u"it did not store the settings"_s});
    return engine.call("ApplySettings").map([](const QDBusMessage &) {});
}

Result<void, AdminFailure> printStateOf(const RunningEngine &engine)
{
    const auto status = engine.ask<int>("GetEngineStatus");
    const auto size = status ? engine.ask<int>("GetQueueSize") : status;
    if (!size)
        return failed(size.error());
    const auto settings = engine.ask<DeviceSettings>("GetDeviceSettings");
    if (!settings)
        return failed(settings.error());
    printState(*status == SMSManager::running ? u"running"_s : u"stopped"_s, *size, *settings);
    return engine.state().map(
        [](const QVariantMap &state) { printFault(state.value(u"trouble"_s).toStringList()); });
}

/// A number that is on the list already, or isn't there to be taken off, is as it was to be.
Result<void, AdminFailure> doOptOut(const RunningEngine &engine, const CommandLine &commandLine)
{
    using Task = CommandLine::OptOutTask;
    const auto nothing = [](const QDBusMessage &) {};
    switch (*commandLine.optOut) {
    case Task::List:
        break;
    case Task::Add:
        return engine.callMessages("AddOptOut", {commandLine.optOutPhone}).map(nothing);
    case Task::Remove:
        return engine.callMessages("RemoveOptOut", {commandLine.optOutPhone}).map(nothing);
    }
    return engine.callMessages("GetOptOuts").map([](const QDBusMessage &answer) {
        printOptOuts(qdbus_cast<BusOptOuts>(answer.arguments().value(0)));
    });
}

StoreResult<> doOptOut(Store &store, const CommandLine &commandLine)
{
    using Task = CommandLine::OptOutTask;
    if (!commandLine.optOut)
        return {};
    OptOuts optOuts(store.optOuts(), EngineSettings::load(commandLine.name).countryPrefix);
    switch (*commandLine.optOut) {
    case Task::List:
        break;
    case Task::Add:
        return optOuts.add(commandLine.optOutPhone, SystemClock().wallClockText()).map([](bool) {});
    case Task::Remove:
        return optOuts.remove(commandLine.optOutPhone).map([](bool) {});
    }
    return optOuts.all().map(printOptOuts);
}

/// @return the program's exit code
Result<int, AdminFailure> askEngine(const RunningEngine &engine, const CommandLine &commandLine)
{
    Result<void, AdminFailure> done;
    if (commandLine.device || commandLine.pin)
        done = storeOverBus(engine, commandLine);
    if (done && commandLine.json)
        return engine.state().map(
            [](const QVariantMap &state) { return printReport(StatusReport::ofRunning(state)); });
    if (done && commandLine.status)
        done = printStateOf(engine);
    if (done && commandLine.queue)
        done = engine.queue().map(printQueue);
    if (done && commandLine.optOut)
        done = doOptOut(engine, commandLine);
    return done.map([] { return ExitCode::done; });
}

int carryOutOverBus(const RunningEngine &engine, const CommandLine &commandLine)
{
    const Result<int, AdminFailure> exitCode = askEngine(engine, commandLine);
    if (exitCode)
        return *exitCode;
    const QString &reason = exitCode.error().text;
    if (commandLine.json)
        return printReport(StatusReport::fromFault(reason));
    return fail(u"the running engine did not do it: "_s + reason);
}

int failInStore(const CommandLine &commandLine, const QString &reason)
{
    return commandLine.json ? printReport(StatusReport::fromFault(reason)) : fail(reason);
}

StoreResult<> change(EngineSettingsStore &settings, const CommandLine &commandLine)
{
    if (!commandLine.device && !commandLine.pin)
        return {};
    return settings.deviceSettings().and_then([&](const DeviceSettings &present) {
        return settings.setDeviceSettings(changed(present, commandLine));
    });
}

StoreResult<> printState(const Store &store)
{
    return store.settings().isToRun().and_then([&](bool isToRun) {
        return store.settings().deviceSettings().map([&](const DeviceSettings &settings) {
            printState(isToRun ? u"not up, to run when it is"_s : u"not up, stopped"_s,
                       store.queue().size(), settings);
        });
    });
}

/// What is asked of a store that is open.
StoreResult<int> printAsked(const Store &store, const CommandLine &commandLine)
{
    if (commandLine.json)
        return EngineState::ofStore(store).map(
            [](const QVariantMap &state) { return printReport(StatusReport::ofNone(state)); });
    const StoreResult<> stated = commandLine.status ? printState(store) : StoreResult<>();
    return stated
        .and_then([&]() -> StoreResult<> {
            return commandLine.queue ? store.queue().rows().map(printQueue) : StoreResult<>();
        })
        .map([] { return ExitCode::done; });
}

bool asksForQueue(const CommandLine &commandLine)
{
    return commandLine.status || commandLine.queue || commandLine.optOut || commandLine.moveQueue;
}

int carryOutInStore(const CommandLine &commandLine)
{
    const EngineFolder folder(commandLine.name);
    if (!folder.make())
        return failInStore(commandLine, u"the folder of the engine's data can't be made"_s);
    const auto lock = FileLock::open(folder.lockFile());
    if (!lock || !(*lock)->tryLock())
        return failInStore(commandLine,
                           u"an engine runs that can't be reached over this session's bus"_s);
    const SystemClock clock;
    const EngineSettings settings = EngineSettings::load(commandLine.name);
    const std::unique_ptr<Store> store = makeStore(settings, commandLine.name, folder, clock);
    const StoreResult<int> done =
        store->open()
            .and_then([&] { return change(store->settings(), commandLine); })
            .and_then([&] {
                return asksForQueue(commandLine) ? openQueue(*store, settings) : StoreResult<>();
            })
            .and_then([&] { return doOptOut(*store, commandLine); })
            .and_then([&] { return moveQueue(*store, commandLine, out()); })
            .and_then([&] { return printAsked(*store, commandLine); });
    return done ? *done : failInStore(commandLine, done.error().text());
}

/// Outcomes and received messages are read from the file, beside an engine that may run.
int report(const CommandLine &commandLine)
{
    const auto write = commandLine.inbox ? InboxReport::write : OutcomeReport::write;
    const EngineSettings settings = EngineSettings::load(commandLine.name);
    StoreResult<> written;
    if (settings.queueDatabase.isEmpty()) {
        StoreReader store(EngineFolder(commandLine.name).storeFile());
        written = store.open().and_then(
            [&] { return write(store, commandLine.since, commandLine.format, out()); });
    } else {
        const SystemClock clock;
        const std::unique_ptr<Store> store =
            makeStore(settings, commandLine.name, EngineFolder(commandLine.name), clock);
        written = openShared(*store, settings).and_then([&] {
            return write(SharedReportSource(store->database()), commandLine.since,
                         commandLine.format, out());
        });
    }
    return written ? ExitCode::done : fail(written.error().text());
}

int backUp(const CommandLine &commandLine)
{
    const auto copied =
        norvane::backUp(EngineFolder(commandLine.name).storeFile(), *commandLine.backup);
    return copied ? ExitCode::done : fail(u"no backup: "_s + copied.error().text);
}

bool usesEngine(const CommandLine &commandLine)
{
    return commandLine.status || commandLine.queue || commandLine.device || commandLine.pin ||
           commandLine.optOut || commandLine.moveQueue;
}

} // namespace

int carryOut(const CommandLine &commandLine)
{
    Bus::registerTypes();
    int result = ExitCode::done;
    if (commandLine.backup)
        result = backUp(commandLine);
    if (result == ExitCode::done && usesEngine(commandLine)) {
        const RunningEngine engine(commandLine.name);
        if (engine.isThere() && commandLine.moveQueue)
            result = fail(u"the engine is up: its queue is moved when it has ended"_s);
        else
            result = engine.isThere() ? carryOutOverBus(engine, commandLine)
                                      : carryOutInStore(commandLine);
    }
    if (result == ExitCode::done && (commandLine.engines || commandLine.retire))
        result = askEngines(commandLine, out());
    if (result == ExitCode::done && (commandLine.report || commandLine.inbox))
        result = report(commandLine);
    out().flush();
    return result;
}

} // namespace norvane
