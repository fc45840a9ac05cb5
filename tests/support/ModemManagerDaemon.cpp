#include "support/ModemManagerDaemon.h"

#include "support/PermissionAuthority.h"
#include "support/WaitUntil.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QFile>
#include <QStandardPaths>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Interfaces = QMap<QString, QVariantMap>;
using ManagedObjects = QMap<QDBusObjectPath, Interfaces>;

constexpr auto service = "org.freedesktop.ModemManager1"_L1;
constexpr auto managerPath = "/org/freedesktop/ModemManager1"_L1;

QString daemonProgram()
{
    const QString found = QStandardPaths::findExecutable(u"ModemManager"_s);
    return found.isEmpty()
               ? QStandardPaths::findExecutable(u"ModemManager"_s, {u"/usr/sbin"_s, u"/sbin"_s})
               : found;
}

QString deviceOf(const QString &name)
{
    return u"/virtual/"_s + name;
}

QDBusMessage callManager(const QDBusConnection &bus, const QString &interface,
                         const QString &method, const QVariantList &arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(service, managerPath, interface, method);
    call.setArguments(arguments);
    return bus.call(call, QDBus::Block, hangMs);
}

bool hasSucceeded(const QDBusMessage &reply)
{
    if (reply.type() == QDBusMessage::ReplyMessage)
        return true;
    qWarning("%s: %s", qPrintable(reply.errorName()), qPrintable(reply.errorMessage()));
    return false;
}

bool end(QProcess &process)
{
    if (process.state() == QProcess::NotRunning)
        return true;
    process.terminate();
    return process.waitForFinished(hangMs);
}

} // namespace

bool ModemManagerDaemon::isInstalled()
{
    return !daemonProgram().isEmpty();
}

ModemManagerDaemon::ModemManagerDaemon()
{
    qDBusRegisterMetaType<Interfaces>();
    qDBusRegisterMetaType<ManagedObjects>();
    if (!startBus() || !startDaemon())
        qFatal("no ModemManager");
}

ModemManagerDaemon::~ModemManagerDaemon()
{
    end(m_daemon);
    QDBusConnection::disconnectFromBus(m_address);
    m_authorityThread.quit();
    m_authorityThread.wait();
    end(m_bus);
}

bool ModemManagerDaemon::startBus()
{
    m_bus.setStandardErrorFile(QProcess::nullDevice());
    m_bus.start(u"dbus-daemon"_s,
                {u"--config-file="_s + QStringLiteral(NORVANE_SOURCE_DIR "/tools/session-bus.conf"),
                 u"--nofork"_s, u"--nopidfile"_s, u"--print-address=1"_s});
    if (!m_bus.waitForReadyRead(hangMs))
        return false;
    m_address = QString::fromLocal8Bit(m_bus.readLine().trimmed());
    QDBusConnection bus = QDBusConnection::connectToBus(m_address, m_address);
    m_authority = std::make_unique<PermissionAuthority>();
    m_authority->moveToThread(&m_authorityThread);
    m_authorityThread.start();
    return bus.isConnected() &&
           bus.registerVirtualObject(QLatin1String(PermissionAuthority::path), m_authority.get()) &&
           bus.registerService(QLatin1String(PermissionAuthority::service));
}

bool ModemManagerDaemon::startDaemon()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DBUS_SYSTEM_BUS_ADDRESS"_s, m_address);
    m_daemon.setProcessEnvironment(environment);
    m_daemon.setStandardErrorFile(QProcess::nullDevice());
    m_daemon.start(daemonProgram(),
                   {u"--test-enable"_s, u"--test-no-udev"_s, u"--test-no-suspend-resume"_s,
                    u"--test-no-qrtr"_s, u"--no-auto-scan"_s, u"--log-level=DEBUG"_s,
                    u"--log-file="_s + logPath()});
    return waitUntil([this] { return isRunning() || m_daemon.state() == QProcess::NotRunning; }) &&
           isRunning();
}

bool ModemManagerDaemon::isRunning() const
{
    return connection().interface()->isServiceRegistered(service);
}

QString ModemManagerDaemon::attach(const QString &name, const QString &socket)
{
    const auto known = m_devices.constFind(name);
    const bool isBack = known != m_devices.constEnd() && !known->isAttached;
    if (!(isBack ? inhibit(name, false) : setProfile(name, socket)))
        return {};
    m_devices.insert(name, {socket});
    waitForModem(name, true);
    return modemPath(name);
}

bool ModemManagerDaemon::detach(const QString &name)
{
    if (!inhibit(name, true))
        return false;
    m_devices[name].isAttached = false;
    return waitForModem(name, false);
}

bool ModemManagerDaemon::setProfile(const QString &name, const QString &socket) const
{
    return hasSucceeded(callManager(connection(), service + ".Test"_L1, u"SetProfile"_s,
                                    {name, u"generic"_s, QStringList(socket)}));
}

/// A device that is inhibited is gone for everybody until its inhibition ends.
bool ModemManagerDaemon::inhibit(const QString &name, bool inhibited) const
{
    return hasSucceeded(
        callManager(connection(), service, u"InhibitDevice"_s, {deviceOf(name), inhibited}));
}

QString ModemManagerDaemon::modemPath(const QString &name) const
{
    const QDBusMessage reply = callManager(connection(), u"org.freedesktop.DBus.ObjectManager"_s,
                                           u"GetManagedObjects"_s, {});
    if (!hasSucceeded(reply))
        return {};
    const auto objects = qdbus_cast<ManagedObjects>(reply.arguments().constFirst());
    for (auto object = objects.constBegin(); object != objects.constEnd(); ++object) {
        const QVariantMap modem = object->value(service + ".Modem"_L1);
        if (modem.value(u"Device"_s).toString() == deviceOf(name))
            return object.key().path();
    }
    return {};
}

bool ModemManagerDaemon::waitForModem(const QString &name, bool present) const
{
    return waitUntil([&] { return modemPath(name).isEmpty() != present; });
}

bool ModemManagerDaemon::kill()
{
    m_daemon.kill();
    return m_daemon.waitForFinished(hangMs) && waitUntil([this] { return !isRunning(); });
}

bool ModemManagerDaemon::restart()
{
    if (m_daemon.state() != QProcess::NotRunning && !kill())
        return false;
    m_devices.removeIf([](const auto &device) { return !device->isAttached; });
    bool done = startDaemon();
    for (auto device = m_devices.constBegin(); device != m_devices.constEnd(); ++device)
        done = done && setProfile(device.key(), device->socket);
    for (auto device = m_devices.constBegin(); device != m_devices.constEnd(); ++device)
        done = done && waitForModem(device.key(), true);
    return done;
}

void ModemManagerDaemon::setPermission(Permission permission)
{
    m_authority->setGranting(permission == Permission::Granted);
}

} // namespace norvane
