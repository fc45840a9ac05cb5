#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace norvane {

namespace simulator {

/// Text of septets in the GSM 7-bit default alphabet (3GPP TS 23.038, 6.2.1) and its extension
/// table. An escape without a meaning is shown as the standard tells a receiver to: the character
/// of the default table, and a space for an escape that nothing (or another escape) follows.
/// @param septets  one septet in each byte, 0 to 127
QString textOfSeptets(const QByteArray &septets);

/// Spreads packed septets (23.038, 6.1.2.1) to one a byte.
/// @param packed    the octets that hold them
/// @param fillBits  bits to leave out at the start, 0 to 6
/// @param count     septets to take; `packed` has to hold them all
QByteArray unpackSeptets(const QByteArray &packed, int fillBits, int count);

/// How many septets `text` takes, or nothing if a character stands in neither table.
std::optional<int> septetsNeeded(const QString &text);

} // namespace simulator

} // namespace norvane
