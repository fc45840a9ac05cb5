#pragma once

#include <QList>
#include <QString>

namespace norvane {

/// The recipients of one bulk send: entries of phone and finished message, indexed from 0 in the
/// order of Add. Index and count are signed 16-bit numbers.
class SMSList
{
public:
    struct Entry
    {
        QString phone;
        QString message;

        bool operator==(const Entry &) const = default;
    };

    /// Adds one recipient at the end.
    /// @return true
    /// @throws NumberedFailure 6 when the list holds 32,767 entries already
    bool Add(const QString &phone, const QString &message);

    /// @throws NumberedFailure 9 for an index outside 0 to Count minus 1
    QString Message(qint16 index) const;
    /// @throws NumberedFailure 9 for an index outside 0 to Count minus 1
    QString Phone(qint16 index) const;

    qint16 Count() const { return static_cast<qint16>(m_entries.size()); }

    const QList<Entry> &entries() const { return m_entries; }

private:
    const Entry &at(qint16 index) const;

    QList<Entry> m_entries;
};

} // namespace norvane
