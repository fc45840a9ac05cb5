#pragma once

#include <QString>

#include <optional>

namespace norvane {

/// Where the device is: what the connection parameter of the device settings says.
struct PortParameter
{
    /// Path of the device.
    QString device;
    /// Bits a second.
    int baud = 9600;

    bool operator==(const PortParameter &) const = default;
};

/// Reads "device, speed". The device is "COM" and a number from 1 on, in any case, for the
/// platform's serial port of that number, or a path, which has a "/" in it and stands as it is
/// (blanks and commas in it too: the last comma parts it from the speed). Without a comma the speed
/// is 9600.
/// @return nothing for anything else
std::optional<PortParameter> parsePortParameter(const QString &text);

} // namespace norvane
