#include "TovekSMService/modem/manager/ManagerBus.h"

#include "TovekSMService/modem/manager/ManagerNames.h"

#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

ManagerBus::ManagerBus(const QDBusConnection &bus)
    : m_bus(bus), m_watcher(Manager::service, bus, QDBusServiceWatcher::WatchForUnregistration)
{
    qDBusRegisterMetaType<ManagedInterfaces>();
    qDBusRegisterMetaType<ManagedObjects>();
    connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] { Q_EMIT lost(); });
    m_bus.connect(Manager::service, Manager::path, Manager::objectManager, u"InterfacesAdded"_s,
                  this, SLOT(onInterfacesAdded(QDBusObjectPath)));
    m_bus.connect(Manager::service, Manager::path, Manager::objectManager, u"InterfacesRemoved"_s,
                  this, SLOT(onInterfacesRemoved(QDBusObjectPath, QStringList)));
    m_bus.connect(Manager::service, QString(), Manager::properties, u"PropertiesChanged"_s, this,
                  SLOT(onPropertiesChanged(QString, QVariantMap, QStringList, QDBusMessage)));
    m_bus.connect(Manager::service, QString(), Manager::messaging, u"Added"_s, this,
                  SLOT(onMessageAdded(QDBusObjectPath, bool, QDBusMessage)));
}

void ManagerBus::call(const QString &path, const QString &interface, const QString &method,
                      const QVariantList &arguments, int limitMs, Done done)
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(Manager::service, path, interface, method);
    message.setArguments(arguments);
    auto *const watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message, limitMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, generation = m_generation,
             done = std::move(done)](QDBusPendingCallWatcher *finished) {
                finished->deleteLater();
                if (generation == m_generation)
                    done(finished->reply());
            });
}

void ManagerBus::askObjects(
    int limitMs, std::function<void(const ManagedObjects &, const QDBusMessage &error)> done)
{
    call(Manager::path, Manager::objectManager, u"GetManagedObjects"_s, {}, limitMs,
         [done = std::move(done)](const QDBusMessage &reply) {
             if (reply.type() == QDBusMessage::ReplyMessage)
                 done(qdbus_cast<ManagedObjects>(reply.arguments().value(0)), {});
             else
                 done({}, reply);
         });
}

void ManagerBus::onInterfacesAdded(const QDBusObjectPath &path)
{
    Q_EMIT objectAdded(path.path());
}

void ManagerBus::onInterfacesRemoved(const QDBusObjectPath &path, const QStringList &interfaces)
{
    Q_EMIT objectRemoved(path.path(), interfaces);
}

void ManagerBus::onPropertiesChanged(const QString &interface, const QVariantMap &changed,
                                     const QStringList &, const QDBusMessage &message)
{
    Q_EMIT propertiesChanged(message.path(), interface, changed);
}

void ManagerBus::onMessageAdded(const QDBusObjectPath &path, bool isReceived,
                                const QDBusMessage &message)
{
    Q_EMIT messageAdded(message.path(), path.path(), isReceived);
}

} // namespace norvane
