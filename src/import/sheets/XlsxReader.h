#pragma once

#include "import/sheets/PackageParts.h"
#include "import/sheets/SheetTable.h"

#include <vector>

/// The sheets of an Office Open XML workbook.
/// @throws NumberedFailure BadFile
std::vector<SheetTable> readXlsx(const PackageParts &parts);
