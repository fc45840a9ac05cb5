#pragma once

#include "gsm-simulator/OctetReader.h"
#include "gsm-simulator/PduFault.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace norvane {

namespace simulator {

/// The number or name of a sender or recipient, with its type-of-address octet (3GPP TS 23.040,
/// 9.1.2.5).
struct Address
{
    static constexpr int unknownType = 0x81;
    static constexpr int internationalType = 0x91;
    static constexpr int nationalType = 0xA1;
    static constexpr int alphanumericType = 0xD0;

    QString text; ///< an international number has a leading "+"
    int type = unknownType;

    bool isAlphanumeric() const { return ((type >> 4) & 0x07) == 5; }
    bool isInternational() const { return ((type >> 4) & 0x07) == 1; }

    bool operator==(const Address &) const = default;
};

/// Digits in semi-octets, low half first; an odd last one is filled with F.
/// @param count  digits to take; `octets` has to hold them all
std::optional<QString> digitsOfSemiOctets(const QByteArray &octets, int count);

/// The other way round, or nothing if a character is none of 0 to 9, "*", "#", "a", "b", "c".
std::optional<QByteArray> semiOctetsOfDigits(const QString &digits);

/// Reads an address field of a TPDU: length in semi-octets, type, value.
std::optional<PduFault> readAddress(OctetReader &reader, Address &address);

/// The address field of a TPDU, or nothing if it can't hold the text.
std::optional<QByteArray> addressField(const Address &address);

/// A service centre's address as it stands in front of a TPDU: length in octets, type, digits.
QByteArray serviceCentreField(const QByteArray &number);

} // namespace simulator

} // namespace norvane
