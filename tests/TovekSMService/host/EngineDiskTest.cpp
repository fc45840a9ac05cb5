#include "TovekSMService/host/EngineProcess.h"

#include "TovekSMService/store/OtherConnection.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/store/StoreResults.h"
#include "TovekSMService/store/StoreSchema.h"

#include <QDBusPendingCall>
#include <QDir>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class EngineDisk : public EngineProcess
{
protected:
    static QStringList setAside()
    {
        return QDir(folder()).entryList({u"queue.sqlite.damaged-*"_s}, QDir::Files, QDir::Name);
    }
    static QByteArray bytesOf(const QString &path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll();
    }
    static void writeStore(const QByteArray &bytes)
    {
        QDir().mkpath(folder());
        QFile file(storeFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    /// Overwrites what follows the first page, where the file still looks like a database.
    static void damageStore()
    {
        QByteArray bytes = bytesOf(storeFile());
        for (qsizetype at = 4096; at < bytes.size(); ++at)
            bytes[at] = 'x';
        writeStore(bytes);
    }
    static bool hearsOfDamage()
    {
        Listener listener(QDBusConnection::sessionBus());
        call("ReportState");
        until([&] { return listener.has(u"SMSQueueChanged"_s); });
        call("GetQueueSize");
        QCoreApplication::processEvents();
        return listener.has(u"WarningError -57 the store was damaged"_s);
    }
};

TEST_F(EngineDisk, aFileThatIsNoStoreIsSetAsideAndANewOneBegun)
{
    const QByteArray garbage(10'000, 'g');
    writeStore(garbage);
    start();
    ASSERT_EQ(setAside().size(), 1);
    EXPECT_EQ(bytesOf(folder() + u'/' + setAside().constFirst()), garbage);
    addSMS(u"600"_s, u"text"_s, QString());
    EXPECT_EQ(callForNumber("GetQueueSize"), 1);
}

TEST_F(EngineDisk, aStoreThatIsDamagedInsideIsSetAside)
{
    start();
    for (int number = 0; number < 200; ++number)
        addSMS(u"600"_s, QString(100, u't'), QString());
    stop();
    damageStore();
    const QByteArray damaged = bytesOf(storeFile());
    start();
    ASSERT_EQ(setAside().size(), 1);
    EXPECT_EQ(bytesOf(folder() + u'/' + setAside().constFirst()), damaged);
    EXPECT_EQ(callForNumber("GetQueueSize"), 0);
}

TEST_F(EngineDisk, damageThatIsMetWhileItRunsIsSetAsideAndToldAtOnce)
{
    const QString later = u"2100-01-01T00:00:00"_s;
    {
        // More than the database library keeps in memory.
        QDir().mkpath(folder());
        Store store(storeFile());
        done(store.open());
        done(store.queue().add(QList<SMSList::Entry>(40'000, {u"600"_s, QString(150, u't')}),
                               later));
    }
    start();
    setSettings(noDevice());
    call("StartEngine");
    const qlonglong lastId = 40'000;
    Listener listener(QDBusConnection::sessionBus());
    call("ReportState");
    ASSERT_TRUE(until([&] { return listener.has(u"SMSQueueChanged"_s); }));
    damageStore();
    QDBusConnection::sessionBus().call(request("ClearQueue"), QDBus::Block, hangMs);
    ASSERT_TRUE(until([&] { return !setAside().isEmpty(); }));
    EXPECT_TRUE(until([&] { return listener.has(u"WarningError -57 the store was damaged"_s); }));
    // It begins anew: stopped, with no device set, and with ids that nobody knows yet.
    EXPECT_TRUE(until([&] { return listener.heard.contains(u"EngineStatus 0"_s); }));
    EXPECT_EQ(callForNumber("GetEngineStatus"), 0);
    addSMS(u"602"_s, u"newer"_s, later);
    const QList<WireRow> after = queue();
    ASSERT_EQ(after.size(), 1);
    EXPECT_GT(after.constFirst().id, lastId);
    // It was heard: the next console isn't told.
    EXPECT_FALSE(hearsOfDamage());
}

TEST_F(EngineDisk, theStatusTellsOfALockedStoreUntilTheLockIsGone)
{
    start();
    setSettings(noDevice());
    const auto exitCode = [] { return run({u"--status"_s, u"--json"_s}).exitCode; };
    EXPECT_EQ(exitCode(), 1);
    OtherConnection other(storeFile());
    other.lock();
    const QDBusPendingCall adding = QDBusConnection::sessionBus().asyncCall(
        request("AddSMS", {u"600"_s, QString(), QString()}), hangMs);
    EXPECT_TRUE(until([&] { return exitCode() == 3; }));
    other.unlock();
    EXPECT_TRUE(until([&] { return exitCode() == 1; }));
}

TEST_F(EngineDisk, theDamageIsToldOnceWhateverEndsTheEngineBefore)
{
    writeStore("garbage that is no database, and long enough to have had a header of its own");
    start();
    kill();
    ASSERT_TRUE(until([] { return !isOnBus(); }));
    start();
    EXPECT_TRUE(hearsOfDamage());
    EXPECT_FALSE(hearsOfDamage());
    stop();
    start();
    EXPECT_FALSE(hearsOfDamage());
    EXPECT_EQ(setAside().size(), 1);
}

TEST_F(EngineDisk, aSoundStoreIsNotSetAside)
{
    start();
    addSMS(u"600"_s, u"text"_s, QString());
    kill();
    ASSERT_TRUE(until([] { return !isOnBus(); }));
    start();
    EXPECT_EQ(setAside(), QStringList());
    EXPECT_EQ(callForNumber("GetQueueSize"), 1);
    EXPECT_FALSE(hearsOfDamage());
}

TEST_F(EngineDisk, aStoreOfALaterVersionIsLeftByteForByte)
{
    run({u"--status"_s});
    OtherConnection(storeFile())
        .run(u"PRAGMA user_version = %1"_s.arg(StoreSchema::latestVersion + 1));
    const QByteArray before = bytesOf(storeFile());
    const Ended ended = run({});
    EXPECT_EQ(ended.exitCode, 4);
    EXPECT_TRUE(ended.err.contains("schema version"_L1));
    EXPECT_EQ(bytesOf(storeFile()), before);
    EXPECT_EQ(setAside(), QStringList());
    for (const char *const query : {"--status", "--queue", "--report"})
        EXPECT_EQ(run({QLatin1String(query)}).exitCode, 1) << query;
    EXPECT_EQ(run({u"--status"_s, u"--json"_s}).exitCode, 3);
    EXPECT_EQ(bytesOf(storeFile()), before);
}

/// With the engine's folder on a disk of its own.
class EngineOnSmallDisk : public EngineDisk
{
protected:
    EngineOnSmallDisk()
    {
        // The mount is this process's and its children's alone.
        m_isThere = ::unshare(CLONE_NEWNS) == 0 &&
                    ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                    QDir().mkpath(folder()) &&
                    ::mount("tmpfs", path().constData(), "tmpfs", 0, "size=512k,mode=0700") == 0;
    }
    ~EngineOnSmallDisk() override
    {
        kill();
        if (m_isThere)
            ::umount2(path().constData(), MNT_DETACH);
    }

    static QByteArray path() { return QFile::encodeName(folder()); }
    static void remount(unsigned long flags)
    {
        ASSERT_EQ(
            ::mount("none", path().constData(), nullptr, MS_REMOUNT | flags, "size=512k,mode=0700"),
            0);
    }
    static QString filler() { return folder() + u"/filler"_s; }
    static void fill()
    {
        QFile file(filler());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        while (file.write(QByteArray(4096, 'f')) > 0) {
        }
    }
    static int fault() { return run({u"--status"_s, u"--json"_s}).exitCode; }
    bool m_isThere = false;
};

#define NEED_DISK()                                                                                \
    if (!m_isThere)                                                                                \
    GTEST_SKIP() << "this account can't mount a disk of its own"

TEST_F(EngineOnSmallDisk, onADiskThatCannotBeWrittenItComesUpAndGoesOnWhenItCan)
{
    NEED_DISK();
    start();
    setSettings(noDevice());
    addSMS(u"600"_s, u"text"_s, u"2100-01-01T00:00:00"_s);
    stop();
    remount(MS_RDONLY);
    start();
    EXPECT_EQ(callForNumber("GetQueueSize"), 1);
    EXPECT_EQ(settings(), noDevice());
    EXPECT_EQ(fault(), 3);
    // The device is asked, and its own trouble answered.
    EXPECT_EQ(callForNumber("TestDevice"), -2);
    Listener listener(QDBusConnection::sessionBus());
    call("ReportState");
    EXPECT_TRUE(until([&] { return listener.has(u"WarningError -57"_s); }));

    remount(0);
    ASSERT_TRUE(until([] { return fault() == 1; }));
    addSMS(u"601"_s, u"text"_s, u"2100-01-01T00:00:00"_s);
    EXPECT_EQ(callForNumber("GetQueueSize"), 2);
}

TEST_F(EngineOnSmallDisk, onAFullDiskItComesUpAndGoesOnWhenThereIsRoom)
{
    NEED_DISK();
    QFile lock(folder() + u"/engine.lock"_s);
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    lock.close();
    fill();
    start();
    EXPECT_EQ(fault(), 3);
    EXPECT_EQ(callForNumber("GetQueueSize"), 0);

    ASSERT_TRUE(QFile::remove(filler()));
    ASSERT_TRUE(until([] { return fault() == 1; }));
    addSMS(u"600"_s, u"text"_s, QString());
    EXPECT_EQ(callForNumber("GetQueueSize"), 1);
}

TEST_F(EngineOnSmallDisk, whatWasStartedIsStartedOnceTheDiskIsBack)
{
    NEED_DISK();
    start();
    setSettings(noDevice());
    call("StartEngine");
    kill();
    ASSERT_TRUE(until([] { return !isOnBus(); }));
    // What the crash left in the log can't be brought into the file.
    remount(MS_RDONLY);
    start();
    remount(0);
    EXPECT_TRUE(until([] { return callForNumber("GetEngineStatus") == 1; }));
}

} // namespace

} // namespace norvane
