#pragma once

#include "NorvaneSheetReader/BiffRecords.h"
#include "NorvaneSheetReader/CellText.h"
#include "NorvaneSheetReader/SheetTable.h"

#include <QList>

#include <memory>

namespace norvane {

/// What the cells of all sheets of a workbook refer to.
struct XlsGlobals
{
    bool isVersion8 = true;
    bool from1904 = false;
    std::shared_ptr<CellTexts> texts = std::make_shared<CellTexts>();
    QList<CellTexts::Place> sharedStrings;
    QList<CellText::Kind> kinds; ///< by cell format
};

/// Puts the cells of the sheet that begins at `offset` of the workbook's stream into `table`.
void readXlsSheet(const QByteArray &stream, qsizetype offset, const XlsGlobals &globals,
                  SheetTable &table);

} // namespace norvane
