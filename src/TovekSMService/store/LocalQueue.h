#pragma once

#include "TovekSMService/store/MessageQueue.h"

namespace norvane {

class Outcomes;

/// The queue in the engine's own file: nobody else sends from it.
class LocalQueue : public MessageQueue
{
public:
    /// @param database  must outlive this object
    /// @param outcomes  of the same database; must outlive this object
    /// @param now       see MessageQueue
    LocalQueue(StoreDatabase &database, Outcomes &outcomes, const Now &now)
        : MessageQueue(database, now), m_outcomes(outcomes)
    {}

    StoreResult<> load() override;
    StoreResult<qint64> refuse(const QueueRow &message, qint32 code, const QString &at) override;
    using MessageQueue::rows;
    StoreResult<QList<QueueRow>> rows(const QList<qint64> &ids) const override;
    StoreResult<> clear() override;
    using MessageQueue::first;
    StoreResult<QList<StoredMessage>> first(int max) const override;
    StoreResult<std::optional<QString>> firstDue() const override;
    StoreResult<> begin(const QList<BegunPart> &parts) override;
    StoreResult<> endPart(qint64 id, int partsSent) override;
    StoreResult<> cancel(const QList<qint64> &ids) override;
    StoreResult<> releaseBetweenParts() override;
    StoreResult<> holdPartlySent() override;
    StoreResult<> postpone(qint64 id, int attempts, const QString &nextAttempt) override;
    StoreResult<> makeWay(qint64 id, int attempts, const QString &until) override;
    StoreResult<qint64> finish(qint64 id, qint32 code, std::optional<int> networkReference,
                               const QString &at, bool reported) override;
    StoreResult<> finishSent(const QList<SentMessage> &messages) override;
    StoreResult<QList<StoredMessage>> interrupted() const override;

private:
    StoreResult<QList<qint64>> insert(const QList<QueueRow> &messages) override;
    StoreResult<bool> change(const QueueRow &row) override;
    StoreResult<bool> remove(qint64 id) override;
    QString batchesSetting() const override;

    Outcomes &m_outcomes;
};

} // namespace norvane
