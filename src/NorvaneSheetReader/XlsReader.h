#pragma once

#include "NorvaneSheetReader/SheetTable.h"

#include <QByteArray>

#include <vector>

namespace norvane {

/// The sheets of a workbook of the BIFF kind, version 5 or 8, in a compound file.
/// @throws NumberedFailure BadFile
std::vector<SheetTable> readXls(const QByteArray &bytes);

/// The same of the workbook's stream alone.
std::vector<SheetTable> readBiff(const QByteArray &stream);

} // namespace norvane
