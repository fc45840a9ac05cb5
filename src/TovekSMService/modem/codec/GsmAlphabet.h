#pragma once

#include "TovekSMService/modem/codec/ShiftTables.h"

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <optional>

namespace norvane {

/// The GSM 7-bit default alphabet with its extension table, and the packing of septets into octets.
/// Source: 3GPP TS 23.038, 6.2.1 (default alphabet), 6.2.1.1 (extension table), 6.1.2.1 (packing).
namespace GsmAlphabet {

/// How many septets the UTF-16 unit takes: 1, 2 for one of the extension table, 0 if the alphabet
/// doesn't hold it.
int septetCount(char16_t unit);

/// The text as septets, one a byte, escape pairs included; nothing if a character is not in the
/// alphabet.
std::optional<QByteArray> toSeptets(QStringView text);

/// Packs septets (one a byte) into octets, the first one in the lowest bits.
/// @param fillBits 0 to 6 zero bits in front of the first septet, which bring the text behind a
///                 user data header to a septet boundary (3GPP TS 23.040, 9.2.3.24)
QByteArray pack(const QByteArray &septets, int fillBits = 0);

/// Unpacks `count` septets, one a byte, or as many as the octets hold whole.
QByteArray unpack(const QByteArray &octets, qsizetype count);

/// The text that septets (one a byte) stand for. An escape before a septet that the single shift
/// table doesn't hold makes that septet a character of the locking shift table, and one before
/// another escape a space, as an escape at the end does (3GPP TS 23.038, 6.2.1.1).
QString fromSeptets(const QByteArray &septets, GsmLanguage locking = GsmLanguage::Default,
                    GsmLanguage single = GsmLanguage::Default);

} // namespace GsmAlphabet

} // namespace norvane
