#include "NorvaneSMS/engine/QueueReplica.h"

#include <QSet>

#include <algorithm>
#include <iterator>
#include <utility>

namespace norvane {

namespace {

/// The order in which a replica keeps its rows. Rows of equal date go by their ids, in the order of
/// queueing.
bool goesBefore(const QueueRow &a, const QueueRow &b)
{
    const int dates = QString::compare(a.deliveryDate, b.deliveryDate);
    return dates != 0 ? dates < 0 : a.id < b.id;
}

} // namespace

void QueueReplica::reset(quint64 revision, QList<QueueRow> rows)
{
    m_revision = revision;
    m_rows = std::move(rows);
    if (!std::is_sorted(m_rows.cbegin(), m_rows.cend(), goesBefore))
        std::sort(m_rows.begin(), m_rows.end(), goesBefore);
}

void QueueReplica::apply(quint64 revision, const QList<QueueRow> &present,
                         const QList<qint64> &gone)
{
    m_revision = revision;
    if (present.isEmpty() && gone.isEmpty())
        return;
    QSet<qint64> replaced(gone.cbegin(), gone.cend());
    for (const QueueRow &row : present)
        replaced.insert(row.id);
    QList<QueueRow> coming = present;
    std::sort(coming.begin(), coming.end(), goesBefore);

    // A merge: the rows that stay are in order already.
    QList<QueueRow> rows;
    rows.reserve(m_rows.size() + coming.size());
    auto next = coming.cbegin();
    for (const QueueRow &row : std::as_const(m_rows)) {
        if (replaced.contains(row.id))
            continue;
        while (next != coming.cend() && goesBefore(*next, row))
            rows.append(*next++);
        rows.append(row);
    }
    std::copy(next, coming.cend(), std::back_inserter(rows));
    m_rows = std::move(rows);
}

} // namespace norvane
