#pragma once

#include "TovekSMService/modem/at/ModemTypes.h"

#include <QDBusMessage>

namespace norvane::ManagerFailures {

/// The number of +CMS ERROR or +CME ERROR that an error of the manager stands for, by its name
/// (Error.Message: 3GPP TS 27.005, 3.2.5; Error.MobileEquipment: 27.007, 9.2), or by its text where
/// the manager has no name for a number of the network's.
struct Number
{
    FailureSpace space = FailureSpace::Send;
    int number = -1; ///< -1 for an error of neither kind

    bool isKnown() const { return number >= 0; }
};
Number numberOf(const QDBusMessage &error);

/// Whether the account isn't allowed to do what the call asked for.
bool isDenied(const QDBusMessage &reply);

/// Why the device can't be used, by the error of a call that was to bring it up.
ModemFailure ofDevice(const QDBusMessage &error);

/// When a call for a message failed.
enum class Stage {
    Creating, ///< nothing has left
    Sending,  ///< it may have left, unless the error says that it didn't
};
/// Why a message wasn't sent, or may not have been.
/// @param parts  that the manager cuts the message into: of several, some may have left before the
///               one that failed
SendFailure ofMessage(const QDBusMessage &error, Stage stage, int parts);

} // namespace norvane::ManagerFailures
