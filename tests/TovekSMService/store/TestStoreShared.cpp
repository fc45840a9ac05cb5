#include "TovekSMService/store/TestStoreShared.h"

#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/StoreResults.h"
#include "TovekSMService/store/TestStore.h"

#include <QHash>

namespace norvane {

using namespace Qt::StringLiterals;

PostgresServer &testServer()
{
    static PostgresServer server;
    return server;
}

QString databaseOf(const QString &file)
{
    static QHash<QString, QString> databases;
    QString &name = databases[file];
    if (name.isEmpty()) {
        name = u"queue%1"_s.arg(databases.size());
        testServer().freshDatabase(name);
    }
    return name;
}

QString connectionOf(const QString &file)
{
    return testServer().connection(databaseOf(file));
}

std::unique_ptr<Store> openStoreOf(const QString &engine, const QString &file, const Clock &clock,
                                   int sameSenderSeconds)
{
    const SharedStore shared = {connectionOf(file),
                                {engine, u"test"_s, u"test:"_s + engine},
                                sameSenderSeconds,
                                [&clock](qint64 seconds) { return clock.wallClockText(seconds); }};
    auto store = std::make_unique<Store>(file, shared, clock.time());
    done(store->open());
    done(store->sharedDatabase()->open());
    done(store->queue().load());
    return store;
}

std::unique_ptr<Store> openTestStore(const QString &file, const Clock &clock)
{
    return openStoreOf(u"engine"_s, file, clock);
}

std::unique_ptr<Store> openTestStore(const QString &file)
{
    static const SystemClock clock;
    return openTestStore(file, clock);
}

} // namespace norvane
