#pragma once

#include "contract/QueueRecordSet.h"

#include <QList>

namespace norvane {

/// The engine's queue as it was at a revision. Updates bring the changes since then, so that a
/// large queue needn't cross the bus again for each change.
class QueueReplica
{
public:
    /// 0 while there is nothing to bring up to date.
    quint64 revision() const { return m_revision; }
    const QList<QueueRow> &rows() const { return m_rows; }

    /// Begins anew with `rows`, of `revision` or later.
    void reset(quint64 revision, QList<QueueRow> rows);
    /// Removes the messages of `gone`, and puts `present`, which are new or changed, in their
    /// places: by delivery date, then by id.
    void apply(quint64 revision, const QList<QueueRow> &present, const QList<qint64> &gone);

private:
    quint64 m_revision = 0;
    QList<QueueRow> m_rows;
};

} // namespace norvane
