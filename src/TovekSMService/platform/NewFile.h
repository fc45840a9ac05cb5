#pragma once

#include "TovekSMService/platform/PlatformFailure.h"
#include "common/Result.h"

#include <QString>

namespace norvane {

/// Files that must not take the place of another.
namespace NewFile {

/// Makes an empty file with the rights of its owner alone, unless something bears the name, be it
/// a link that leads nowhere.
[[nodiscard]] Result<void, PlatformFailure> make(const QString &file);

/// Waits until what the file holds, and its name, are on the disk.
[[nodiscard]] Result<void, PlatformFailure> flushFile(const QString &file);

} // namespace NewFile

} // namespace norvane
