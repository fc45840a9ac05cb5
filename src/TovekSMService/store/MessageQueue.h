#pragma once

#include "TovekSMService/store/QueueJournal.h"
#include "TovekSMService/store/SettingTable.h"
#include "contract/QueueRecordSet.h"
#include "contract/SMSList.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace norvane {

class Outcomes;
class StoreDatabase;

/// A message of the queue as the dispatcher sees it.
struct StoredMessage
{
    qint64 id = 0;
    QString deliveryDate;   ///< as it was given, or the moment of the next attempt
    bool dateIsOdd = false; ///< deliveryDate is no date
    QString phone;
    QString text;
    int attempts = 0;
    int partsSent = 0;
    std::optional<quint16> reference; ///< that ties its parts together, once one was sent
    QString originalDate;             ///< deliveryDate as it was given, whatever came since
};

/// The messages that are to be sent, in the order in which they are. What is being sent belongs to
/// them. What fails has changed nothing.
class MessageQueue
{
public:
    /// @param database  must outlive this object
    /// @param outcomes  of the same database; must outlive this object
    MessageQueue(StoreDatabase &database, Outcomes &outcomes);

    /// Takes over what the database holds, now that it was opened.
    [[nodiscard]] StoreResult<> load();
    /// The database is being closed: until load() nothing is known of it.
    void forget();

    // As consoles see it.
    [[nodiscard]] StoreResult<> add(const QList<SMSList::Entry> &entries,
                                    const QString &deliveryDate);
    /// Messages with a date each, in the order of `messages`; their ids are not looked at.
    [[nodiscard]] StoreResult<> add(const QList<QueueRow> &messages);
    /// Keeps the outcome of a message that is not to be queued, see Outcomes::keep().
    /// @return the outcome's id
    [[nodiscard]] StoreResult<qint64> refuse(const QueueRow &message, qint32 code,
                                             const QString &at);
    qint32 size() const { return m_size; }
    [[nodiscard]] StoreResult<QList<QueueRow>> rows() const;
    /// Those of the messages `ids` that are in the queue, in no order.
    [[nodiscard]] StoreResult<QList<QueueRow>> rows(const QList<qint64> &ids) const;
    /// What became different in rows().
    const QueueJournal &journal() const { return m_journal; }
    /// Removes every message but the one in progress.
    [[nodiscard]] StoreResult<> clear();
    /// Changes phone and text of the rows that still wait, and removes those of `deleted` that do.
    /// A row that gets another phone or text begins anew, with all its parts and attempts.
    /// @return false when a change or a deletion came too late: its message is being sent, or was,
    ///         or, for a change, is gone
    [[nodiscard]] StoreResult<bool> update(const QList<QueueRow> &changed,
                                           const QList<qint64> &deleted);
    /// Adds messages, and keeps with them which batches came last, as StoredBatches writes it.
    [[nodiscard]] StoreResult<> addBatch(const QList<QueueRow> &messages,
                                         const QString &recentBatches);
    [[nodiscard]] StoreResult<QString> recentBatches() const;

    // As the dispatcher sees it.
    /// The message that goes first: by delivery date, then by order of queueing.
    [[nodiscard]] StoreResult<std::optional<StoredMessage>> first() const;
    /// The messages that go first, `max` at most, in their order.
    [[nodiscard]] StoreResult<QList<StoredMessage>> first(int max) const;
    /// The moment at which first() is due, empty for a message with an odd date.
    [[nodiscard]] StoreResult<std::optional<QString>> firstDue() const;
    /// Notes that a part is about to leave. `reference`, of a message of several parts, is kept for
    /// the others.
    [[nodiscard]] StoreResult<> beginPart(qint64 id, std::optional<quint16> reference,
                                          const QByteArray &partHash);
    /// Notes that the part was accepted and others follow: the message stays in progress.
    [[nodiscard]] StoreResult<> endPart(qint64 id, int partsSent);
    /// Takes back beginPart: the part did not leave, and the message waits again, in progress if
    /// other parts of it were accepted.
    [[nodiscard]] StoreResult<> cancelPart(qint64 id);
    /// Lets every message that is in progress between two of its parts wait again.
    [[nodiscard]] StoreResult<> releaseBetweenParts();
    /// Holds those messages as in progress of which parts were accepted.
    [[nodiscard]] StoreResult<> holdPartlySent();
    /// Moves the message to its next attempt, in progress if parts of it were accepted.
    [[nodiscard]] StoreResult<> postpone(qint64 id, int attempts, const QString &nextAttempt);
    /// Takes the message out of the queue and keeps its outcome, see Outcomes::keep().
    /// @return the outcome's id
    [[nodiscard]] StoreResult<qint64> finish(qint64 id, qint32 code,
                                             std::optional<int> networkReference, const QString &at,
                                             bool reported);
    /// Messages of which a part was about to leave when the engine ended.
    [[nodiscard]] StoreResult<QList<StoredMessage>> interrupted() const;

private:
    StoreResult<QList<qint64>> insert(const QList<QueueRow> &messages);
    StoreResult<bool> change(const QueueRow &row);
    StoreResult<bool> remove(qint64 id);
    StoreResult<bool> isOrWasInProgress(qint64 id) const;
    void resize(qsizetype change);

    StoreDatabase &m_database;
    Outcomes &m_outcomes;
    SettingTable m_settings;
    qint32 m_size = 0;
    QueueJournal m_journal;
};

} // namespace norvane
