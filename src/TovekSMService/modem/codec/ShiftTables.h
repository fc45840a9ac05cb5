#pragma once

#include <QtGlobal>

namespace norvane {

/// National language identifiers (3GPP TS 23.038, 6.2.1.2.4). Others are read as the default.
enum class GsmLanguage : quint8 { Default = 0, Spanish = 2, Portuguese = 3 };

/// The tables that turn the septets of a received message into characters.
namespace ShiftTables {

/// What no table holds: shown as a space where it follows the escape (3GPP TS 23.038, 6.2.1.1).
inline constexpr char16_t none = 0xFFFF;

/// The character of a septet (3GPP TS 23.038, 6.2.1; A.3.3 for Portuguese; there is no locking
/// shift table for Spanish). `none` for the escape.
char16_t locking(GsmLanguage language, quint8 septet);

/// The character of a septet that follows the escape (3GPP TS 23.038, 6.2.1.1; A.2.2 for Spanish,
/// A.2.3 for Portuguese). `none` where the table has no character.
char16_t single(GsmLanguage language, quint8 septet);

} // namespace ShiftTables

} // namespace norvane
