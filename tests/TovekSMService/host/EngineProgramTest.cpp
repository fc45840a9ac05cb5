#include "TovekSMService/host/EngineProcess.h"

#include "TovekSMService/store/OtherConnection.h"
#include "TovekSMService/store/StoreSchema.h"

#include <QDir>
#include <QFileInfo>

#include <sys/stat.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class EngineProgram : public EngineProcess
{};

QProcessEnvironment with(const char *variable, const QString &value)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QLatin1String(variable), value);
    return environment;
}

TEST_F(EngineProgram, itsFilesAreForTheirOwnerAlone)
{
    const mode_t before = ::umask(0);
    start();
    ::umask(before);
    addSMS(u"600"_s, QString(), QString());
    EXPECT_EQ(rightsOf(folder()), 0700u);
    const QFileInfoList files =
        QDir(folder()).entryInfoList(QDir::Files | QDir::Hidden | QDir::System);
    EXPECT_GE(files.size(), 3);
    for (const QFileInfo &file : files)
        EXPECT_EQ(rightsOf(file.filePath()) & 0077, 0u) << file.fileName().toStdString();
    EXPECT_EQ(rightsOf(storeFile()), 0600u);
}

TEST_F(EngineProgram, aFolderWithWiderRightsIsNarrowed)
{
    QDir().mkpath(folder());
    ASSERT_EQ(::chmod(QFile::encodeName(folder()).constData(), 0755), 0);
    start();
    EXPECT_EQ(rightsOf(folder()), 0700u);
}

TEST_F(EngineProgram, whatWasQueuedSurvivesAKillAndAStartedEngineComesBackStarted)
{
    start();
    setSettings(noDevice());
    addSMS(u"600"_s, u"text"_s, u"2024-05-01T12:00:00"_s);
    call("StartEngine");
    const QList<WireRow> before = queue();
    kill();
    start();
    EXPECT_EQ(callForNumber("GetEngineStatus"), 1);
    EXPECT_EQ(queue(), before);
    call("StopEngine");
    kill();
    start();
    EXPECT_EQ(callForNumber("GetEngineStatus"), 0);
    EXPECT_EQ(callForNumber("GetQueueSize"), 1);
}

TEST_F(EngineProgram, theWishToEndIsFollowed)
{
    start();
    stop();
    EXPECT_TRUE(until([] { return !isOnBus(); }));
}

TEST_F(EngineProgram, ofTwoThatComeUpAtOnceOneStays)
{
    for (int round = 0; round < 3; ++round) {
        QProcess other;
        other.setProgram(program());
        m_engine.start();
        other.start();
        ASSERT_TRUE(m_engine.waitForStarted(hangMs));
        ASSERT_TRUE(other.waitForStarted(hangMs));
        ASSERT_TRUE(until([&] {
            return m_engine.state() == QProcess::NotRunning ||
                   other.state() == QProcess::NotRunning;
        }));
        QProcess &left = m_engine.state() == QProcess::NotRunning ? m_engine : other;
        QProcess &stayed = &left == &m_engine ? other : m_engine;
        EXPECT_EQ(left.exitCode(), 0);
        ASSERT_TRUE(until([] { return isOnBus(); })); // the one that stays may be on its way up
        EXPECT_EQ(callForNumber("GetEngineStatus"), 0);
        EXPECT_EQ(stayed.state(), QProcess::Running);
        stayed.terminate();
        EXPECT_TRUE(stayed.waitForFinished(hangMs));
        EXPECT_TRUE(until([] { return !isOnBus(); }));
    }
}

TEST_F(EngineProgram, withoutASessionBusItFailsWithAnError)
{
    const Ended ended = run({}, with("DBUS_SESSION_BUS_ADDRESS", u"unix:path=/no/bus"_s));
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_TRUE(ended.err.contains("no session bus"_L1));
}

TEST_F(EngineProgram, withoutAFolderItFailsWithAnError)
{
    const Ended ended = run({}, with("XDG_DATA_HOME", u"/dev/null"_s));
    EXPECT_EQ(ended.exitCode, 1);
    EXPECT_TRUE(ended.err.contains("folder"_L1));
}

TEST_F(EngineProgram, aStoreOfALaterVersionIsRefused)
{
    QDir().mkpath(folder());
    OtherConnection(storeFile())
        .run(u"PRAGMA user_version = %1"_s.arg(StoreSchema::latestVersion + 1));
    const Ended ended = run({});
    EXPECT_EQ(ended.exitCode, 4);
    EXPECT_TRUE(ended.err.contains("schema version"_L1));
    EXPECT_EQ(OtherConnection(storeFile()).value(u"PRAGMA user_version"_s).toInt(),
              StoreSchema::latestVersion + 1);
}

TEST_F(EngineProgram, anEngineThatLosesItsBusEnds)
{
    QProcess daemon;
    daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
    ASSERT_TRUE(daemon.waitForReadyRead(hangMs));
    const QString address = QString::fromLatin1(daemon.readLine()).trimmed();
    const QString name = u"short-lived"_s;
    {
        const QDBusConnection bus = QDBusConnection::connectToBus(address, name);
        ASSERT_TRUE(bus.isConnected());
        m_engine.setProcessEnvironment(with("DBUS_SESSION_BUS_ADDRESS", address));
        m_engine.start();
        ASSERT_TRUE(until([&] { return isOnBus(bus); }));
    }
    QDBusConnection::disconnectFromBus(name);
    daemon.kill();
    ASSERT_TRUE(daemon.waitForFinished(hangMs));
    ASSERT_TRUE(m_engine.waitForFinished(hangMs));
    EXPECT_EQ(m_engine.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(m_engine.exitCode(), 0);
}

} // namespace

} // namespace norvane
