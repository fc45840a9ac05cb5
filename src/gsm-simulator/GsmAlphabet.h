#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace norvane {

namespace simulator {

/// Languages that have tables of their own (3GPP TS 23.038, 6.2.1.2.4), by their identifiers.
enum class Language { None = 0, Spanish = 2, Portuguese = 3 };

/// The tables that septets are read by: the one that an escape leads to, and the one that stands in
/// the default table's place. Spanish has none of the latter, and means the default table there.
struct Alphabet
{
    Language single = Language::None;
    Language locking = Language::None;

    bool operator==(const Alphabet &) const = default;
};

/// Text of septets in the GSM 7-bit default alphabet (23.038, 6.2.1) and its extension table, or in
/// those of a language. An escape without a meaning is shown as the standard tells a receiver to:
/// the character of the table without escape, and a space for an escape that nothing (or another
/// escape) follows.
/// @param septets  one septet in each byte, 0 to 127
QString textOfSeptets(const QByteArray &septets, const Alphabet &alphabet = {});

/// The septets of `text`, one in each byte, or nothing if a character stands in neither table.
std::optional<QByteArray> septetsOfText(const QString &text, const Alphabet &alphabet = {});

/// Spreads packed septets (23.038, 6.1.2.1) to one a byte.
/// @param packed    the octets that hold them
/// @param fillBits  bits to leave out at the start, 0 to 6
/// @param count     septets to take; `packed` has to hold them all
QByteArray unpackSeptets(const QByteArray &packed, int fillBits, int count);

/// Packs septets behind `fillBits` zero bits; what is left of the last octet is zero.
QByteArray packSeptets(const QByteArray &septets, int fillBits);

/// How many septets `text` takes, or nothing if a character stands in neither table.
std::optional<int> septetsNeeded(const QString &text);

} // namespace simulator

} // namespace norvane
