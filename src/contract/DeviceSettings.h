#pragma once

#include <QString>

namespace norvane {

/// How the engine reaches its device. Exchanged by value; the engine alone keeps it.
struct DeviceSettings
{
    qint32 DeviceType = 0;     ///< 0: GSM device, the only kind
    QString PINCode;           ///< the SIM's PIN as typed; empty when none
    qint32 ConnectionMode = 0; ///< 1 serial port, 2 infrared, 3 Bluetooth; 0 not set
    qint32 Protocol = 0;       ///< 1 AT commands, 2 Nokia FBus, 3 Nokia MBus; 0 not set
    QString Parameter;         ///< "device, speed", as in "COM1, 9600"

    bool operator==(const DeviceSettings &) const = default;
};

} // namespace norvane
