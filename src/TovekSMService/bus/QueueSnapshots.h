#pragma once

#include "contract/QueueRecordSet.h"

#include <QHash>
#include <QRandomGenerator>
#include <QString>

namespace norvane {

/// The queue as it was when a caller began to fetch it, kept until the caller has the last page, so
/// that no row is missed or seen twice while the queue goes on changing. A caller has one.
class QueueSnapshots
{
public:
    struct Page
    {
        quint64 snapshot = 0; ///< 0 when there is no such snapshot (any more)
        quint32 total = 0;
        QList<QueueRow> rows;
        bool isLast = true;
    };

    /// Begins a snapshot of `rows` in place of the one that the caller had.
    /// @return its number
    quint64 begin(const QString &caller, QList<QueueRow> rows);

    /// The rows of `snapshot` from `first` on, at most Bus::queuePageRows. The last page ends it.
    Page page(const QString &caller, quint64 snapshot, quint32 first);

    void drop(const QString &caller) { m_byCaller.remove(caller); }

private:
    struct Snapshot
    {
        quint64 number = 0;
        QList<QueueRow> rows;
    };

    QHash<QString, Snapshot> m_byCaller;
    /// Begins anywhere, so that a snapshot of an engine that ended isn't taken for one of this.
    quint64 m_lastNumber = QRandomGenerator::system()->generate64() >> 1;
};

} // namespace norvane
