#include "TovekSMService/bus/QueueSnapshots.h"

#include "contract/BusTypes.h"

#include <utility>

namespace norvane {

quint64 QueueSnapshots::begin(const QString &caller, QList<QueueRow> rows)
{
    m_byCaller.insert(caller, {++m_lastNumber, std::move(rows)});
    return m_lastNumber;
}

QueueSnapshots::Page QueueSnapshots::page(const QString &caller, quint64 snapshot, quint32 first)
{
    const auto kept = m_byCaller.constFind(caller);
    if (kept == m_byCaller.cend() || kept->number != snapshot)
        return {};
    Page page;
    page.snapshot = snapshot;
    page.total = static_cast<quint32>(kept->rows.size());
    page.rows = kept->rows.mid(first, Bus::queuePageRows);
    page.isLast = qint64{first} + page.rows.size() >= kept->rows.size();
    if (page.isLast)
        m_byCaller.erase(kept);
    return page;
}

} // namespace norvane
