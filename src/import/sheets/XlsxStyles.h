#pragma once

#include "import/sheets/PartStream.h"

#include <QHash>
#include <QList>
#include <QString>

#include <memory>

/// Which cell formats of a workbook write their numbers as dates.
class XlsxStyles
{
public:
    /// @param part  null for a workbook without
    /// @throws NumberedFailure BadFile
    explicit XlsxStyles(std::unique_ptr<PartStream> part);

    bool isDate(qint32 format) const { return m_isDate.value(format, false); }

private:
    QHash<qint32, QString> m_codes; ///< of number formats, by identifier
    QList<bool> m_isDate;           ///< by cell format
};
