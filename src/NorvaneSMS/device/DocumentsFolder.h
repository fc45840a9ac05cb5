#pragma once

#include "foundation/FileSystem.h"
#include "foundation/platform/Platform.h"

#include <QString>

namespace norvane {

/// The folder in which browsing for the queue folder starts: the suite's own below the user's
/// documents, which is made if it isn't there. Where there are no documents, or that folder can't
/// be made, the program's own folder.
QString GetDocumentsFolder(const Platform &platform, FileSystem &files);

} // namespace norvane
