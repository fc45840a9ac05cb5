#pragma once

#include <QList>
#include <QSet>
#include <QString>

namespace norvane {

/// One waiting message. The first three fields are the columns of the queue grid; the id stays
/// hidden and names the message for the engine.
struct QueueRow
{
    QString deliveryDate; ///< "yyyy-MM-ddTHH:mm:ss", local, no zone
    QString phone;
    QString message;
    qint64 id = 0;

    bool operator==(const QueueRow &) const = default;
};

/// The engine's queue as it hands it out: a value that keeps track of what its holder changed, so
/// that giving it back carries edits and deletions and nothing else.
class QueueRecordSet
{
public:
    QueueRecordSet() = default;
    explicit QueueRecordSet(QList<QueueRow> rows);

    qsizetype count() const { return m_rows.size(); }
    const QueueRow &at(qsizetype row) const { return m_rows.at(row); }
    const QList<QueueRow> &rows() const { return m_rows; }

    /// Sorts by delivery date, earliest first; rows of equal date keep their order.
    void sortByDeliveryDate();

    void setPhone(qsizetype row, const QString &phone);
    void setMessage(qsizetype row, const QString &message);
    void removeRow(qsizetype row);
    /// Removes several rows, in this order; each number is that of the set as it stands now.
    void removeRows(const QList<qsizetype> &rows);

    /// The rows whose phone or message was set to something else and that are still there.
    QList<QueueRow> changedRows() const;
    /// The ids of the rows that were removed, in the order of removal.
    const QList<qint64> &deletedIds() const { return m_deleted; }
    /// Begins anew with the tracking: what was changed so far has been handed back.
    void forgetChanges();

private:
    QList<QueueRow> m_rows;
    QSet<qint64> m_changed;
    QList<qint64> m_deleted;
};

} // namespace norvane
