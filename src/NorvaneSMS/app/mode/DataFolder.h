#pragma once

#include "common/platform/PlatformFiles.h"
#include "foundation/PlatformHelpers.h"

#include <QString>

namespace norvane {

/// Finds the suite's data folder and makes its default tree, which is there after every start.
///
/// The folder is the value "DataFolder" of the section "General" of "Norvane.ini" beside the
/// program, as it stands; the default tree's path where that value is empty or missing.
/// @param dataFolder  the folder; left as it was when there is no such file
/// @param platform    makes the folders of the tree
/// @return whether "Norvane.ini" exists
/// @throws NumberedFailure when a folder of the default tree can't be made
bool ResolveDataFolder(const PlatformHelpers &helpers, QString &dataFolder,
                       PlatformFiles &platform = platformFiles());

} // namespace norvane
