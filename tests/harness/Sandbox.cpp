#include "harness/Sandbox.h"

#include "contract/BusTypes.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QTimer>

#include <csignal>

#include <sys/prctl.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int lookInterval = 5; // ms

QString engineProgram()
{
    return QStringLiteral(NORVANE_BIN_DIR "/TovekSMService");
}

QDBusMessage callOf(const char *operation, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        QLatin1String(Bus::serviceName), QLatin1String(Bus::objectPath),
        QLatin1String(Bus::interfaceName), QLatin1String(operation));
    message.setArguments(arguments);
    // An engine that has ended is not to be started by the bus.
    message.setAutoStartService(false);
    return message;
}

} // namespace

bool eventually(const std::function<bool()> &condition, int limitMs)
{
    const QDeadlineTimer deadline(limitMs);
    QTimer alarm;
    alarm.start(lookInterval);
    while (!condition()) {
        if (deadline.hasExpired())
            return condition();
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

FailureListener::FailureListener(const QDBusConnection &bus)
{
    QDBusConnection(bus).connect(QLatin1String(Bus::serviceName), QLatin1String(Bus::objectPath),
                                 QLatin1String(Bus::interfaceName), u"SMSSentFailed"_s, this,
                                 SLOT(hear(QString, QString, int)));
}

void FailureListener::hear(const QString &phone, const QString & /*text*/, int code)
{
    heard.append({phone, code});
}

Sandbox::Sandbox()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *const name : {"config", "data", "runtime"}) {
        QDir().mkpath(path(QLatin1String(name)));
        QFile::setPermissions(path(QLatin1String(name)),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    environment.insert(u"XDG_CONFIG_HOME"_s, path(u"config"_s));
    environment.insert(u"XDG_DATA_HOME"_s, path(u"data"_s));
    environment.insert(u"XDG_RUNTIME_DIR"_s, path(u"runtime"_s));
    m_engine.setProcessEnvironment(environment);
    m_engine.setProgram(engineProgram());
    m_engine.setStandardErrorFile(logFile(), QIODevice::Append);
    m_engine.setStandardOutputFile(QProcess::nullDevice());
    m_engine.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    Bus::registerTypes();
}

Sandbox::~Sandbox()
{
    kill();
}

QString Sandbox::storeFolder() const
{
    return path(u"data/TovekSMService"_s);
}

QString Sandbox::storeFile() const
{
    return storeFolder() + u"/queue.sqlite"_s;
}

void Sandbox::setVariable(const QString &name, const QString &value)
{
    QProcessEnvironment environment = m_engine.processEnvironment();
    environment.insert(name, value);
    m_engine.setProcessEnvironment(environment);
}

bool Sandbox::writeSettings(const QByteArray &text) const
{
    const QString folder = path(u"config/Norvane"_s);
    QFile file(folder + u"/TovekSMService.ini"_s);
    return QDir().mkpath(folder) && file.open(QIODevice::WriteOnly) &&
           file.write(text) == text.size();
}

bool Sandbox::storeDevice(const QString &parameter)
{
    QProcess command;
    command.setProcessEnvironment(m_engine.processEnvironment());
    command.start(engineProgram(), {u"--device"_s, parameter});
    return command.waitForFinished(1'200'000) && command.exitStatus() == QProcess::NormalExit &&
           command.exitCode() == 0;
}

void Sandbox::start()
{
    m_engine.start();
    m_engine.waitForStarted(1'200'000);
}

bool Sandbox::isOnBus() const
{
    const QDBusReply<uint> owner =
        m_bus.connection().interface()->servicePid(QLatin1String(Bus::serviceName));
    return owner.isValid() && owner.value() == static_cast<uint>(pid());
}

bool Sandbox::waitForBus(int limitMs)
{
    return eventually([this] { return !isUp() || isOnBus(); }, limitMs) && isUp();
}

void Sandbox::kill()
{
    if (!isUp())
        return;
    m_engine.kill();
    m_engine.waitForFinished(1'200'000);
}

bool Sandbox::stop(int limitMs)
{
    if (!isUp())
        return true;
    m_engine.terminate();
    return m_engine.waitForFinished(limitMs) && m_engine.exitStatus() == QProcess::NormalExit &&
           m_engine.exitCode() == 0;
}

QDBusMessage Sandbox::call(const char *operation, const QVariantList &arguments) const
{
    return callFrom(m_bus.connection(), operation, arguments);
}

QDBusMessage Sandbox::callFrom(const QDBusConnection &bus, const char *operation,
                               const QVariantList &arguments)
{
    return bus.call(callOf(operation, arguments));
}

QDBusPendingCall Sandbox::send(const char *operation, const QVariantList &arguments) const
{
    constexpr int limit = 1'200'000; // ms
    return m_bus.connection().asyncCall(callOf(operation, arguments), limit);
}

int Sandbox::queueSize() const
{
    const QDBusMessage answer = call("GetQueueSize");
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().value(0).toInt() : -1;
}

} // namespace norvane
