#pragma once

#include "TovekSMService/store/PinHistory.h"
#include "TovekSMService/store/QueueJournal.h"
#include "TovekSMService/store/Statement.h"
#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/store/Transaction.h"
#include "contract/DeviceSettings.h"
#include "contract/QueueRecordSet.h"
#include "contract/SMSList.h"

#include <QByteArray>
#include <QSqlDatabase>

#include <functional>
#include <optional>

namespace norvane {

using namespace Qt::StringLiterals;

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

/// How many parts have left, or may have.
struct PartCounts
{
    qint64 inMinute = 0;
    qint64 inDay = 0;
};

/// What became of a message.
struct Outcome
{
    qint64 id = 0;
    QString phone;
    QString text;
    qint32 code = 0; ///< 1 sent, else the error code
};

/// When a message failed last, and why.
struct LastFailure
{
    QString at; ///< "yyyy-MM-ddTHH:mm:ss"
    qint32 code = 0;
};

/// Everything that the engine keeps: queue, device settings, whether it is to run, PIN attempts and
/// outcomes, in one SQLite file. Each operation is one transaction, and has reached the disk when
/// it returns. All of them throw StoreFailure, and then have changed nothing.
class Store
{
public:
    enum class Opening { Now, Later };
    /// What can be done with the file at present.
    enum class Access {
        None,    ///< it is not open: every operation fails
        Reading, ///< the disk can't be written: every operation that changes something fails
        Whole,
    };

    explicit Store(const QString &file, Opening opening = Opening::Now);
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;
    ~Store();

    /// Opens the file anew, making it and its schema where there is none. Where that fails for the
    /// disk and not for the file, it is open for reading afterwards if it can be.
    void open();
    void close();
    Access access() const { return m_access; }
    QString file() const { return m_file; }

    /// Carries out several operations as one: with one commit, all of them or none.
    void together(const std::function<void()> &operations);

    // The queue, as consoles see it. What is being sent belongs to it.
    void add(const QList<SMSList::Entry> &entries, const QString &deliveryDate);
    /// Messages with a date each, in the order of `messages`; their ids are not looked at.
    void add(const QList<QueueRow> &messages);
    qint32 size() const { return m_size; }
    QList<QueueRow> rows() const;
    /// Those of the messages `ids` that are in the queue, in no order.
    QList<QueueRow> rows(const QList<qint64> &ids) const;
    /// What became different in rows().
    const QueueJournal &journal() const { return m_journal; }
    /// Removes every message but the one in progress.
    void clear();
    /// Changes phone and text of the rows that still wait, and removes those of `deleted` that do.
    /// A row that gets another phone or text begins anew, with all its parts and attempts.
    /// @return false when a change or a deletion came too late: its message is being sent, or was,
    ///         or, for a change, is gone
    bool update(const QList<QueueRow> &changed, const QList<qint64> &deleted);

    // The queue, as the dispatcher sees it.
    /// The message that goes first: by delivery date, then by order of queueing.
    std::optional<StoredMessage> first() const;
    /// The messages that go first, `max` at most, in their order.
    QList<StoredMessage> first(int max) const;
    /// The moment at which first() is due, empty for a message with an odd date.
    std::optional<QString> firstDue() const;
    /// Notes that a part is about to leave. `reference`, of a message of several parts, is kept for
    /// the others.
    void beginPart(qint64 id, std::optional<quint16> reference, const QByteArray &partHash);
    /// Notes that the part was accepted and others follow: the message stays in progress.
    void endPart(qint64 id, int partsSent);
    /// Takes back beginPart: the part did not leave, and the message waits again, in progress if
    /// other parts of it were accepted.
    void cancelPart(qint64 id);
    /// Lets every message that is in progress between two of its parts wait again.
    void releaseBetweenParts();
    /// Holds those messages as in progress of which parts were accepted.
    void holdPartlySent();
    /// Moves the message to its next attempt, in progress if parts of it were accepted.
    void postpone(qint64 id, int attempts, const QString &nextAttempt);
    /// Takes the message out of the queue and keeps its outcome.
    /// @param networkReference  of the last part, for a message that was sent
    /// @param at                the moment, "yyyy-MM-ddTHH:mm:ss"
    /// @return the outcome's id
    qint64 finish(qint64 id, qint32 code, std::optional<int> networkReference, const QString &at,
                  bool reported);
    /// Messages of which a part was about to leave when the engine ended.
    QList<StoredMessage> interrupted() const;
    /// The next of the references that tie the parts of a message together.
    quint16 nextReference();

    // The parts that leave, by the minute and the day of the wall clock. `at` is a moment,
    // "yyyy-MM-ddTHH:mm:ss".
    PartCounts partCounts(const QString &at) const;
    void countPart(const QString &at);
    /// Takes back countPart: the part did not leave.
    void uncountPart(const QString &at);

    // Failures that no console has heard yet.
    QList<Outcome> unreportedFailures() const;
    void markReported(const QList<qint64> &outcomes);

    /// Forgets the oldest of the outcomes before this moment, except those that no console has
    /// heard of.
    /// @param max  outcomes to forget in this step
    /// @return how many were forgotten
    int pruneOutcomes(const QString &before, int max);

    /// The last failure among the outcomes of late.
    std::optional<LastFailure> lastFailure() const;

    // Settings.
    DeviceSettings deviceSettings() const;
    void setDeviceSettings(const DeviceSettings &settings);
    bool isToRun() const;
    void setToRun(bool run);
    /// The IMEI of the device that was last in use with this connection parameter; empty if none
    /// was, or it didn't tell.
    QString deviceImei(const QString &parameter) const;
    void setDeviceImei(const QString &parameter, const QString &imei);
    /// When the device's functionality was last reset, "yyyy-MM-ddTHH:mm:ss"; empty if never.
    QString lastReset() const { return setting(u"last_reset"_s, QString()); }
    void setLastReset(const QString &at);

    /// Which batches of messages came last, as StoredBatches writes it.
    QString recentBatches() const { return setting(u"recent_batches"_s, QString()); }
    void setRecentBatches(const QString &batches);

    /// Writes something of no meaning, to find out whether the disk can be written.
    void probe();
    /// Lets the ids of messages to come begin here at least: no id of a store that was set aside
    /// is to come again while someone may remember it.
    void beginIdsAt(qint64 id);

    // PIN attempts.
    PinHistory pinHistory(const QString &simId, const QString &pin) const;
    void setPinHistory(const QString &simId, const QString &pin, PinHistory history,
                       const QString &at);

private:
    void openFile(const QString &name, const QString &options);
    void openForReading();
    void countRows();
    bool change(const QueueRow &row);
    /// The ids of the `count` messages that were queued last.
    QList<qint64> lastIds(qsizetype count) const;
    bool isOrWasInProgress(qint64 id) const;
    QString setting(const QString &name, const QString &absent) const;
    void writeSetting(const QString &name, const QString &value);
    /// One statement that writes, as an operation.
    /// @return how many rows it changed
    int write(const char *statement, const QVariantList &values);
    Transaction::Kind transactionKind() const
    {
        return m_together ? Transaction::Kind::Part : Transaction::Kind::Whole;
    }

    QString m_file;
    QString m_connection;
    QSqlDatabase m_database;
    mutable Statements m_statements;
    bool m_together = false;
    qint32 m_size = 0;
    Access m_access = Access::None;
    QueueJournal m_journal;
};

} // namespace norvane
