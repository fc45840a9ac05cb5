#include "TovekSMService/host/EngineProcess.h"

#include "foundation/EngineLauncher.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <csignal>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString textOf(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

QString packaged(const char *name)
{
    return textOf(QStringLiteral(NORVANE_PACKAGING_DIR "/") + QLatin1String(name));
}

bool hasLine(const QString &text, const char *line)
{
    return text.split(u'\n').contains(QLatin1String(line));
}

TEST(Packaging, theActivationFileNamesTheBusNameTheProgramAndTheUnit)
{
    const QString file = packaged("com.tovek.SMService.service");
    EXPECT_TRUE(hasLine(file, "[D-BUS Service]"));
    EXPECT_TRUE(hasLine(file, "Name=com.tovek.SMService"));
    EXPECT_TRUE(hasLine(file, "Exec=\"" NORVANE_INSTALLED_ENGINE "\""));
    EXPECT_TRUE(hasLine(file, "SystemdService=tovek-sms.service"));
    EXPECT_FALSE(file.contains(u'@'));
}

TEST(Packaging, theUnitIsOfTheBusNameAndComesBackAfterAFailure)
{
    const QString file = packaged("tovek-sms.service");
    for (const char *const line :
         {"Type=dbus", "BusName=com.tovek.SMService", "ExecStart=\"" NORVANE_INSTALLED_ENGINE "\"",
          "Restart=on-failure", "RestartPreventExitStatus=4", "StartLimitIntervalSec=0",
          "TimeoutStopSec=30", "UMask=0077", "WantedBy=default.target"})
        EXPECT_TRUE(hasLine(file, line)) << line;
    EXPECT_FALSE(file.contains(u'@'));
}

TEST(Packaging, aNamedEngineHasAUnitOfItsOwnThatDiffersInItsNamesAlone)
{
    const QString file = packaged("tovek-sms@.service");
    for (const char *const line : {"Description=SMS engine %i", "BusName=com.tovek.SMService.%i",
                                   "ExecStart=\"" NORVANE_INSTALLED_ENGINE "\" --name %i"})
        EXPECT_TRUE(hasLine(file, line)) << line;
    EXPECT_EQ(QString(file).remove(u" %i"_s).remove(u".%i"_s).remove(u" --name"_s),
              packaged("tovek-sms.service"));
}

TEST(Packaging, theServiceManagerTakesTheUnits)
{
    const QString checker = QStandardPaths::findExecutable(u"systemd-analyze"_s);
    if (checker.isEmpty())
        GTEST_SKIP() << "there is no systemd-analyze here";
    for (const char *const name : {"tovek-sms.service", "tovek-sms@.service"}) {
        // With a program that is there, as the engine isn't installed.
        const QTemporaryDir folder;
        QFile unit(folder.filePath(QLatin1String(name)));
        ASSERT_TRUE(unit.open(QIODevice::WriteOnly));
        unit.write(packaged(name)
                       .replace(QStringLiteral(NORVANE_INSTALLED_ENGINE),
                                QStringLiteral(NORVANE_BIN_DIR "/TovekSMService"))
                       .toUtf8());
        unit.close();
        QProcess check;
        check.setProcessChannelMode(QProcess::MergedChannels);
        check.start(checker, {u"--user"_s, u"--man=no"_s, u"verify"_s, unit.fileName()});
        ASSERT_TRUE(check.waitForFinished(hangMs));
        const QString said = QString::fromUtf8(check.readAll());
        EXPECT_FALSE(said.contains("tovek-sms"_L1)) << said.toStdString();
    }
}

/// A bus that knows the engine by its activation file.
class Activation : public EngineProcess
{
protected:
    Activation()
    {
        write("services/com.tovek.SMService.service",
              packaged("com.tovek.SMService.service")
                  .replace(QStringLiteral(NORVANE_INSTALLED_ENGINE), program()));
        write("bus.conf",
              u"<!DOCTYPE busconfig PUBLIC "
              "\"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
              "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">"
              "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>"
              "<servicedir>%1/services</servicedir>"
              "<policy context=\"default\"><allow send_destination=\"*\"/>"
              "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>"_s.arg(
                  m_folder.path()));
        m_daemon.start(u"dbus-daemon"_s, {u"--config-file="_s + m_folder.filePath(u"bus.conf"_s),
                                          u"--nofork"_s, u"--print-address"_s});
        EXPECT_TRUE(m_daemon.waitForReadyRead(hangMs));
        m_bus = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(
            QString::fromLatin1(m_daemon.readLine()).trimmed(), u"activating"_s));
        EXPECT_TRUE(m_bus->isConnected());
    }
    ~Activation() override
    {
        const pid_t engine = enginePid();
        m_bus.reset();
        QDBusConnection::disconnectFromBus(u"activating"_s);
        m_daemon.terminate();
        m_daemon.waitForFinished(hangMs);
        // It loses its bus, and ends.
        EXPECT_TRUE(engine == 0 || until([engine] { return ::kill(engine, 0) != 0; }));
    }

    void write(const char *name, const QString &text) const
    {
        const QString path = m_folder.filePath(QLatin1String(name));
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8());
    }
    pid_t enginePid() const
    {
        const QDBusReply<uint> pid = m_bus->interface()->servicePid(u"com.tovek.SMService"_s);
        return pid.isValid() ? static_cast<pid_t>(pid.value()) : 0;
    }

    QTemporaryDir m_folder;
    QProcess m_daemon;
    std::unique_ptr<QDBusConnection> m_bus;
};

TEST_F(Activation, theFirstCallStartsTheEngine)
{
    EXPECT_EQ(enginePid(), 0);
    EXPECT_EQ(call("GetQueueSize", {}, *m_bus).arguments().value(0).toInt(), 0);
    const pid_t first = enginePid();
    ASSERT_GT(first, 0); // 0 would be everything that runs here
    ASSERT_EQ(::kill(first, SIGKILL), 0);
    ASSERT_TRUE(until([this] { return enginePid() == 0; }));
    call("AddSMS", {u"600"_s, u"text"_s, QString()}, *m_bus);
    EXPECT_NE(enginePid(), 0);
}

TEST_F(Activation, aConsoleUsesTheBusAndNotTheProgramBesideItsOwn)
{
    ProcessEngineLauncher launcher(*m_bus, u"/no/such/program"_s, 15'000);
    launcher.ensureRunning();
    EXPECT_NE(enginePid(), 0);
}

} // namespace

} // namespace norvane
