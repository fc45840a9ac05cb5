#include "system/EngineProcess.h"

#include "contract/BusTypes.h"

#include <QDBusConnectionInterface>
#include <QDir>
#include <QProcess>

#include <csignal>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString engineProgram()
{
    return QStringLiteral(NORVANE_BIN_DIR "/TovekSMService");
}

} // namespace

EngineProcess::EngineProcess()
{
    // Each test begins with an engine that nobody has used.
    QDir(qEnvironmentVariable("XDG_DATA_HOME") + u"/TovekSMService"_s).removeRecursively();
}

EngineProcess::~EngineProcess()
{
    if (const qint64 pid = enginePid()) {
        ::kill(static_cast<pid_t>(pid), SIGCONT);
        ::kill(static_cast<pid_t>(pid), SIGTERM);
        EXPECT_TRUE(eventually([] { return enginesOfThisTest().isEmpty(); }));
    }
}

void EngineProcess::plugIn(const QStringList &simulatorOptions)
{
    device = std::make_unique<RunningSimulator>(simulatorOptions);
    ASSERT_TRUE(device->isReady());
    storeDevice(device->link() + u", 115200"_s);
}

void EngineProcess::storeDevice(const QString &parameter)
{
    QProcess command;
    command.start(engineProgram(), {u"--device"_s, parameter});
    ASSERT_TRUE(command.waitForFinished(hangMs));
    ASSERT_EQ(command.exitCode(), 0) << command.readAllStandardError().constData();
}

std::unique_ptr<EngineLauncher> EngineProcess::makeLauncher(const QDBusConnection &bus)
{
    return std::make_unique<ProcessEngineLauncher>(bus, engineProgram(), hangMs);
}

std::unique_ptr<SMSManagerProxy> EngineProcess::makeProxy()
{
    if (!m_launcher)
        m_launcher = makeLauncher(QDBusConnection::sessionBus());
    auto proxy = std::make_unique<SMSManagerProxy>(*m_launcher);
    proxy->setCallTimeout(hangMs);
    return proxy;
}

qint64 EngineProcess::enginePid()
{
    const QDBusReply<uint> pid =
        QDBusConnection::sessionBus().interface()->servicePid(QLatin1String(Bus::serviceName));
    return pid.isValid() ? pid.value() : 0;
}

QList<qint64> EngineProcess::enginesOfThisTest()
{
    const QByteArray dataFolder = "XDG_DATA_HOME=" + qgetenv("XDG_DATA_HOME") + '\0';
    QList<qint64> found;
    for (const QString &entry : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        bool isProcess = false;
        const qint64 pid = entry.toLongLong(&isProcess);
        const QString folder = u"/proc/"_s + entry;
        if (!isProcess || QFile::symLinkTarget(folder + u"/exe"_s) != engineProgram())
            continue;
        QFile environment(folder + u"/environ"_s);
        if (environment.open(QIODevice::ReadOnly) && environment.readAll().contains(dataFolder))
            found.append(pid);
    }
    return found;
}

void EngineProcess::killEngine()
{
    const qint64 pid = enginePid();
    ASSERT_NE(pid, 0);
    ASSERT_EQ(::kill(static_cast<pid_t>(pid), SIGKILL), 0);
    ASSERT_TRUE(eventually([] { return enginePid() == 0; }));
}

} // namespace norvane
