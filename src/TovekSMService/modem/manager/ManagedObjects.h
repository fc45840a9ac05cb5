#pragma once

#include "TovekSMService/modem/at/ModemTypes.h"
#include "TovekSMService/modem/manager/ManagerNames.h"
#include "TovekSMService/modem/manager/ManagerStates.h"

#include <QDBusObjectPath>
#include <QMap>
#include <QMetaType>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace norvane {

/// The properties of an object on the bus, by interface.
using ManagedInterfaces = QMap<QString, QVariantMap>;

/// What the modem manager has: its answer to GetManagedObjects.
using ManagedObjects = QMap<QDBusObjectPath, ManagedInterfaces>;

/// One of the modem manager's devices, as its objects show it.
class ManagedDevice
{
public:
    /// @param path     of the device
    /// @param objects  that it is among, with its SIM
    ManagedDevice(const QString &path, const ManagedObjects &objects);

    /// The device with that IMEI; without one the first that can send, or may be able to once its
    /// SIM is unlocked.
    static std::optional<ManagedDevice> find(const ManagedObjects &objects, const QString &imei);

    const QString &path() const { return m_path; }
    Manager::ModemState state() const;
    Manager::FailedReason failedReason() const;
    Manager::Lock lock() const;
    /// Tries that the SIM has left for its PIN, if the manager knows.
    std::optional<int> pinTries() const;
    QString simPath() const;
    /// Whether the SIM's own properties are known; it isn't among the manager's objects.
    bool hasSimFacts() const { return m_simInterfaces.contains(Manager::sim); }
    QString iccid() const;
    QString imei() const;
    bool canSend() const;
    /// Whether the network has taken the device in.
    bool isRegistered() const { return state() >= Manager::ModemState::Registered; }

    DeviceDetails details() const;

private:
    QVariant property(QLatin1StringView interface, QLatin1StringView name) const;
    QString networkInfo() const;

    QString m_path;
    ManagedInterfaces m_interfaces;
    ManagedInterfaces m_simInterfaces;
};

} // namespace norvane

Q_DECLARE_METATYPE(norvane::ManagedInterfaces)
Q_DECLARE_METATYPE(norvane::ManagedObjects)
