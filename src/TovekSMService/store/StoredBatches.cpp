#include "TovekSMService/store/StoredBatches.h"

#include "TovekSMService/store/MessageQueue.h"
#include "TovekSMService/store/StoreFailure.h"

#include <QCryptographicHash>

#include <algorithm>

namespace norvane {

namespace {

/// A batch's entry begins with this, whatever its name is.
QString labelOf(const QString &batch)
{
    const QByteArray digest = QCryptographicHash::hash(batch.toUtf8(), QCryptographicHash::Sha1);
    return QString::fromLatin1(digest.toHex()) + u':';
}

QStringList entriesOf(const MessageQueue &queue)
{
    return queue.recentBatches().split(u' ', Qt::SkipEmptyParts);
}

} // namespace

void StoredBatches::add(const QString &batch, const QList<QueueRow> &messages)
{
    qsizetype done = stored(batch);
    qsizetype next = messages.size() - done;
    while (done < messages.size()) {
        try {
            m_queue.addBatch(messages.sliced(done, next), entriesWith(batch, done + next));
            done += next;
            next = std::min(next, messages.size() - done);
        } catch (const StoreFailure &failure) {
            // What is too much for the disk may fit in part. A lock concerns one as it does all.
            if (next == 1 || failure.kind() == StoreFailure::Kind::Busy)
                throw;
            next /= 2;
        }
    }
}

qsizetype StoredBatches::stored(const QString &batch) const
{
    const QString label = labelOf(batch);
    const QStringList entries = entriesOf(m_queue);
    for (const QString &entry : entries) {
        if (entry.startsWith(label))
            return entry.sliced(label.size()).toLongLong();
    }
    return 0;
}

/// What the queue is to keep once that many messages of the batch are stored.
QString StoredBatches::entriesWith(const QString &batch, qsizetype stored) const
{
    const QString label = labelOf(batch);
    QStringList entries = entriesOf(m_queue);
    entries.removeIf([&label](const QString &entry) { return entry.startsWith(label); });
    entries.append(label + QString::number(stored));
    if (entries.size() > maxRemembered)
        entries.removeFirst();
    return entries.join(u' ');
}

} // namespace norvane
