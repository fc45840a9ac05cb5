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
    Store store(file());
    EXPECT_EQ(store.database().access(), StoreDatabase::Access::None);
    EXPECT_EQ(store.queue().size(), 0);
    EXPECT_FALSE(store.queue().rows());
    EXPECT_FALSE(store.queue().firstDue());
    EXPECT_FALSE(store.settings().isToRun());
    EXPECT_FALSE(store.settings().setToRun(true));
    EXPECT_FALSE(store.queue().add({{u"1"_s, QString()}}, QString()));
    done(store.open());
    EXPECT_EQ(store.database().access(), StoreDatabase::Access::Whole);
    EXPECT_EQ(store.queue().size(), 1);
    store.close();
    EXPECT_EQ(store.database().access(), StoreDatabase::Access::None);
    EXPECT_FALSE(store.queue().rows());
}

TEST_F(StoreDatabaseTest, whatIsNoDatabaseIsNotOpenedForReadingEither)
{
    m_store.reset();
    QFile damaged(file());
    ASSERT_TRUE(damaged.open(QIODevice::WriteOnly));
    damaged.write(QByteArray(5000, 'x'));
    damaged.close();
    Store store(file());
    const StoreResult<> opened = store.open();
    ASSERT_FALSE(opened) << "it was opened";
    EXPECT_EQ(opened.error().kind(), StoreFailure::Kind::Corrupt);
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
    const StoreResult<> opened = Store(file()).open();
    ASSERT_FALSE(opened) << "it was opened";
    EXPECT_EQ(opened.error().kind(), StoreFailure::Kind::Corrupt);
}

TEST_F(StoreDatabaseTest, aStoreThatCannotBeWrittenIsOpenForReading)
{
    add(noon(), u"600"_s);
    m_store->close();
    OtherConnection other(file());
    other.run(u"PRAGMA journal_mode = DELETE"_s);
    other.run(u"BEGIN EXCLUSIVE"_s);
    const StoreResult<> opened = m_store->open();
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error().kind(), StoreFailure::Kind::Busy);
    EXPECT_EQ(m_store->database().access(), StoreDatabase::Access::Reading);
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_EQ(phones(), QStringList({u"600"_s}));
    EXPECT_FALSE(m_store->queue().clear());
    EXPECT_EQ(m_store->queue().size(), 1);

    other.run(u"ROLLBACK"_s);
    done(m_store->open());
    EXPECT_EQ(m_store->database().access(), StoreDatabase::Access::Whole);
    done(m_store->queue().clear());
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
    done(m_store->file().beginIdsAt(1000));
    EXPECT_EQ(add(noon()), 1001);
    done(m_store->file().beginIdsAt(500));
    EXPECT_EQ(add(noon()), 1002);
    done(m_store->file().beginIdsAt(2000));
    EXPECT_EQ(add(noon()), 2001);
}

TEST_F(StoreDatabaseTest, idsOfOutcomesCanBeginThereToo)
{
    const auto fail = [this] {
        return given(m_store->queue().finish(add(noon()), -36, std::nullopt, noon(), false));
    };
    EXPECT_EQ(fail(), 1);
    done(m_store->file().beginIdsAt(1000));
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
    done(m_store->database().together([&] {
        done(m_store->queue().finish(first, 1, 1, noon(), true));
        EXPECT_EQ(given(m_store->queue().first())->id, second);
        done(
            m_store->queue().begin({{second, given(m_store->settings().nextReference()), "hash"}}));
        done(m_store->parts().count(noon()));
        EXPECT_EQ(other.value(seen), u"0 0"_s);
        return StoreResult<>();
    }));
    EXPECT_EQ(other.value(seen), u"1 1"_s);
    EXPECT_EQ(m_store->queue().size(), 1);
    reopen();
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_EQ(given(m_store->queue().interrupted()).size(), 1);
}

TEST_F(StoreTogether, aFailureUndoesAllOfThemAndTheStoreIsUsedOn)
{
    const qint64 id = add(noon());
    OtherConnection other(file());
    const QList<QVariantList> before = other.contents();
    const StoreResult<> failure = m_store->database().together([&]() -> StoreResult<> {
        done(m_store->queue().finish(id, 1, 1, noon(), true));
        done(m_store->queue().add({{u"a"_s, {}}, {u"b"_s, {}}}, noon()));
        EXPECT_EQ(m_store->queue().size(), 2);
        return failed(StoreFailure(StoreFailure::Kind::Other, u"no"_s));
    });
    ASSERT_FALSE(failure);
    EXPECT_EQ(failure.error().text(), u"no"_s);
    EXPECT_EQ(other.contents(), before);
    EXPECT_EQ(m_store->queue().size(), 1);

    done(m_store->database().together(
        [&] { return m_store->queue().finish(id, 1, 1, noon(), true); }));
    done(m_store->queue().add({{u"c"_s, {}}}, noon()));
    reopen();
    EXPECT_EQ(phones(), QStringList({u"c"_s}));
}

TEST_F(StoreTogether, withinAnotherOneItIsAPartOfThat)
{
    const qint64 id = add(noon());
    StoreDatabase &database = m_store->database();
    OtherConnection other(file());
    const QList<QVariantList> before = other.contents();
    const StoreResult<> failure = database.together([&]() -> StoreResult<> {
        done(database.together([&] { return m_store->queue().postpone(id, 1, noon()); }));
        done(database.together([&] { return m_store->queue().clear(); }));
        EXPECT_EQ(other.contents(), before) << "nothing is committed by the inner ones";
        EXPECT_EQ(m_store->queue().size(), 0);
        return failed(StoreFailure(StoreFailure::Kind::Other, u"no"_s));
    });
    EXPECT_FALSE(failure);
    EXPECT_EQ(other.contents(), before);
    EXPECT_EQ(m_store->queue().size(), 1);
}

TEST_F(StoreTogether, whatIsTakenBackInMemoryIsWhatWasRolledBackAndNothingElse)
{
    StoreDatabase &database = m_store->database();
    QStringList undone;
    const auto noting = [&undone](const QString &what) {
        return [&undone, what] { undone.append(what); };
    };
    database.onRollback(noting(u"outside"_s));
    done(database.together([&] {
        database.onRollback(noting(u"committed"_s));
        return m_store->settings().setToRun(true);
    }));
    EXPECT_TRUE(undone.isEmpty());
    EXPECT_FALSE(database.together([&]() -> StoreResult<> {
        database.onRollback(noting(u"rolled back"_s));
        return failed(StoreFailure(StoreFailure::Kind::Other, u"no"_s));
    }));
    EXPECT_EQ(undone, QStringList({u"rolled back"_s}));
}

TEST_F(StoreTogether, nothingIsKeptWhileAnotherHasTheLock)
{
    const qint64 id = add(noon());
    OtherConnection other(file());
    other.lock();
    bool tried = false;
    EXPECT_FALSE(m_store->database().together([&] {
        tried = true;
        return StoreResult<>();
    }));
    EXPECT_FALSE(tried);
    other.unlock();
    done(m_store->database().together(
        [&] { return m_store->queue().finish(id, 1, 1, noon(), true); }));
    EXPECT_EQ(m_store->queue().size(), 0);
}

} // namespace

} // namespace norvane
