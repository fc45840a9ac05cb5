#pragma once

#include <QString>

namespace norvane {

/// Whether taking the file away can be expected to succeed: something other than a folder stands
/// there, its folder can be written, and no sticky bit keeps it for another account. What happens
/// until it is tried, and properties that only certain file systems have, aren't foreseen.
bool isRemovable(const QString &path);

} // namespace norvane
