#pragma once

#include <QString>

namespace norvane {

/// Lists that a spreadsheet reads.
namespace Csv {

/// A field of a record (RFC 4180), quoted where that is needed. What a spreadsheet would take for a
/// formula begins with an apostrophe, also behind what a spreadsheet of another country might end a
/// cell at; a phone number with its plus sign is none.
QString field(const QString &text);

/// What ends a record.
inline constexpr char16_t lineEnd[] = u"\r\n";

} // namespace Csv

} // namespace norvane
