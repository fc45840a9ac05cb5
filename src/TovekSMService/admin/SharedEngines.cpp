#include "TovekSMService/admin/SharedEngines.h"

#include "TovekSMService/admin/CommandLine.h"
#include "TovekSMService/admin/ExitCodes.h"
#include "TovekSMService/dispatch/EngineSettings.h"
#include "TovekSMService/dispatch/StoreMaker.h"
#include "TovekSMService/log/OneLine.h"
#include "TovekSMService/store/EngineFolder.h"
#include "TovekSMService/store/QueueMove.h"
#include "TovekSMService/store/SharedQueue.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"
#include "contract/ErrorCodes.h"

#include <QTextStream>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

StoreFailure notShared()
{
    return {StoreFailure::Kind::Other,
            u"the settings name no database: [Queue] Database= is not set"_s};
}

void print(const EngineEntry &engine, QTextStream &out)
{
    const bool isSilent = engine.silentSeconds >= EngineRegister::silentSeconds;
    const QString state = engine.state.isEmpty() ? u"new"_s : engine.state;
    out << onOneLine(engine.name) << '\t' << onOneLine(engine.host) << '\t'
        << onOneLine(engine.device) << '\t' << (isSilent ? u"silent, was "_s : QString()) << state
        << '\t' << engine.seen << '\t' << engine.sentToday << '\n';
}

StoreResult<> printAll(Store &store, QTextStream &out)
{
    return store.engines()->all().map([&](const QList<EngineEntry> &engines) {
        for (const EngineEntry &engine : engines)
            print(engine, out);
    });
}

StoreResult<> retire(Store &store, const QString &name, QTextStream &out)
{
    return store.engines()
        ->lookUp()
        .and_then([&]() -> StoreResult<> {
            if (store.engines()->id() != 0)
                return {};
            return failed(StoreFailure(StoreFailure::Kind::Other,
                                       u"the engine of this account, which is to tell what failed, "
                                       "has never been up with this database"_s));
        })
        .and_then([&] { return store.engines()->retire(name, ErrorCode::noRespond, store.now()); })
        .and_then([&](const std::optional<QList<TakenOver>> &taken) -> StoreResult<> {
            if (!taken)
                return failed(StoreFailure(StoreFailure::Kind::Other,
                                           u"there is no engine of the name "_s + name));
            out << name << ": retired; " << taken->size() << " of its messages failed\n";
            for (const TakenOver &each : *taken)
                out << onOneLine(each.phone) << '\t' << onOneLine(each.text) << '\n';
            return store.sharedQueue()->announceAll();
        });
}

/// What no console has heard of stays in the database: it is told here.
StoreResult<> printUntold(Store &store, QTextStream &out)
{
    return store.outcomes().unreportedFailures().map([&](const QList<Outcome> &failures) {
        for (const Outcome &failure : failures)
            out << "failed, and not told yet: " << failure.code << '\t' << onOneLine(failure.phone)
                << '\t' << onOneLine(failure.text) << '\n';
    });
}

} // namespace

int askEngines(const CommandLine &commandLine, QTextStream &out)
{
    const SystemClock clock;
    const EngineSettings settings = EngineSettings::load(commandLine.name);
    const std::unique_ptr<Store> store =
        makeStore(settings, commandLine.name, EngineFolder(commandLine.name), clock);
    const StoreResult<> opened =
        store->isShared() ? openShared(*store, settings) : failed(notShared());
    const StoreResult<> done =
        opened
            .and_then([&] {
                return commandLine.retire ? retire(*store, *commandLine.retire, out)
                                          : StoreResult<>();
            })
            .and_then(
                [&] { return commandLine.engines ? printAll(*store, out) : StoreResult<>(); });
    return done ? ExitCode::done : report(AdminFailure{done.error().text()});
}

StoreResult<> openQueue(Store &store, const EngineSettings &settings)
{
    if (!store.isShared())
        return {};
    return openShared(store, settings).and_then([&] { return store.sharedQueue()->look(); });
}

StoreResult<> moveQueue(Store &store, const CommandLine &commandLine, QTextStream &out)
{
    if (!commandLine.moveQueue)
        return {};
    if (!store.isShared())
        return failed(notShared());
    QueueMove move(store);
    const bool isIntoFile = *commandLine.moveQueue == CommandLine::QueueTarget::File;
    return store.queue()
        .load()
        .and_then([&] { return isIntoFile ? move.intoFile() : move.intoDatabase(); })
        .and_then([&](int moved) {
            out << "moved: " << moved << '\n';
            return store.sharedQueue()->announceNews();
        })
        .and_then([&] { return isIntoFile ? printUntold(store, out) : StoreResult<>(); });
}

} // namespace norvane
