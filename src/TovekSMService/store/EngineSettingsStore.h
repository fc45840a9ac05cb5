#pragma once

#include "TovekSMService/store/SettingTable.h"
#include "contract/DeviceSettings.h"

#include <QString>

namespace norvane {

class StoreDatabase;

/// What the engine keeps of itself and its device from one run to the next. The settings file is
/// another thing: EngineSettings.
class EngineSettingsStore
{
public:
    /// @param database  must outlive this object
    explicit EngineSettingsStore(StoreDatabase &database)
        : m_database(database), m_settings(database)
    {}

    [[nodiscard]] StoreResult<DeviceSettings> deviceSettings() const;
    [[nodiscard]] StoreResult<> setDeviceSettings(const DeviceSettings &settings);

    /// Whether the engine was started and not stopped since.
    [[nodiscard]] StoreResult<bool> isToRun() const;
    [[nodiscard]] StoreResult<> setToRun(bool run);

    /// The IMEI of the device that was last in use with this connection parameter; empty if none
    /// was, or it didn't tell.
    [[nodiscard]] StoreResult<QString> deviceImei(const QString &parameter) const;
    [[nodiscard]] StoreResult<> setDeviceImei(const QString &parameter, const QString &imei);

    /// When the device's functionality was last reset, "yyyy-MM-ddTHH:mm:ss"; empty if never.
    [[nodiscard]] StoreResult<QString> lastReset() const;
    [[nodiscard]] StoreResult<> setLastReset(const QString &at);

    /// The next of the references that tie the parts of a message together.
    [[nodiscard]] StoreResult<quint16> nextReference();

private:
    StoreDatabase &m_database;
    SettingTable m_settings;
};

} // namespace norvane
