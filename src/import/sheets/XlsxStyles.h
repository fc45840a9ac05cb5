#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

/// Which cell formats of a workbook write their numbers as dates.
class XlsxStyles
{
public:
    /// @throws NumberedFailure BadFile
    explicit XlsxStyles(const QByteArray &part);

    bool isDate(qint32 format) const { return m_isDate.value(format, false); }

private:
    QHash<qint32, QString> m_codes; ///< of number formats, by identifier
    QList<bool> m_isDate;           ///< by cell format
};
