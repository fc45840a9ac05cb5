#include "TovekSMService/store/StoreFixture.h"

#include "TovekSMService/store/StoreSchema.h"
#include "TovekSMService/store/Transaction.h"

#include <QFile>

#include <functional>

namespace {

using Kind = StoreFailure::Kind;

/// The kind of failure that an operation ends with, nothing if it succeeds.
std::optional<Kind> failureOf(const std::function<void()> &operation)
{
    try {
        operation();
        return std::nullopt;
    } catch (const StoreFailure &failure) {
        EXPECT_FALSE(failure.text().isEmpty());
        return failure.kind();
    }
}

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
    std::function<void(Store &, qint64 id)> operation;
};

class StoreWriting : public StoreFixture, public testing::WithParamInterface<Writing>
{
protected:
    StoreWriting() : m_id(add(noon()))
    {
        m_store->finish(add(noon()), -1, std::nullopt, noon(), false);
    }

    qint64 m_id;
};

TEST_P(StoreWriting, failsWhileAnotherHasTheLockAndLeavesAllAsItWas)
{
    OtherConnection other(file());
    const auto operation = [this] { GetParam().operation(*m_store, m_id); };
    const QList<QVariantList> before = other.contents();
    const qint32 sizeBefore = m_store->size();

    other.lock();
    EXPECT_EQ(failureOf(operation), Kind::Busy);
    EXPECT_EQ(m_store->size(), sizeBefore);
    EXPECT_EQ(other.contents(), before);
    other.unlock();

    EXPECT_EQ(other.contents(), before);
    EXPECT_EQ(failureOf(operation), std::nullopt);
    EXPECT_NE(other.contents(), before);
    EXPECT_EQ(m_store->size(), m_store->rows().size());
}

TEST_P(StoreWriting, failsWhereWritingIsForbidden)
{
    OtherConnection other(file());
    const QList<QVariantList> before = other.contents();
    runOnStoreConnection(file(), QStringLiteral("PRAGMA query_only = ON"));
    EXPECT_EQ(failureOf([this] { GetParam().operation(*m_store, m_id); }), Kind::ReadOnly);
    EXPECT_EQ(other.contents(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, StoreWriting,
    testing::Values(
        Writing{"add",
                [](Store &store, qint64) {
                    store.add({{}, {}}, noon());
                }},
        Writing{"clear", [](Store &store, qint64) { store.clear(); }},
        Writing{"change",
                [](Store &store, qint64 id) {
                    store.update({{{}, QStringLiteral("new"), {}, id}}, {});
                }},
        Writing{"remove", [](Store &store, qint64 id) { store.update({}, {id}); }},
        Writing{"beginPart", [](Store &store, qint64 id) { store.beginPart(id, 1, "hash"); }},
        Writing{"endPart", [](Store &store, qint64 id) { store.endPart(id, 1); }},
        Writing{"cancelPart",
                [](Store &store, qint64 id) {
                    store.cancelPart(id);
                    store.beginPart(id, 1, "hash");
                }},
        Writing{"postpone", [](Store &store, qint64 id) { store.postpone(id, 1, noon()); }},
        Writing{"finish", [](Store &store, qint64 id) { store.finish(id, 1, 1, noon(), true); }},
        Writing{"countPart", [](Store &store, qint64) { store.countPart(noon()); }},
        Writing{"together",
                [](Store &store, qint64 id) {
                    store.together([&] {
                        store.finish(id, 1, 1, noon(), true);
                        store.setToRun(true);
                    });
                }},
        Writing{"nextReference", [](Store &store, qint64) { store.nextReference(); }},
        Writing{"markReported",
                [](Store &store, qint64) {
                    store.markReported({store.unreportedFailures().constFirst().id});
                }},
        Writing{"setDeviceSettings", [](Store &store, qint64) { store.setDeviceSettings({}); }},
        Writing{"setToRun", [](Store &store, qint64) { store.setToRun(true); }},
        Writing{"setPinHistory",
                [](Store &store, qint64) {
                    store.setPinHistory(QStringLiteral("sim"), QStringLiteral("1234"),
                                        PinHistory::Tried, noon());
                }}),
    [](const auto &writing) { return std::string(writing.param.name); });

TEST_F(StoreTrouble, readingGoesOnWhileAnotherHasTheLock)
{
    add(noon());
    OtherConnection other(file());
    other.lock();
    EXPECT_EQ(m_store->rows().size(), 1);
    EXPECT_TRUE(m_store->first());
    EXPECT_EQ(m_store->firstDue(), noon());
    EXPECT_EQ(m_store->deviceSettings().Parameter, QStringLiteral("COM1, 9600"));
    EXPECT_TRUE(m_store->unreportedFailures().isEmpty());
}

TEST_F(StoreTrouble, aFullDiskTakesNoMessageAndWorkGoesOnWhenThereIsRoom)
{
    add(noon(), QStringLiteral("there"));
    fillDisk(file());
    const auto addLong = [this] { add(noon(), QStringLiteral("long"), QString(50'000, u'x')); };
    EXPECT_EQ(failureOf(addLong), Kind::Full);
    EXPECT_EQ(m_store->size(), 1);
    EXPECT_EQ(phones(), QStringList({QStringLiteral("there")}));

    freeDisk(file());
    EXPECT_EQ(failureOf(addLong), std::nullopt);
    EXPECT_EQ(m_store->size(), 2);
}

TEST_F(StoreTrouble, aListThatDoesNotFitIsNotQueuedInPart)
{
    fillDisk(file());
    EXPECT_EQ(failureOf([this] {
                  m_store->add({{QStringLiteral("1"), QStringLiteral("short")},
                                {QStringLiteral("2"), QString(50'000, u'x')}},
                               noon());
              }),
              Kind::Full);
    freeDisk(file());
    reopen();
    EXPECT_EQ(m_store->size(), 0);
}

TEST_F(StoreTrouble, aFailedCommitKeepsNothing)
{
    // A reader of the old journal kind holds up the commit itself, not the beginning.
    m_store.reset();
    OtherConnection other(file());
    other.run(QStringLiteral("PRAGMA journal_mode = DELETE"));
    other.run(QStringLiteral("BEGIN"));
    other.rows(QStringLiteral("SELECT * FROM message"));
    QSqlDatabase plain =
        QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("plain"));
    plain.setDatabaseName(file());
    plain.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=50"));
    ASSERT_TRUE(plain.open());
    {
        Transaction transaction(plain);
        execute(plain, QStringLiteral("INSERT INTO setting VALUES ('a', 'b')"));
        EXPECT_EQ(failureOf([&] { transaction.commit(); }), Kind::Busy);
    }
    other.run(QStringLiteral("COMMIT"));
    EXPECT_EQ(other.value(QStringLiteral("SELECT COUNT(*) FROM setting")).toInt(), 0);
    {
        Transaction transaction(plain);
        execute(plain, QStringLiteral("INSERT INTO setting VALUES ('a', 'b')"));
        transaction.commit();
    }
    EXPECT_EQ(other.value(QStringLiteral("SELECT COUNT(*) FROM setting")).toInt(), 1);
    plain.close();
    plain = QSqlDatabase();
    QSqlDatabase::removeDatabase(QStringLiteral("plain"));
}

TEST_F(StoreTrouble, aStoreOfALaterVersionIsRefusedAndLeftAsItIs)
{
    m_store.reset();
    const QString later = m_folder.filePath(QStringLiteral("later.sqlite"));
    {
        OtherConnection other(later);
        other.run(QStringLiteral("CREATE TABLE novelty (a)"));
        other.run(QStringLiteral("PRAGMA user_version = %1").arg(StoreSchema::Version + 1));
    }
    const QByteArray before = bytesOf(later);
    EXPECT_EQ(failureOf([&] { Store store(later); }), Kind::TooNew);
    EXPECT_EQ(bytesOf(later), before);
}

TEST_F(StoreTrouble, theSchemaVersionIsWritten)
{
    OtherConnection other(file());
    EXPECT_EQ(other.value(QStringLiteral("PRAGMA user_version")).toInt(), StoreSchema::Version);
}

TEST_F(StoreTrouble, aFileThatIsNoDatabaseIsRefusedAndLeftAsItIs)
{
    const QString other = m_folder.filePath(QStringLiteral("letter.txt"));
    const QByteArray letter = QByteArray("Dear reader, this is a letter. ").repeated(100);
    write(other, letter);
    EXPECT_EQ(failureOf([&] { Store store(other); }), Kind::Corrupt);
    EXPECT_EQ(bytesOf(other), letter);
}

TEST_F(StoreTrouble, aDamagedStoreIsReportedAsSuch)
{
    for (int i = 0; i < 200; ++i)
        m_store->add({{QStringLiteral("600"), QString(200, u'x')}}, noon());
    m_store.reset();
    QByteArray bytes = bytesOf(file());
    ASSERT_GT(bytes.size(), 20'000);
    for (qsizetype at = 4096; at < bytes.size(); ++at)
        bytes[at] = static_cast<char>(at * 7);
    write(file(), bytes);
    EXPECT_EQ(failureOf([&] {
                  Store store(file());
                  store.rows();
              }),
              Kind::Corrupt);
}

TEST_F(StoreTrouble, aFileThatCannotBeMadeIsRefused)
{
    EXPECT_EQ(failureOf([&] { Store store(m_folder.filePath(QStringLiteral("no/such/folder"))); }),
              Kind::ReadOnly);
}

TEST_F(StoreTrouble, aStoreIsNotMadeWhileAnotherHasTheLock)
{
    const QString locked = m_folder.filePath(QStringLiteral("locked.sqlite"));
    OtherConnection other(locked);
    other.run(QStringLiteral("CREATE TABLE something (a)"));
    other.run(QStringLiteral("BEGIN EXCLUSIVE"));
    EXPECT_EQ(failureOf([&] { Store store(locked); }), Kind::Busy);
    other.run(QStringLiteral("ROLLBACK"));
    EXPECT_EQ(failureOf([&] { Store store(locked); }), std::nullopt);
}

} // namespace
