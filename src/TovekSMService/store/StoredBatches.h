#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "contract/QueueRecordSet.h"

#include <QList>
#include <QString>
#include <QStringList>

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

    /// Queues those messages of the batch that aren't stored yet, in their order. Where one can't
    /// be stored it fails, and those before that one are.
    [[nodiscard]] StoreResult<> add(const QString &batch, const QList<QueueRow> &messages);

    /// How many messages of the batch are stored, from its first; 0 for a batch that isn't known.
    [[nodiscard]] StoreResult<qsizetype> stored(const QString &batch) const;

private:
    StoreResult<QStringList> entries() const;
    StoreResult<> addSome(const QString &batch, const QList<QueueRow> &messages, qsizetype stored);

    MessageQueue &m_queue;
};

} // namespace norvane
