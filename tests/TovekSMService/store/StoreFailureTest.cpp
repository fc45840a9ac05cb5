#include "TovekSMService/store/StoreFixture.h"

#include "TovekSMService/store/Sql.h"
#include "TovekSMService/store/StoreSchema.h"

#include <QFile>

#include <functional>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Kind = StoreFailure::Kind;

/// The kind of failure that an operation ended with, nothing if it succeeded.
template <typename Value>
std::optional<Kind> failureOf(const StoreResult<Value> &result)
{
    if (result)
        return std::nullopt;
    EXPECT_FALSE(result.error().text().isEmpty());
    return result.error().kind();
}

constexpr auto ignored = [](const auto &) {};

QByteArray bytesOf(const QString &name)
{
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

void write(const QString &name, const QByteArray &bytes)
{
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

class StoreTrouble : public StoreFixture
{};

struct Writing
{
    const char *name;
    std::function<StoreResult<>(Store &, qint64 id)> operation;
};

class StoreWriting : public StoreFixture, public testing::WithParamInterface<Writing>
{
protected:
    StoreWriting() : m_id(add(noon()))
    {
        done(m_store->queue().finish(add(noon()), -1, std::nullopt, noon(), false));
    }

    qint64 m_id;
};

TEST_P(StoreWriting, failsWhileAnotherHasTheLockAndLeavesAllAsItWas)
{
    OtherConnection other(file());
    const auto operation = [this] { return GetParam().operation(*m_store, m_id); };
    const QList<QVariantList> before = other.contents();
    const qint32 sizeBefore = m_store->queue().size();

    other.lock();
    EXPECT_EQ(failureOf(operation()), Kind::Busy);
    EXPECT_EQ(m_store->queue().size(), sizeBefore);
    EXPECT_EQ(other.contents(), before);
    other.unlock();

    EXPECT_EQ(other.contents(), before);
    EXPECT_EQ(failureOf(operation()), std::nullopt);
    EXPECT_NE(other.contents(), before);
    EXPECT_EQ(m_store->queue().size(), given(m_store->queue().rows()).size());
}

TEST_P(StoreWriting, failsWhereWritingIsForbidden)
{
    OtherConnection other(file());
    const QList<QVariantList> before = other.contents();
    runOnStoreConnection(file(), u"PRAGMA query_only = ON"_s);
    EXPECT_EQ(failureOf(GetParam().operation(*m_store, m_id)), Kind::ReadOnly);
    EXPECT_EQ(other.contents(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, StoreWriting,
    testing::Values(
        Writing{"add",
                [](Store &store, qint64) {
                    return store.queue().add({{}, {}}, noon());
                }},
        Writing{
            "addBatch",
            [](Store &store, qint64) { return store.queue().addBatch({QueueRow()}, u"batch"_s); }},
        Writing{"clear", [](Store &store, qint64) { return store.queue().clear(); }},
        Writing{"change",
                [](Store &store, qint64 id) {
                    return store.queue().update({{{}, u"new"_s, {}, id}}, {}).map(ignored);
                }},
        Writing{"remove", [](Store &store,
                             qint64 id) { return store.queue().update({}, {id}).map(ignored); }},
        Writing{"beginPart",
                [](Store &store, qint64 id) {
                    return store.queue().begin({{id, 1, "hash"}});
                }},
        Writing{"endPart", [](Store &store, qint64 id) { return store.queue().endPart(id, 1); }},
        Writing{"cancelPart",
                [](Store &store, qint64 id) {
                    return store.queue().cancel({id}).and_then([&] {
                        return store.queue().begin({{id, 1, "hash"}});
                    });
                }},
        Writing{"postpone",
                [](Store &store, qint64 id) { return store.queue().postpone(id, 1, noon()); }},
        Writing{"finish",
                [](Store &store, qint64 id) {
                    return store.queue().finish(id, 1, 1, noon(), true).map(ignored);
                }},
        Writing{"countPart", [](Store &store, qint64) { return store.parts().count(noon()); }},
        Writing{"together",
                [](Store &store, qint64 id) {
                    return store.database().together([&] {
                        return store.queue().finish(id, 1, 1, noon(), true).and_then([&](qint64) {
                            return store.settings().setToRun(true);
                        });
                    });
                }},
        Writing{"probe", [](Store &store, qint64) { return store.database().probe(); }},
        Writing{"nextReference",
                [](Store &store, qint64) { return store.settings().nextReference().map(ignored); }},
        Writing{"markReported",
                [](Store &store, qint64) {
                    return store.outcomes().markReported(
                        {given(store.outcomes().unreportedFailures()).constFirst().id});
                }},
        Writing{"setDeviceSettings",
                [](Store &store, qint64) { return store.settings().setDeviceSettings({}); }},
        Writing{"setToRun", [](Store &store, qint64) { return store.settings().setToRun(true); }},
        Writing{"setDeviceImei",
                [](Store &store, qint64) {
                    return store.settings().setDeviceImei(u"COM1"_s, u"490154"_s);
                }},
        Writing{"setLastReset",
                [](Store &store, qint64) { return store.settings().setLastReset(noon()); }},
        Writing{"setPinHistory",
                [](Store &store, qint64) {
                    return store.pins().setHistory(u"sim"_s, u"1234"_s, PinHistory::Tried, noon());
                }}),
    [](const auto &writing) { return std::string(writing.param.name); });

TEST_F(StoreTrouble, readingGoesOnWhileAnotherHasTheLock)
{
    add(noon());
    OtherConnection other(file());
    other.lock();
    EXPECT_EQ(given(m_store->queue().rows()).size(), 1);
    EXPECT_TRUE(given(m_store->queue().first()));
    EXPECT_EQ(given(m_store->queue().firstDue()), noon());
    EXPECT_EQ(given(m_store->settings().deviceSettings()).Parameter, u"COM1, 9600"_s);
    EXPECT_TRUE(given(m_store->outcomes().unreportedFailures()).isEmpty());
}

TEST_F(StoreTrouble, aFullDiskTakesNoMessageAndWorkGoesOnWhenThereIsRoom)
{
    add(noon(), u"there"_s);
    fillDisk(file());
    const auto addLong = [this] {
        return m_store->queue().add({{u"long"_s, QString(50'000, u'x')}}, noon());
    };
    EXPECT_EQ(failureOf(addLong()), Kind::Full);
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_EQ(phones(), QStringList({u"there"_s}));

    freeDisk(file());
    EXPECT_EQ(failureOf(addLong()), std::nullopt);
    EXPECT_EQ(m_store->queue().size(), 2);
}

TEST_F(StoreTrouble, aListThatDoesNotFitIsNotQueuedInPart)
{
    fillDisk(file());
    const QList<SMSList::Entry> list = {{u"1"_s, u"short"_s}, {u"2"_s, QString(50'000, u'x')}};
    EXPECT_EQ(failureOf(m_store->queue().add(list, noon())), Kind::Full);
    freeDisk(file());
    reopen();
    EXPECT_EQ(m_store->queue().size(), 0);
}

TEST_F(StoreTrouble, aFailedCommitKeepsNothing)
{
    // A reader of the old journal kind holds up the commit itself, not the beginning.
    m_store.reset();
    OtherConnection other(file());
    other.run(u"PRAGMA journal_mode = DELETE"_s);
    other.run(u"BEGIN"_s);
    other.rows(u"SELECT * FROM message"_s);
    QSqlDatabase plain = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"plain"_s);
    plain.setDatabaseName(file());
    plain.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=50"_s);
    ASSERT_TRUE(plain.open());
    const auto insert = [&plain] {
        return execute(plain, u"INSERT INTO setting VALUES ('a', 'b')"_s);
    };
    EXPECT_EQ(failureOf(inTransaction(plain, insert)), Kind::Busy);
    other.run(u"COMMIT"_s);
    EXPECT_EQ(other.value(u"SELECT COUNT(*) FROM setting"_s).toInt(), 0);
    EXPECT_EQ(failureOf(inTransaction(plain, insert)), std::nullopt);
    EXPECT_EQ(other.value(u"SELECT COUNT(*) FROM setting"_s).toInt(), 1);
    plain.close();
    plain = QSqlDatabase();
    QSqlDatabase::removeDatabase(u"plain"_s);
}

TEST_F(StoreTrouble, aStoreOfALaterVersionIsRefusedAndLeftAsItIs)
{
    m_store.reset();
    const QString later = m_folder.filePath(u"later.sqlite"_s);
    {
        OtherConnection other(later);
        other.run(u"CREATE TABLE novelty (a)"_s);
        other.run(u"PRAGMA user_version = %1"_s.arg(StoreSchema::latestVersion + 1));
    }
    const QByteArray before = bytesOf(later);
    EXPECT_EQ(failureOf(Store(later).open()), Kind::TooNew);
    EXPECT_EQ(bytesOf(later), before);
}

TEST_F(StoreTrouble, theSchemaVersionIsWritten)
{
    OtherConnection other(file());
    EXPECT_EQ(other.value(u"PRAGMA user_version"_s).toInt(), StoreSchema::latestVersion);
}

TEST_F(StoreTrouble, aFileThatIsNoDatabaseIsRefusedAndLeftAsItIs)
{
    const QString other = m_folder.filePath(u"letter.txt"_s);
    const QByteArray letter = QByteArray("Dear reader, this is a letter. ").repeated(100);
    write(other, letter);
    EXPECT_EQ(failureOf(Store(other).open()), Kind::Corrupt);
    EXPECT_EQ(bytesOf(other), letter);
}

TEST_F(StoreTrouble, aDamagedStoreIsReportedAsSuch)
{
    for (int i = 0; i < 200; ++i)
        done(m_store->queue().add({{u"600"_s, QString(200, u'x')}}, noon()));
    m_store.reset();
    QByteArray bytes = bytesOf(file());
    ASSERT_GT(bytes.size(), 20'000);
    for (qsizetype at = 4096; at < bytes.size(); ++at)
        bytes[at] = static_cast<char>(at * 7);
    write(file(), bytes);
    Store store(file());
    EXPECT_EQ(failureOf(store.open().and_then([&] { return store.queue().rows(); })),
              Kind::Corrupt);
}

TEST_F(StoreTrouble, aFileThatCannotBeMadeIsRefused)
{
    EXPECT_EQ(failureOf(Store(m_folder.filePath(u"no/such/folder"_s)).open()), Kind::ReadOnly);
}

TEST_F(StoreTrouble, aStoreIsNotMadeWhileAnotherHasTheLock)
{
    const QString locked = m_folder.filePath(u"locked.sqlite"_s);
    OtherConnection other(locked);
    other.run(u"CREATE TABLE something (a)"_s);
    other.run(u"BEGIN EXCLUSIVE"_s);
    EXPECT_EQ(failureOf(Store(locked).open()), Kind::Busy);
    other.run(u"ROLLBACK"_s);
    EXPECT_EQ(failureOf(Store(locked).open()), std::nullopt);
}

} // namespace

} // namespace norvane
