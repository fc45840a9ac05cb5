#pragma once

#include <QByteArray>
#include <QDateTime>

namespace norvane {

namespace simulator {

/// Octets of a timestamp in a TPDU (3GPP TS 23.040, 9.2.3.11).
constexpr qsizetype timestampLength = 7;

/// A decimal number in two semi-octets, the tens in the low half, or -1.
int swappedDecimal(char octet);

/// The timestamp that `time` makes, in its own zone.
QByteArray timestampOctets(const QDateTime &time);

/// Whether each field of a timestamp is within its range.
/// @param octets  at least seven
bool isTimestamp(const QByteArray &octets);

/// A timestamp as AT commands tell it in text mode: "yy/MM/dd,hh:mm:ss", sign, and the zone in
/// quarters of an hour.
/// @param octets  for which isTimestamp() holds
QByteArray timestampText(const QByteArray &octets);

} // namespace simulator

} // namespace norvane
