#pragma once

#include <QString>

namespace norvane {

/// Files that must not take the place of another.
namespace NewFile {

/// Makes an empty file with the rights of its owner alone, unless something bears the name, be it
/// a link that leads nowhere.
/// @return the reason why not, empty when it was made
QString make(const QString &file);

/// Waits until what the file holds, and its name, are on the disk.
/// @return the reason why not, empty when they are
QString flushFile(const QString &file);

} // namespace NewFile

} // namespace norvane
