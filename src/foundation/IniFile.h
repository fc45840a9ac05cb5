#pragma once

#include <QString>

namespace norvane {

/// The value of `key` in the first section named `section`, as the suite's ini files are read:
/// names without regard to case, blanks around names and values dropped, then one pair of quotes
/// around the value; the first key of that name wins. `defaultValue`, without trailing blanks,
/// stands for a file, section or key that isn't there. The file's text is UTF-8 or UTF-16, and the
/// ANSI code page where it is neither.
/// @return at most 512 characters
QString ReadIniValue(const QString &section, const QString &key, const QString &defaultValue,
                     const QString &path);

} // namespace norvane
