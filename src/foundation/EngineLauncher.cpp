#include "foundation/EngineLauncher.h"

#include "common/FailureNumbers.h"
#include "contract/BusTypes.h"
#include "foundation/EngineWait.h"
#include "foundation/FailureTexts.h"
#include "foundation/platform/Processes.h"

#include <QDBusConnectionInterface>
#include <QDBusPendingReply>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QThread>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int pollInterval = 10; // ms between two checks of the bus

[[noreturn]] void raiseCannotStart(const QString &reason)
{
    throw NumberedFailure(Failure::CannotCreateObject, u"SMSManager"_s,
                          FailureText::engineNotStarted(reason));
}

QString errorOutputFile()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                           u"/TovekSMService"_s;
    if (!QDir().mkpath(folder))
        return QProcess::nullDevice();
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    // Kept from start to start, for its owner alone; the engine keeps it within its size.
    const QString file = folder + u"/engine.log"_s;
    QFile log(file);
    if (!log.open(QIODevice::Append))
        return QProcess::nullDevice();
    log.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    return file;
}

} // namespace

ProcessEngineLauncher::ProcessEngineLauncher(const QDBusConnection &bus, const QString &program,
                                             int timeLimit, EngineWait *wait)
    : m_bus(bus), m_program(program), m_timeLimit(timeLimit), m_wait(wait)
{}

void ProcessEngineLauncher::ensureRunning()
{
    if (!m_bus.isConnected())
        raiseCannotStart(FailureText::noSessionBus());
    const QString name = QLatin1String(Bus::serviceName);
    QDBusConnectionInterface *const bus = m_bus.interface();
    if (bus->isServiceRegistered(name))
        return;
    if (isActivatable()) {
        startByBus();
        return;
    }
    const qint64 engine = startProgram();
    waitUntil([bus, name, engine] {
        const bool ended = !isProcessRunning(engine);
        if (bus->isServiceRegistered(name).value())
            return true;
        if (ended)
            raiseCannotStart(FailureText::engineEnded());
        return false;
    });
}

bool ProcessEngineLauncher::isActivatable() const
{
    const QDBusReply<QStringList> activatable = m_bus.interface()->activatableServiceNames();
    return activatable.isValid() && activatable.value().contains(QLatin1String(Bus::serviceName));
}

void ProcessEngineLauncher::startByBus()
{
    m_bus.interface()->setTimeout(m_timeLimit);
    const QDBusPendingReply<uint> started = m_bus.interface()->asyncCallWithArgumentList(
        u"StartServiceByName"_s, {QLatin1String(Bus::serviceName), uint(0)});
    // The answer is taken on the connection's own thread.
    waitUntil([&started] { return started.isFinished(); });
    if (started.isError())
        raiseCannotStart(started.error().message());
}

/// Waits without an event loop of this thread's.
void ProcessEngineLauncher::waitUntil(const std::function<bool()> &condition) const
{
    const auto end = qScopeGuard([this] {
        if (m_wait)
            m_wait->ended();
    });
    QElapsedTimer waited;
    waited.start();
    while (!condition()) {
        if (waited.hasExpired(m_timeLimit))
            raiseCannotStart(FailureText::engineDidNotComeUp());
        if (m_wait)
            m_wait->waiting(waited.elapsed());
        QThread::msleep(pollInterval);
    }
}

qint64 ProcessEngineLauncher::startProgram()
{
    if (!QFileInfo(m_program).isExecutable())
        raiseCannotStart(FailureText::programNotFound(m_program));
    QProcess engine;
    engine.setProgram(m_program);
    engine.setWorkingDirectory(u"/"_s);
    engine.setStandardInputFile(QProcess::nullDevice());
    engine.setStandardOutputFile(QProcess::nullDevice());
    engine.setStandardErrorFile(errorOutputFile(), QIODevice::Append);
    qint64 process = 0;
    if (!engine.startDetached(&process))
        raiseCannotStart(engine.errorString());
    return process;
}

} // namespace norvane
