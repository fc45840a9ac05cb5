#pragma once

#include "TovekSMService/modem/manager/ManagedObjects.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QList>
#include <QObject>

#include <functional>

namespace norvane {

/// The talk with the modem manager over the bus. Nothing waits: what a call gives is told to a
/// function, and what the manager says by itself by signals.
class ManagerBus : public QObject
{
    Q_OBJECT

public:
    /// @param message  a reply or an error
    using Done = std::function<void(const QDBusMessage &message)>;

    explicit ManagerBus(const QDBusConnection &bus);

    bool isConnected() const { return m_bus.isConnected(); }

    /// Calls a method; the manager is started where the platform can.
    /// @param limitMs  after which the call is answered with an error
    void call(const QString &path, const QString &interface, const QString &method,
              const QVariantList &arguments, int limitMs, Done done);
    /// Asks what the manager has.
    /// @param done  gets the objects, or the error in place of them
    void askObjects(int limitMs,
                    std::function<void(const ManagedObjects &, const QDBusMessage &error)> done);
    /// Forgets the calls that are not answered yet.
    void forgetCalls() { ++m_generation; }

Q_SIGNALS:
    void objectAdded(const QString &path);
    /// @param interfaces  that are gone; the whole object is, if all of them are
    void objectRemoved(const QString &path, const QStringList &interfaces);
    void propertiesChanged(const QString &path, const QString &interface,
                           const QVariantMap &changed);
    /// A message of a device; `isReceived` is false for one that somebody wrote there.
    void messageAdded(const QString &device, const QString &message, bool isReceived);
    /// The manager is gone; it may come back.
    void lost();

private Q_SLOTS:
    void onInterfacesAdded(const QDBusObjectPath &path);
    void onInterfacesRemoved(const QDBusObjectPath &path, const QStringList &interfaces);
    void onPropertiesChanged(const QString &interface, const QVariantMap &changed,
                             const QStringList &invalidated, const QDBusMessage &message);
    void onMessageAdded(const QDBusObjectPath &path, bool isReceived, const QDBusMessage &message);

private:
    QDBusConnection m_bus;
    QDBusServiceWatcher m_watcher;
    quint64 m_generation = 0;
};

} // namespace norvane
