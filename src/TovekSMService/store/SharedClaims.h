#pragma once

#include "TovekSMService/store/MessageQueue.h"

#include <QList>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>

namespace norvane {

class EngineRegister;
class PostgresDatabase;

/// What an engine holds of a queue that it shares: which messages it begins, and what it says of
/// those that it has begun. Everything is bound to the engine's epoch.
class SharedClaims
{
public:
    using Now = std::function<QString(qint64 seconds)>;

    /// What became of a message that is out of the queue.
    struct Finished
    {
        qint64 outcome = 0;      ///< its id; 0 where somebody else finished the message
        bool wasInQueue = false; ///< until now
    };

    /// As SharedQueue takes them.
    SharedClaims(PostgresDatabase &database, EngineRegister &engines, const Now &now,
                 int sameSenderSeconds);

    /// Begins an epoch of the engine.
    [[nodiscard]] StoreResult<> enroll();
    void requireRecovery() { m_needsRecovery = true; }
    bool needsRecovery() const { return m_needsRecovery; }
    [[nodiscard]] StoreResult<> recover();
    /// Another engine has taken over what this one held.
    void noteEpochEnded();
    void settleAs(qint64 epoch);

    // As MessageQueue has them. Whom to tell of it is the queue's.
    [[nodiscard]] StoreResult<QList<StoredMessage>> first(int max) const;
    [[nodiscard]] StoreResult<QList<StoredMessage>> interrupted() const;
    [[nodiscard]] StoreResult<> begin(const QList<BegunPart> &parts);
    [[nodiscard]] StoreResult<> endPart(qint64 id, int partsSent);
    [[nodiscard]] StoreResult<> cancel(const QList<qint64> &ids);
    [[nodiscard]] StoreResult<> releaseBetweenParts();
    [[nodiscard]] StoreResult<> holdPartlySent();
    [[nodiscard]] StoreResult<> postpone(qint64 id, int attempts, const QString &nextAttempt);
    [[nodiscard]] StoreResult<> makeWay(qint64 id, const QString &until);
    [[nodiscard]] StoreResult<Finished> finish(qint64 id, qint32 code,
                                               std::optional<int> networkReference,
                                               const QString &at, bool reported);
    [[nodiscard]] StoreResult<> finishSent(const QList<SentMessage> &messages);

private:
    qint64 settlingEpoch() const;
    QVariantList valuesOfFirst(int max) const;

    PostgresDatabase &m_shared;
    EngineRegister &m_engines;
    const Now m_now;
    const int m_sameSenderSeconds;
    mutable bool m_isEpochOver = false;
    mutable bool m_needsRecovery = false;
    QList<qint64> m_epochs; ///< that this run of the program has had, with the present one
    qint64 m_settlingEpoch = 0;
};

} // namespace norvane
