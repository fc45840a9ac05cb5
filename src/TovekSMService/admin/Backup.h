#pragma once

#include <QString>

namespace norvane {

/// Copies the store, while an engine may be at work on it, to a file of its own, for its owner
/// alone. Nothing is overwritten, and no half copy is left.
/// @return the reason why not, empty when the copy is there and on the disk
QString backUp(const QString &storeFile, const QString &target);

} // namespace norvane
