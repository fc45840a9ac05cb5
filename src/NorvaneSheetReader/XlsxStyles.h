#pragma once

#include "NorvaneSheetReader/CellText.h"
#include "NorvaneSheetReader/PartStream.h"

#include <QHash>
#include <QList>
#include <QString>

#include <memory>

namespace norvane {

/// What the cell formats of a workbook make of their numbers.
class XlsxStyles
{
public:
    /// @param part  null for a workbook without
    /// @throws NumberedFailure BadFile
    explicit XlsxStyles(std::unique_ptr<PartStream> part);

    CellText::Kind kindOf(qint32 format) const { return m_kinds.value(format); }

private:
    QHash<qint32, QString> m_codes; ///< of number formats, by identifier
    QList<CellText::Kind> m_kinds;  ///< by cell format
};

} // namespace norvane
