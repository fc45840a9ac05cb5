#include "TovekSMService/store/StoredBatches.h"

#include "TovekSMService/store/MessageQueue.h"

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

} // namespace

StoreResult<QStringList> StoredBatches::entries() const
{
    return m_queue.recentBatches().map(
        [](const QString &batches) { return batches.split(u' ', Qt::SkipEmptyParts); });
}

StoreResult<> StoredBatches::add(const QString &batch, const QList<QueueRow> &messages)
{
    const StoreResult<qsizetype> before = stored(batch);
    if (!before)
        return failed(before.error());
    qsizetype done = *before;
    qsizetype next = messages.size() - done;
    while (done < messages.size()) {
        StoreResult<> added = addSome(batch, messages.sliced(done, next), done + next);
        if (added) {
            done += next;
            next = std::min(next, messages.size() - done);
            continue;
        }
        // What is too much for the disk may fit in part. A lock concerns one as it does all.
        if (next == 1 || added.error().kind() == StoreFailure::Kind::Busy)
            return added;
        next /= 2;
    }
    return {};
}

StoreResult<qsizetype> StoredBatches::stored(const QString &batch) const
{
    return entries().map([label = labelOf(batch)](const QStringList &entries) -> qsizetype {
        for (const QString &entry : entries) {
            if (entry.startsWith(label))
                return entry.sliced(label.size()).toLongLong();
        }
        return 0;
    });
}

/// @param stored  messages of the batch, once these are
StoreResult<> StoredBatches::addSome(const QString &batch, const QList<QueueRow> &messages,
                                     qsizetype stored)
{
    return entries().and_then([&](QStringList entries) {
        const QString label = labelOf(batch);
        entries.removeIf([&label](const QString &entry) { return entry.startsWith(label); });
        entries.append(label + QString::number(stored));
        if (entries.size() > maxRemembered)
            entries.removeFirst();
        return m_queue.addBatch(messages, entries.join(u' '));
    });
}

} // namespace norvane
