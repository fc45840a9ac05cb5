#pragma once

#include "TovekSMService/admin/AdminFailure.h"
#include "common/Result.h"

#include <QString>

namespace norvane {

/// Copies the store, while an engine may be at work on it, to a file of its own, for its owner
/// alone. Nothing is overwritten, and no half copy is left. With success it is on the disk.
[[nodiscard]] Result<void, AdminFailure> backUp(const QString &storeFile, const QString &target);

} // namespace norvane
