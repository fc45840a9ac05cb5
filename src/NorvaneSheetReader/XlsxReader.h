#pragma once

#include "NorvaneSheetReader/PackageParts.h"
#include "NorvaneSheetReader/SheetTable.h"

#include <vector>

namespace norvane {

/// The sheets of an Office Open XML workbook.
/// @throws NumberedFailure BadFile
std::vector<SheetTable> readXlsx(const PackageParts &parts);

} // namespace norvane
