#pragma once

#include "NorvaneSheetReader/SheetTable.h"
#include "common/Result.h"
#include "common/SheetFrames.h"

#include <QString>

#include <vector>

namespace norvane {

/// A workbook in memory, and the answers to questions about it.
class WorkbookReader
{
public:
    /// Answers; failures are answers too.
    [[nodiscard]] SheetFrames::Reply answer(const SheetFrames::Question &question);

private:
    SheetFrames::Reply carryOut(const SheetFrames::Question &question);
    SheetFrames::Reply open(const QString &path);
    const SheetTable *find(const QString &sheet) const;
    QStringList sheetNames() const;
    static SheetFrames::Reply describe(const SheetTable &table);
    static SheetFrames::Reply values(const SheetTable &table,
                                     const SheetFrames::Question &question);

    std::vector<SheetTable> m_sheets;
};

/// The sheets of the file at `path`, read as what its first bytes say that it is. A failure has the
/// number of the platform's error, or BadFile.
[[nodiscard]] Result<std::vector<SheetTable>, NumberedFailure> readWorkbook(const QString &path);

} // namespace norvane
