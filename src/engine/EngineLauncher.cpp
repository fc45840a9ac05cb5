#include "engine/EngineLauncher.h"

#include "engine/contract/BusTypes.h"
#include "foundation/FailureNumbers.h"
#include "foundation/FailureTexts.h"

#include <QDBusConnectionInterface>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

namespace {

constexpr int pollInterval = 10;         // ms between two looks at the bus
constexpr qint64 longestLog = 1'000'000; // bytes

[[noreturn]] void raiseCannotStart(const QString &reason)
{
    throw NumberedFailure(Failure::CannotCreateObject, QStringLiteral("SMSManager"),
                          FailureText::engineNotStarted(reason));
}

QString errorOutputFile()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                           QStringLiteral("/TovekSMService");
    if (!QDir().mkpath(folder))
        return QProcess::nullDevice();
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    // Kept from start to start, for its owner alone; what is older than a megabyte goes.
    const QString file = folder + QStringLiteral("/engine.log");
    if (QFileInfo(file).size() > longestLog) {
        QFile::remove(file + QStringLiteral(".1"));
        QFile::rename(file, file + QStringLiteral(".1"));
    }
    QFile log(file);
    if (!log.open(QIODevice::Append))
        return QProcess::nullDevice();
    log.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    return file;
}

} // namespace

ProcessEngineLauncher::ProcessEngineLauncher(const QDBusConnection &bus, const QString &program,
                                             int timeLimit)
    : m_bus(bus), m_program(program), m_timeLimit(timeLimit)
{}

void ProcessEngineLauncher::ensureRunning()
{
    if (!m_bus.isConnected())
        raiseCannotStart(FailureText::noSessionBus());
    const QString name = QLatin1String(Bus::ServiceName);
    QDBusConnectionInterface *const bus = m_bus.interface();
    if (bus->isServiceRegistered(name) || startByBus())
        return;

    startProgram();
    QElapsedTimer waited;
    waited.start();
    while (!bus->isServiceRegistered(name)) {
        if (waited.hasExpired(m_timeLimit))
            raiseCannotStart(FailureText::engineDidNotComeUp());
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
    bus->setTimeout(m_timeLimit);
    const QDBusReply<void> started = bus->startService(name);
    if (!started.isValid())
        raiseCannotStart(started.error().message());
    return true;
}

void ProcessEngineLauncher::startProgram()
{
    if (!QFileInfo(m_program).isExecutable())
        raiseCannotStart(FailureText::programNotFound(m_program));
    QProcess engine;
    engine.setProgram(m_program);
    engine.setWorkingDirectory(QStringLiteral("/"));
    engine.setStandardInputFile(QProcess::nullDevice());
    engine.setStandardOutputFile(QProcess::nullDevice());
    engine.setStandardErrorFile(errorOutputFile(), QIODevice::Append);
    if (!engine.startDetached())
        raiseCannotStart(engine.errorString());
}
