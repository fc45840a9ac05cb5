#pragma once

#include <QString>

namespace norvane {

/// Replaces the accented letters of a fixed table by their plain forms, one character by one.
QString RemoveAccents(const QString &text);

/// The message text as it is queued: accents removed, then the bytes of the OEM code page read as
/// ANSI text. The length stays. Applied twice, a character above 127 moves twice.
/// @param keepAccents  leave out the removal of accents
QString NormalizeSMSText(bool keepAccents, const QString &text);

} // namespace norvane
