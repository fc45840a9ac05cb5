#include "contract/QueueRecordSet.h"

#include <algorithm>
#include <utility>

namespace norvane {

QueueRecordSet::QueueRecordSet(QList<QueueRow> rows) : m_rows(std::move(rows)) {}

void QueueRecordSet::sortByDeliveryDate()
{
    const auto earlier = [](const QueueRow &a, const QueueRow &b) {
        return a.deliveryDate < b.deliveryDate;
    };
    // The engine usually gives the queue in this order, and checking costs less than sorting.
    if (!std::is_sorted(m_rows.cbegin(), m_rows.cend(), earlier))
        std::stable_sort(m_rows.begin(), m_rows.end(), earlier);
}

void QueueRecordSet::setPhone(qsizetype row, const QString &phone)
{
    QueueRow &target = m_rows[row];
    if (target.phone == phone)
        return;
    target.phone = phone;
    m_changed.insert(target.id);
}

void QueueRecordSet::setMessage(qsizetype row, const QString &message)
{
    QueueRow &target = m_rows[row];
    if (target.message == message)
        return;
    target.message = message;
    m_changed.insert(target.id);
}

void QueueRecordSet::removeRow(qsizetype row)
{
    const qint64 id = m_rows.at(row).id;
    m_rows.removeAt(row);
    m_changed.remove(id);
    m_deleted.append(id);
}

void QueueRecordSet::removeRows(const QList<qsizetype> &rows)
{
    QSet<qint64> going;
    for (const qsizetype row : rows) {
        const qint64 id = m_rows.at(row).id;
        going.insert(id);
        m_changed.remove(id);
        m_deleted.append(id);
    }
    m_rows.removeIf([&going](const QueueRow &row) { return going.contains(row.id); });
}

void QueueRecordSet::forgetChanges()
{
    m_changed.clear();
    m_deleted.clear();
}

QList<QueueRow> QueueRecordSet::changedRows() const
{
    QList<QueueRow> changed;
    if (m_changed.isEmpty())
        return changed;
    for (const QueueRow &row : m_rows) {
        if (m_changed.contains(row.id))
            changed.append(row);
    }
    return changed;
}

} // namespace norvane
