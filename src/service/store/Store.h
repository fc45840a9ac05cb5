#pragma once

#include "engine/contract/DeviceSettings.h"
#include "engine/contract/QueueRecordSet.h"
#include "engine/contract/SMSList.h"
#include "service/modem/PinGate.h"
#include "service/store/StoreFailure.h"

#include <QByteArray>
#include <QSqlDatabase>

#include <optional>

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
};

/// What became of a message.
struct Outcome
{
    qint64 id = 0;
    QString phone;
    QString text;
    qint32 code = 0; ///< 1 sent, else the error code
};

/// Everything that the engine keeps: queue, device settings, whether it is to run, PIN attempts and
/// outcomes, in one SQLite file. Each operation is one transaction, and has reached the disk when
/// it returns. All of them throw StoreFailure, and then have changed nothing.
class Store
{
public:
    /// Opens the file, making it and its schema where there is none.
    explicit Store(const QString &file);
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;
    ~Store();

    // The queue, as consoles see it. What is being sent belongs to it.
    void add(const QList<SMSList::Entry> &entries, const QString &deliveryDate);
    qint32 size() const { return m_size; }
    QList<QueueRow> rows() const;
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
    /// The moment at which first() is due, empty for a message with an odd date.
    std::optional<QString> firstDue() const;
    /// Notes that a part is about to leave. `reference`, of a message of several parts, is kept for
    /// the others.
    void beginPart(qint64 id, std::optional<quint16> reference, const QByteArray &partHash);
    /// Notes that the part was accepted and others follow: the message stays in progress.
    void endPart(qint64 id, int partsSent);
    /// Takes back beginPart: the part did not leave, and the message waits again.
    void cancelPart(qint64 id);
    /// Lets every message that is in progress between two of its parts wait again.
    void releaseBetweenParts();
    /// Moves the message to its next attempt.
    void postpone(qint64 id, int attempts, const QString &nextAttempt);
    /// Takes the message out of the queue and keeps its outcome.
    /// @param networkReference  of the last part, for a message that was sent
    /// @param at                the moment, "yyyy-MM-ddTHH:mm:ss"
    void finish(qint64 id, qint32 code, std::optional<int> networkReference, const QString &at,
                bool reported);
    /// Messages of which a part was about to leave when the engine ended.
    QList<StoredMessage> interrupted() const;
    /// The next of the references that tie the parts of a message together.
    quint16 nextReference();

    // Failures that no console has heard yet.
    QList<Outcome> unreportedFailures() const;
    void markReported(const QList<qint64> &outcomes);

    // Settings.
    DeviceSettings deviceSettings() const;
    void setDeviceSettings(const DeviceSettings &settings);
    bool isToRun() const;
    void setToRun(bool run);

    // PIN attempts.
    PinHistory pinHistory(const QString &simId, const QString &pin) const;
    void setPinHistory(const QString &simId, const QString &pin, PinHistory history,
                       const QString &at);

private:
    void open(const QString &file);
    void countRows();
    bool change(const QueueRow &row);
    bool isOrWasInProgress(qint64 id) const;
    QString setting(const QString &name, const QString &absent) const;
    void writeSetting(const QString &name, const QString &value);

    QString m_connection;
    QSqlDatabase m_database;
    qint32 m_size = 0;
};
