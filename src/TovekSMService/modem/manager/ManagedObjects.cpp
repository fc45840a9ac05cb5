#include "TovekSMService/modem/manager/ManagedObjects.h"

#include "TovekSMService/modem/manager/ManagerNames.h"

#include <QDBusArgument>

#include <algorithm>
#include <tuple>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A structure or a map that is still as it came over the bus.
template <typename Value>
Value unpacked(const QVariant &value)
{
    return value.canConvert<QDBusArgument>() ? qdbus_cast<Value>(value.value<QDBusArgument>())
                                             : value.value<Value>();
}

/// The number at the end of ".../Modem/7": devices in the order in which they were found.
int numberOf(const QString &path)
{
    return path.section(u'/', -1).toInt();
}

} // namespace

ManagedDevice::ManagedDevice(const QString &path, const ManagedObjects &objects)
    : m_path(path), m_interfaces(objects.value(QDBusObjectPath(path)))
{
    m_simInterfaces = objects.value(QDBusObjectPath(simPath()));
}

std::optional<ManagedDevice> ManagedDevice::find(const ManagedObjects &objects, const QString &imei)
{
    std::optional<ManagedDevice> found;
    for (auto object = objects.cbegin(); object != objects.cend(); ++object) {
        if (!object.value().contains(Manager::modem))
            continue;
        const ManagedDevice device(object.key().path(), objects);
        const bool isMeant =
            imei.isEmpty() ? device.canSend() || device.state() < Manager::ModemState::Disabled
                           : device.imei() == imei;
        if (!isMeant)
            continue;
        // One that can send goes before one that may never.
        const auto rank = [](const ManagedDevice &each) {
            return std::tuple(each.state() == Manager::ModemState::Failed, !each.canSend(),
                              numberOf(each.path()));
        };
        if (!found || rank(device) < rank(*found))
            found = device;
    }
    return found;
}

QVariant ManagedDevice::property(QLatin1StringView interface, QLatin1StringView name) const
{
    return m_interfaces.value(interface).value(name);
}

Manager::ModemState ManagedDevice::state() const
{
    return static_cast<Manager::ModemState>(property(Manager::modem, "State"_L1).toInt());
}

Manager::FailedReason ManagedDevice::failedReason() const
{
    return static_cast<Manager::FailedReason>(
        property(Manager::modem, "StateFailedReason"_L1).toInt());
}

Manager::Lock ManagedDevice::lock() const
{
    return static_cast<Manager::Lock>(property(Manager::modem, "UnlockRequired"_L1).toInt());
}

std::optional<int> ManagedDevice::pinTries() const
{
    const auto retries = unpacked<QMap<uint, uint>>(property(Manager::modem, "UnlockRetries"_L1));
    const auto tries = retries.constFind(static_cast<uint>(Manager::Lock::SimPin));
    return tries == retries.constEnd() ? std::nullopt : std::optional(static_cast<int>(*tries));
}

QString ManagedDevice::simPath() const
{
    return unpacked<QDBusObjectPath>(property(Manager::modem, "Sim"_L1)).path();
}

QString ManagedDevice::iccid() const
{
    return m_simInterfaces.value(Manager::sim).value(u"SimIdentifier"_s).toString();
}

QString ManagedDevice::imei() const
{
    return property(Manager::modem, "EquipmentIdentifier"_L1).toString();
}

bool ManagedDevice::canSend() const
{
    return m_interfaces.contains(Manager::messaging);
}

/// "Norvane Mobile (home)"; the words are those of the registration of a device that is spoken to
/// with AT commands.
QString ManagedDevice::networkInfo() const
{
    static constexpr std::array<QLatin1StringView, 11> states = {
        "not registered"_L1, "home"_L1,    "searching"_L1,      "denied"_L1,
        "unknown"_L1,        "roaming"_L1, "home, SMS only"_L1, "roaming, SMS only"_L1,
        "emergency only"_L1, "home"_L1,    "roaming"_L1};
    const QVariant registration = property(Manager::modem3gpp, "RegistrationState"_L1);
    const QString name = property(Manager::modem3gpp, "OperatorName"_L1).toString();
    const auto state = static_cast<std::size_t>(registration.toUInt());
    if (!registration.isValid() || state >= states.size())
        return name;
    const QString words = states.at(state);
    return name.isEmpty() ? u'(' + words + u')' : u"%1 (%2)"_s.arg(name, words);
}

DeviceDetails ManagedDevice::details() const
{
    DeviceDetails details;
    details.manufacturer = property(Manager::modem, "Manufacturer"_L1).toString();
    details.model = property(Manager::modem, "Model"_L1).toString();
    details.firmware = property(Manager::modem, "Revision"_L1).toString();
    details.hardware = property(Manager::modem, "HardwareRevision"_L1).toString();
    details.imei = imei();
    details.networkInfo = networkInfo();
    details.simId = iccid().isEmpty() ? details.imei : iccid();
    // (quality in percent, whether it was taken lately)
    const auto quality = property(Manager::modem, "SignalQuality"_L1);
    if (quality.canConvert<QDBusArgument>()) {
        const auto argument = quality.value<QDBusArgument>();
        uint percent = 0;
        bool isRecent = false;
        argument.beginStructure();
        argument >> percent >> isRecent;
        argument.endStructure();
        details.signal = static_cast<int>(std::min(percent, 100U));
    }
    return details;
}

} // namespace norvane
