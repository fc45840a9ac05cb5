#pragma once

#include "NorvaneSheetReader/SheetTable.h"
#include "common/SheetFrames.h"

#include <QString>

#include <vector>

namespace norvane {

/// A workbook in memory, and the answers to questions about it.
class WorkbookReader
{
public:
    /// Answers; failures are answers too.
    SheetFrames::Answer answer(const SheetFrames::Question &question);

private:
    void open(const QString &path);
    const SheetTable &sheet(const QString &name) const;
    QStringList sheetNames() const;
    static QList<std::optional<QString>> values(const SheetTable &table,
                                                const SheetFrames::Question &question);

    std::vector<SheetTable> m_sheets;
};

/// The sheets of the file at `path`, read as what its first bytes say that it is.
/// @throws NumberedFailure by the platform's error, or BadFile
std::vector<SheetTable> readWorkbook(const QString &path);

} // namespace norvane
