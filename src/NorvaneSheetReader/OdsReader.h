#pragma once

#include "NorvaneSheetReader/PackageParts.h"
#include "NorvaneSheetReader/SheetTable.h"

#include <vector>

namespace norvane {

/// Whether the archive is an OpenDocument file with a password. Its parts are encrypted one by one
/// (OpenDocument 1.2, Packages), or, by newer programs, all together as a part of another
/// name; the manifest tells either.
bool isEncryptedOds(const PackageParts &parts);

/// The sheets of an OpenDocument spreadsheet.
/// @throws NumberedFailure BadFile
std::vector<SheetTable> readOds(const PackageParts &parts);

} // namespace norvane
