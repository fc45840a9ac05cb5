#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace norvane {

/// The alphabets in which a message text travels (3GPP TS 23.038, clause 4).
enum class Alphabet { Gsm7, Ucs2 };

/// A text ready for encoding: its alphabet and its parts, one for a text that fits in one message.
struct MessageText
{
    Alphabet alphabet = Alphabet::Gsm7;
    QStringList parts;
};

/// What one message holds, alone and as a part of a long one with a 16-bit reference
/// (3GPP TS 23.040, 9.2.3.16 and 9.2.3.24.8): septets or UTF-16 units.
constexpr int gsm7Single = 160;
constexpr int gsm7Part = 152;
constexpr int ucs2Single = 70;
constexpr int ucs2Part = 66;
constexpr int maxParts = 255;

/// Chooses the alphabet and cuts the text into parts. The 7-bit alphabet is taken where it holds
/// every character, UCS-2 otherwise. A surrogate without its partner becomes U+FFFD; nothing else
/// changes. No cut falls into an escape pair or a surrogate pair, nor into what a reader sees as
/// one character, unless that alone is longer than a part.
/// @return nothing if more than 255 parts would be needed
std::optional<MessageText> prepareText(const QString &text);

} // namespace norvane
