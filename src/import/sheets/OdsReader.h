#pragma once

#include "import/sheets/PackageParts.h"
#include "import/sheets/SheetTable.h"

#include <vector>

/// The sheets of an OpenDocument spreadsheet.
/// @throws NumberedFailure BadFile
std::vector<SheetTable> readOds(const PackageParts &parts);
