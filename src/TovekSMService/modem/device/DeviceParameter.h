#pragma once

#include "TovekSMService/modem/at/PortParameter.h"

#include <QString>

#include <optional>
#include <variant>

namespace norvane {

/// A device that the platform's modem manager owns.
struct ManagerParameter
{
    QString imei; ///< 15 digits; empty for the first device that can send

    bool operator==(const ManagerParameter &) const = default;
};

/// Which device is meant: what the connection parameter of the device settings says.
using DeviceParameter = std::variant<PortParameter, ManagerParameter>;

/// Reads "device, speed" as parsePortParameter() does, or "ModemManager", in any case, with the
/// IMEI of a device behind a comma if there is one.
/// @return nothing for anything else
std::optional<DeviceParameter> parseDeviceParameter(const QString &text);

} // namespace norvane
