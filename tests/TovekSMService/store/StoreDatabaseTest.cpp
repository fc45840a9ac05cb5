#include "TovekSMService/store/StoreFixture.h"

#include <QFile>

#include <sys/stat.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class StoreDatabaseTest : public StoreFixture
{};

TEST_F(StoreDatabaseTest, aStoreThatIsNotOpenFailsInEveryOperationAndOpensLater)
{
    add(u"2026-01-01T00:00:00"_s);
    Store store(file(), Store::Opening::Later);
    EXPECT_EQ(store.database().access(), StoreDatabase::Access::None);
    EXPECT_EQ(store.queue().size(), 0);
    EXPECT_THROW(store.queue().rows(), StoreFailure);
    EXPECT_THROW(store.queue().firstDue(), StoreFailure);
    EXPECT_THROW(store.settings().isToRun(), StoreFailure);
    EXPECT_THROW(store.settings().setToRun(true), StoreFailure);
    EXPECT_THROW(store.queue().add({{u"1"_s, QString()}}, QString()), StoreFailure);
    store.open();
    EXPECT_EQ(store.database().access(), StoreDatabase::Access::Whole);
    EXPECT_EQ(store.queue().size(), 1);
    store.close();
    EXPECT_EQ(store.database().access(), StoreDatabase::Access::None);
    EXPECT_THROW(store.queue().rows(), StoreFailure);
}

TEST_F(StoreDatabaseTest, whatIsNoDatabaseIsNotOpenedForReadingEither)
{
    m_store.reset();
    QFile damaged(file());
    ASSERT_TRUE(damaged.open(QIODevice::WriteOnly));
    damaged.write(QByteArray(5000, 'x'));
    damaged.close();
    Store store(file(), Store::Opening::Later);
    try {
        store.open();
        ADD_FAILURE() << "it was opened";
    } catch (const StoreFailure &failure) {
        EXPECT_EQ(failure.kind(), StoreFailure::Kind::Corrupt);
    }
    EXPECT_EQ(store.database().access(), StoreDatabase::Access::None);
}

TEST_F(StoreDatabaseTest, damageBehindASoundHeaderIsSeenAtOnce)
{
    for (int number = 0; number < 200; ++number)
        add(u"2026-01-01T00:00:00"_s, u"600"_s, QString(100, u't'));
    m_store.reset();
    QFile damaged(file());
    ASSERT_TRUE(damaged.open(QIODevice::ReadWrite));
    // One page in the middle; a file of this size has many.
    ASSERT_GT(damaged.size(), 8 * 4096);
    ASSERT_TRUE(damaged.seek(6 * 4096));
    damaged.write(QByteArray(4096, 'x'));
    damaged.close();
    try {
        const Store store(file());
        ADD_FAILURE() << "it was opened";
    } catch (const StoreFailure &failure) {
        EXPECT_EQ(failure.kind(), StoreFailure::Kind::Corrupt);
    }
}

TEST_F(StoreDatabaseTest, fileAndItsCompanionsAreForTheirOwnerAlone)
{
    add(noon());
    for (const char *const suffix : {"", "-wal", "-shm"}) {
        struct stat info = {};
        const QByteArray name = QFile::encodeName(file()) + suffix;
        ASSERT_EQ(::stat(name.constData(), &info), 0) << name.toStdString();
        EXPECT_EQ(info.st_mode & 0777, 0600u) << name.toStdString();
    }
}

TEST_F(StoreDatabaseTest, aFileWithWiderRightsIsNarrowed)
{
    m_store.reset();
    QFile::setPermissions(file(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                                      QFile::ReadOther);
    reopen();
    struct stat info = {};
    ASSERT_EQ(::stat(QFile::encodeName(file()).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
}

TEST_F(StoreDatabaseTest, commitsReachTheDiskBeforeTheyReturn)
{
    OtherConnection other(file());
    EXPECT_EQ(other.value(u"PRAGMA journal_mode"_s).toString(), u"wal"_s);
    // The setting belongs to the connection, so it is read by having it fail where it isn't FULL.
    runOnStoreConnection(file(), u"CREATE TEMP TABLE told AS "
                                 "SELECT synchronous FROM pragma_synchronous"_s);
    runOnStoreConnection(file(), u"CREATE TEMP TABLE checked (level INTEGER CHECK "
                                 "(level = 2))"_s);
    runOnStoreConnection(file(), u"INSERT INTO checked SELECT synchronous FROM told"_s);
}

TEST_F(StoreDatabaseTest, idsCanBeginBeyondThoseOfAnotherStore)
{
    m_store->database().beginIdsAt(1000);
    EXPECT_EQ(add(noon()), 1001);
    m_store->database().beginIdsAt(500);
    EXPECT_EQ(add(noon()), 1002);
    m_store->database().beginIdsAt(2000);
    EXPECT_EQ(add(noon()), 2001);
}

TEST_F(StoreDatabaseTest, idsOfOutcomesCanBeginThereToo)
{
    const auto fail = [this] {
        return m_store->queue().finish(add(noon()), -36, std::nullopt, noon(), false);
    };
    EXPECT_EQ(fail(), 1);
    m_store->database().beginIdsAt(1000);
    EXPECT_EQ(fail(), 1001);
}

class StoreTogether : public StoreFixture
{};

TEST_F(StoreTogether, severalOperationsAreOneCommit)
{
    const qint64 first = add(noon(), u"1"_s);
    const qint64 second = add(noon(), u"2"_s);
    OtherConnection other(file());
    const QString seen = u"SELECT (SELECT COUNT(*) FROM outcome) || ' ' || "
                         "(SELECT COUNT(*) FROM message WHERE state = 1)"_s;
    m_store->database().together([&] {
        m_store->queue().finish(first, 1, 1, noon(), true);
        EXPECT_EQ(m_store->queue().first()->id, second);
        m_store->queue().beginPart(second, m_store->settings().nextReference(), "hash");
        m_store->parts().count(noon());
        EXPECT_EQ(other.value(seen), u"0 0"_s);
    });
    EXPECT_EQ(other.value(seen), u"1 1"_s);
    EXPECT_EQ(m_store->queue().size(), 1);
    reopen();
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_EQ(m_store->queue().interrupted().size(), 1);
}

TEST_F(StoreTogether, aFailureUndoesAllOfThemAndTheStoreIsUsedOn)
{
    const qint64 id = add(noon());
    OtherConnection other(file());
    const QList<QVariantList> before = other.contents();
    EXPECT_THROW(m_store->database().together([&] {
        m_store->queue().finish(id, 1, 1, noon(), true);
        m_store->queue().add({{u"a"_s, {}}, {u"b"_s, {}}}, noon());
        EXPECT_EQ(m_store->queue().size(), 2);
        throw StoreFailure(StoreFailure::Kind::Other, u"no"_s);
    }),
                 StoreFailure);
    EXPECT_EQ(other.contents(), before);
    EXPECT_EQ(m_store->queue().size(), 1);

    m_store->database().together([&] { m_store->queue().finish(id, 1, 1, noon(), true); });
    m_store->queue().add({{u"c"_s, {}}}, noon());
    reopen();
    EXPECT_EQ(phones(), QStringList({u"c"_s}));
}

TEST_F(StoreTogether, nothingIsKeptWhileAnotherHasTheLock)
{
    const qint64 id = add(noon());
    OtherConnection other(file());
    other.lock();
    bool tried = false;
    EXPECT_THROW(m_store->database().together([&] { tried = true; }), StoreFailure);
    EXPECT_FALSE(tried);
    other.unlock();
    m_store->database().together([&] { m_store->queue().finish(id, 1, 1, noon(), true); });
    EXPECT_EQ(m_store->queue().size(), 0);
}

} // namespace

} // namespace norvane
