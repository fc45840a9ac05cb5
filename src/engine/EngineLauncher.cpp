#include "engine/EngineLauncher.h"

#include "engine/contract/BusTypes.h"
#include "foundation/FailureNumbers.h"

#include <QDBusConnectionInterface>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

namespace {

constexpr int pollInterval = 10; // ms between two looks at the bus

[[noreturn]] void raiseCannotStart(const QString &reason)
{
    throw NumberedFailure(Failure::CannotCreateObject, QStringLiteral("SMSManager"),
                          Failure::description(Failure::CannotCreateObject) + QStringLiteral(" (") +
                              reason + u')');
}

QString errorOutputFile()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                           QStringLiteral("/TovekSMService");
    if (!QDir().mkpath(folder))
        return QProcess::nullDevice();
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return folder + QStringLiteral("/engine.log");
}

} // namespace

ProcessEngineLauncher::ProcessEngineLauncher(const QDBusConnection &bus, const QString &program,
                                             int timeLimit)
    : m_bus(bus), m_program(program), m_timeLimit(timeLimit)
{}

void ProcessEngineLauncher::ensureRunning()
{
    if (!m_bus.isConnected())
        raiseCannotStart(QStringLiteral("no session bus"));
    const QString name = QLatin1String(Bus::ServiceName);
    QDBusConnectionInterface *const bus = m_bus.interface();
    if (bus->isServiceRegistered(name) || startByBus())
        return;

    startProgram();
    QElapsedTimer waited;
    waited.start();
    while (!bus->isServiceRegistered(name)) {
        if (waited.hasExpired(m_timeLimit))
            raiseCannotStart(QStringLiteral("the engine did not come up"));
        QThread::msleep(pollInterval);
    }
}

bool ProcessEngineLauncher::startByBus()
{
    QDBusConnectionInterface *const bus = m_bus.interface();
    const QString name = QLatin1String(Bus::ServiceName);
    const QDBusReply<QStringList> activatable = bus->activatableServiceNames();
    if (!activatable.isValid() || !activatable.value().contains(name))
        return false;
    const QDBusReply<void> started = bus->startService(name);
    if (!started.isValid())
        raiseCannotStart(started.error().message());
    return true;
}

void ProcessEngineLauncher::startProgram()
{
    if (!QFileInfo(m_program).isExecutable())
        raiseCannotStart(m_program);
    QProcess engine;
    engine.setProgram(m_program);
    engine.setWorkingDirectory(QStringLiteral("/"));
    engine.setStandardInputFile(QProcess::nullDevice());
    engine.setStandardOutputFile(QProcess::nullDevice());
    engine.setStandardErrorFile(errorOutputFile());
    if (!engine.startDetached())
        raiseCannotStart(engine.errorString());
}
