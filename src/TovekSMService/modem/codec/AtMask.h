#pragma once

#include <QByteArray>

namespace norvane {

/// What may be shown of the lines between engine and device: neither a PIN, PUK or password nor a
/// message, its number or its text. The number of the service centre stays, as a wrong one is a
/// common reason why nothing is sent.
namespace AtMask {

/// What stands for whatever isn't shown. It doesn't tell how long that is.
constexpr char hidden[] = "****";

/// A line of either direction as it may be shown: without the values of commands that carry a
/// secret or a phone number, whole or cut off by the echo of a device, and without messages.
/// @param line  without its end
QByteArray masked(const QByteArray &line);

/// A line of a device as it may be shown while a part of a secret or of a message can come as a
/// line of its own: results and states in their standard form, the name alone of what bears one,
/// else nothing.
QByteArray maskedStrictly(const QByteArray &line);

/// Whether a command carries a PIN, PUK or password.
bool carriesSecret(const QByteArray &command);

/// Whether a line of a device is followed by a message.
bool announcesMessage(const QByteArray &line);

} // namespace AtMask

} // namespace norvane
