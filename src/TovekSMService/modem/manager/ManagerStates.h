#pragma once

/// Values of the modem manager's properties, as its interface documents them.
namespace norvane::Manager {

/// Modem.State. What is between two of them is on its way from one to the next.
enum class ModemState {
    Failed = -1,
    Unknown = 0,
    Initialising = 1,
    Locked = 2,
    Disabled = 3,
    Disabling = 4,
    Enabling = 5,
    Enabled = 6,
    Searching = 7,
    Registered = 8, ///< and above it, with a data connection
};

/// Modem.StateFailedReason.
enum class FailedReason { None = 0, Unknown = 1, SimMissing = 2, SimError = 3 };

/// Modem.UnlockRequired, and the keys of Modem.UnlockRetries. Those above are locks of the device.
enum class Lock { Unknown = 0, None = 1, SimPin = 2, SimPin2 = 3, SimPuk = 4, SimPuk2 = 5 };

/// Sms.State.
enum class SmsState {
    Unknown = 0,
    Stored = 1,
    Receiving = 2, ///< parts are missing
    Received = 3,
    Sending = 4,
    Sent = 5,
};

/// Sms.PduType of what comes from the network.
enum class PduType { Deliver = 1, StatusReport = 3 };

} // namespace norvane::Manager
