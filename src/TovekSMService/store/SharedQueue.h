#pragma once

#include "TovekSMService/store/MessageQueue.h"
#include "TovekSMService/store/SharedClaims.h"

#include <functional>

namespace norvane {

class EngineRegister;
class PostgresDatabase;

/// The queue in a database that several engines send from. A message is held by the engine that
/// begins it, in that engine's epoch; what an engine says of a message that it doesn't hold any
/// more changes nothing but one thing: one that was reported as in doubt and was sent is sent.
class SharedQueue : public MessageQueue
{
public:
    /// @param database, engines  must outlive this object
    /// @param now                see MessageQueue
    /// @param sameSenderSeconds  for which a due message waits for the engine that served its
    ///                           recipient last; 0 for none
    SharedQueue(PostgresDatabase &database, EngineRegister &engines, const Now &now,
                int sameSenderSeconds);

    /// Takes over what the database holds, for somebody who only looks: the engine itself shows no
    /// sign of life.
    [[nodiscard]] StoreResult<> look();
    /// Also begins an epoch of the engine: what is carried out late of an earlier connection finds
    /// nothing that it could change.
    StoreResult<> load() override;
    StoreResult<> once(const QString &token,
                       const std::function<StoreResult<>()> &operations) override;
    StoreResult<qint64> refuse(const QueueRow &message, qint32 code, const QString &at) override;
    using MessageQueue::rows;
    StoreResult<QList<QueueRow>> rows(const QList<qint64> &ids) const override;
    StoreResult<> clear() override;
    using MessageQueue::first;
    StoreResult<QList<StoredMessage>> first(int max) const override { return m_claims.first(max); }
    StoreResult<std::optional<QString>> firstDue() const override;
    StoreResult<> begin(const QList<BegunPart> &parts) override { return m_claims.begin(parts); }
    StoreResult<> endPart(qint64 id, int partsSent) override
    {
        return m_claims.endPart(id, partsSent);
    }
    StoreResult<> cancel(const QList<qint64> &ids) override;
    StoreResult<> releaseBetweenParts() override { return m_claims.releaseBetweenParts(); }
    StoreResult<> holdPartlySent() override { return m_claims.holdPartlySent(); }
    StoreResult<> postpone(qint64 id, int attempts, const QString &nextAttempt) override;
    StoreResult<> makeWay(qint64 id, int attempts, const QString &until) override;
    StoreResult<qint64> finish(qint64 id, qint32 code, std::optional<int> networkReference,
                               const QString &at, bool reported) override;
    StoreResult<> finishSent(const QList<SentMessage> &messages) override;
    StoreResult<> prune(int max) override;
    StoreResult<QList<StoredMessage>> interrupted() const override
    {
        return m_claims.interrupted();
    }
    bool needsRecovery() const override { return m_claims.needsRecovery(); }
    StoreResult<> recover() override { return m_claims.recover(); }
    void settleAs(qint64 epoch) override { m_claims.settleAs(epoch); }

    /// The engine's epoch is over: another one has taken over what it held.
    void noteEpochEnded() { m_claims.noteEpochEnded(); }
    /// These left the queue as another engine's were taken over.
    [[nodiscard]] StoreResult<> noteTakenOver(const QList<qint64> &ids);

    /// Messages came into the queue, or left it, by another way than this one.
    [[nodiscard]] StoreResult<> countMoved(qint64 change);

    // The consoles of other engines
    /// Whether there is something that they have not been told of.
    bool hasNews() const { return m_hasAllChanged || !m_unannounced.isEmpty(); }
    /// Looks whether the queue is as large as is known here: the news of an engine that was killed
    /// right behind a commit come from nobody.
    /// @return whether it isn't; then any message may be different
    [[nodiscard]] StoreResult<bool> checkSize();
    /// Is called from the event loop when something is done that wasn't waited for.
    using Done = std::function<void(const StoreResult<> &)>;
    /// Tells the other engines what changed here.
    [[nodiscard]] StoreResult<> announceNews();
    /// The same, without waiting. What can't be told is news again.
    void announceNews(const Done &done);
    /// Tells them that any message may be different.
    [[nodiscard]] StoreResult<> announceAll();
    /// Tells them that something became different beside the queue, without waiting.
    void announceHistory(const Done &done);
    /// Notes what other engines told. The size isn't known before it is looked at.
    void takeNews(const QStringList &news);
    /// Looks how large the queue is.
    [[nodiscard]] StoreResult<> refreshSize();
    /// The same, without waiting.
    void refreshSize(const Done &done);

private:
    StoreResult<QList<qint64>> insert(const QList<QueueRow> &messages) override;
    StoreResult<QList<qint64>> insertSome(const QList<QueueRow> &messages);
    StoreResult<bool> change(const QueueRow &row) override;
    StoreResult<bool> changeAll(const QList<QueueRow> &rows) override;
    StoreResult<bool> remove(qint64 id) override;
    StoreResult<bool> removeAll(const QList<qint64> &ids) override;
    QString batchesSetting() const override;
    void announce(const QList<qint64> &ids) override;
    void noteToAll(const QList<qint64> &ids);
    StoreResult<qint64> removeWaiting();
    StoreResult<> count(qint64 change);
    QString takeUnannounced();

    PostgresDatabase &m_shared;
    EngineRegister &m_engines;
    SharedClaims m_claims;
    QList<qint64> m_unannounced;
    bool m_hasAllChanged = false;
    int m_sizeLooks = 0;    ///< that were begun
    bool m_isQuiet = false; ///< nothing has changed since the size was looked at
};

} // namespace norvane
