#pragma once

#include "contract/QueueRecordSet.h"

#include <QList>
#include <QString>

namespace norvane {

class MessageQueue;

/// Messages that come in batches. Each batch has a name, and what is stored of the last few is kept
/// with the messages, so that a caller who got no answer can hand the same batch over again.
class StoredBatches
{
public:
    /// Batches of which the queue keeps what it has.
    static constexpr qsizetype maxRemembered = 16;

    /// @param queue  must outlive this object
    explicit StoredBatches(MessageQueue &queue) : m_queue(queue) {}

    /// Queues those messages of the batch that aren't stored yet, in their order.
    /// @throws StoreFailure for one that can't be stored; those before it are
    void add(const QString &batch, const QList<QueueRow> &messages);

    /// How many messages of the batch are stored, from its first; 0 for a batch that isn't known.
    /// @throws StoreFailure
    qsizetype stored(const QString &batch) const;

private:
    QString entriesWith(const QString &batch, qsizetype stored) const;

    MessageQueue &m_queue;
};

} // namespace norvane
