#pragma once

#include "contract/DeviceSettings.h"

namespace norvane {

/// What the device dialog needs from the console: access to the engine's device settings.
class DeviceSettingsKeeper
{
public:
    DeviceSettingsKeeper() = default;
    DeviceSettingsKeeper(const DeviceSettingsKeeper &) = delete;
    DeviceSettingsKeeper &operator=(const DeviceSettingsKeeper &) = delete;
    virtual ~DeviceSettingsKeeper() = default;

    /// The engine's record on a server, an empty record on a client.
    virtual DeviceSettings GetDeviceSettings() = 0;
    /// Puts the stored mode into effect and then, on a server, hands `settings` to the engine.
    /// @return the engine's answer; false on a client
    virtual bool SetDeviceSettings(const DeviceSettings &settings) = 0;
};

} // namespace norvane
