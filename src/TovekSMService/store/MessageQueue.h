#pragma once

#include "TovekSMService/store/QueueJournal.h"
#include "TovekSMService/store/SentParts.h"
#include "TovekSMService/store/StoreFailure.h"
#include "contract/QueueRecordSet.h"
#include "contract/SMSList.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

namespace norvane {

class StoreDatabase;
class StoreRow;

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
    qint64 epoch = 0;                 ///< in which it was begun, see SharedQueue
};

/// A part that is about to leave.
struct BegunPart
{
    qint64 message = 0;
    std::optional<quint16> reference; ///< of a message of several parts; is kept for the others
    QByteArray hash;
};

/// A message of which the device has taken the last part.
struct SentMessage
{
    qint64 id = 0;
    std::optional<int> networkReference; ///< of the last part
    QString at;                          ///< "yyyy-MM-ddTHH:mm:ss"
};

/// An attempt to send a part that failed, and that another one follows.
struct FailedAttempt
{
    QString at; ///< "yyyy-MM-ddTHH:mm:ss"
    int part = 1;
    qint32 code = 0; ///< why
};

/// The messages that are to be sent, in the order in which they are. What is being sent belongs to
/// them. What fails has changed nothing.
class MessageQueue
{
public:
    using Now = std::function<QString(qint64 seconds)>;

    /// @param database  must outlive this object
    /// @param now       the wall clock so many seconds from now, "yyyy-MM-ddTHH:mm:ss"
    MessageQueue(StoreDatabase &database, Now now) : m_database(database), m_now(std::move(now)) {}
    MessageQueue(const MessageQueue &) = delete;
    MessageQueue &operator=(const MessageQueue &) = delete;
    virtual ~MessageQueue() = default;

    /// Takes over what the database holds, now that it was opened.
    [[nodiscard]] virtual StoreResult<> load() = 0;
    /// The database is being closed: until load() nothing is known of it.
    void forget();

    // As consoles see it.
    [[nodiscard]] StoreResult<> add(const QList<SMSList::Entry> &entries,
                                    const QString &deliveryDate);
    /// Messages with a date each, in the order of `messages`; their ids are not looked at.
    [[nodiscard]] StoreResult<> add(const QList<QueueRow> &messages);
    /// Carries out what adds messages, once for each token: where the answer to an earlier time was
    /// lost, and that has been carried out, nothing is.
    [[nodiscard]] virtual StoreResult<> once(const QString & /*token*/,
                                             const std::function<StoreResult<>()> &operations)
    {
        return operations();
    }
    /// Keeps the outcome of a message that is not to be queued, see Outcomes::keep().
    /// @return the outcome's id
    [[nodiscard]] virtual StoreResult<qint64> refuse(const QueueRow &message, qint32 code,
                                                     const QString &at) = 0;
    /// Of a queue that others change too, as far as is known here.
    qint32 size() const { return std::max(m_size, 0); }
    [[nodiscard]] StoreResult<QList<QueueRow>> rows() const;
    /// Those of the messages `ids` that are in the queue, in no order.
    [[nodiscard]] virtual StoreResult<QList<QueueRow>> rows(const QList<qint64> &ids) const = 0;
    /// What became different in rows().
    const QueueJournal &journal() const { return m_journal; }
    /// Removes every message but those in progress.
    [[nodiscard]] virtual StoreResult<> clear() = 0;
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
    /// The messages that go first, `max` at most, in their order. Within a transaction nobody else
    /// can begin them until it ends.
    [[nodiscard]] virtual StoreResult<QList<StoredMessage>> first(int max) const = 0;
    /// The moment at which first() is due, empty for a message with an odd date.
    [[nodiscard]] virtual StoreResult<std::optional<QString>> firstDue() const = 0;
    /// Whether recover() is to be called before another part begins.
    virtual bool needsRecovery() const { return false; }
    /// Lets those parts wait again of which the database alone says that they are leaving. To be
    /// called when nothing is on its way, and what became of everything that was is settled.
    [[nodiscard]] virtual StoreResult<> recover() { return {}; }
    /// What is settled from now on began to leave in that epoch; 0 for the present one.
    virtual void settleAs(qint64 /*epoch*/) {}
    /// Notes that parts are about to leave.
    [[nodiscard]] virtual StoreResult<> begin(const QList<BegunPart> &parts) = 0;
    /// Notes that the part was accepted and others follow: the message stays in progress.
    [[nodiscard]] virtual StoreResult<> endPart(qint64 id, int partsSent) = 0;
    /// Takes back begin(): the parts did not leave, and the messages wait again, in progress if
    /// other parts of them were accepted.
    [[nodiscard]] virtual StoreResult<> cancel(const QList<qint64> &ids) = 0;
    /// Lets every message that is in progress between two of its parts wait again.
    [[nodiscard]] virtual StoreResult<> releaseBetweenParts() = 0;
    /// Holds those messages as in progress of which parts were accepted.
    [[nodiscard]] virtual StoreResult<> holdPartlySent() = 0;
    /// Moves the message to its next attempt, in progress if parts of it were accepted.
    [[nodiscard]] virtual StoreResult<> postpone(qint64 id, int attempts,
                                                 const QString &nextAttempt) = 0;
    /// Lets the message make way for others until that moment: the device refuses it, for its own
    /// sake or the message's.
    [[nodiscard]] virtual StoreResult<> makeWay(qint64 id, int attempts, const QString &until) = 0;
    /// Keeps, once, what postpone() or makeWay() followed.
    [[nodiscard]] StoreResult<> keepAttempt(qint64 id, const FailedAttempt &attempt)
    {
        return keepAttempt(m_database, id, attempt);
    }
    /// The same in either place that a queue can be in.
    [[nodiscard]] static StoreResult<> keepAttempt(StoreDatabase &database, qint64 id,
                                                   const FailedAttempt &attempt);
    /// Takes the message out of the queue and keeps its outcome, see Outcomes::keep().
    /// @return the outcome's id
    [[nodiscard]] virtual StoreResult<qint64> finish(qint64 id, qint32 code,
                                                     std::optional<int> networkReference,
                                                     const QString &at, bool reported) = 0;
    /// The same for messages that were sent.
    [[nodiscard]] virtual StoreResult<> finishSent(const QList<SentMessage> &messages) = 0;
    /// Forgets what served its turn, in a step of so many rows.
    [[nodiscard]] virtual StoreResult<> prune(int /*max*/) { return {}; }
    /// Forgets attempts from before this moment whose messages are gone, and their outcomes too.
    /// @param max  attempts to forget in this step
    /// @return how many were forgotten
    [[nodiscard]] StoreResult<int> pruneAttempts(const QString &before, int max);
    /// Messages of which a part was about to leave when the engine ended.
    [[nodiscard]] virtual StoreResult<QList<StoredMessage>> interrupted() const = 0;
    /// Of a row of id, delivery_date, due, phone, text, attempts, parts_sent, reference and
    /// original_date.
    static StoredMessage messageOf(const StoreRow &row);

protected:
    /// Inserts messages, and gives their ids.
    virtual StoreResult<QList<qint64>> insert(const QList<QueueRow> &messages) = 0;
    virtual StoreResult<bool> change(const QueueRow &row) = 0;
    virtual StoreResult<bool> changeAll(const QList<QueueRow> &rows);
    virtual StoreResult<bool> remove(qint64 id) = 0;
    virtual StoreResult<bool> removeAll(const QList<qint64> &ids);
    /// The name of the value that recentBatches() keeps.
    virtual QString batchesSetting() const = 0;
    /// What other sessions are to hear of, once the transaction is committed.
    virtual void announce(const QList<qint64> & /*ids*/) {}

    static QString dueOf(const QString &deliveryDate);
    static QueueRow rowOf(const StoreRow &row);
    StoreResult<bool> isOrWasInProgress(qint64 id) const;
    void resize(qsizetype change);
    /// As far as it is known: below 0 while others have sent more than is known to have come.
    qint32 exactSize() const { return m_size; }
    void setSize(qint32 size) { m_size = size; }
    void note(const QList<qint64> &ids);
    void noteAll() { m_journal.noteAll(); }

    StoreDatabase &m_database;
    const Now m_now;

private:
    qint32 m_size = 0;
    QueueJournal m_journal;
};

} // namespace norvane
