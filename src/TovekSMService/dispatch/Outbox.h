#pragma once

#include "TovekSMService/dispatch/AcknowledgedOutcomes.h"
#include "TovekSMService/dispatch/StoreMonitor.h"
#include "TovekSMService/dispatch/UnacknowledgedWarnings.h"
#include "TovekSMService/store/Settlement.h"
#include "TovekSMService/time/Timer.h"

#include <QList>
#include <QObject>

#include <functional>
#include <optional>

namespace norvane {

struct DispatcherTimings;
class KeptSettlements;
class Outcomes;
class StoreDatabase;
struct StoredMessage;

/// Decides how an outcome reaches the store and the world: it is committed, and retried until it
/// is, and reported only then. Failures and warnings are kept until a console acknowledges them.
class Outbox : public QObject
{
    Q_OBJECT

public:
    using Warning = UnacknowledgedWarnings::Warning;

    /// What must be on disk before anything else begins, and what is reported when it is.
    struct Entry
    {
        std::function<StoreResult<>()> write; ///< may be empty
        std::function<void()> report;         ///< may be empty
        /// What `write` settles: while the queue's database can't be reached it is kept at home.
        QList<Settlement> settlements = {};

        /// This entry and the next one as one.
        Entry then(const Entry &next) const;
    };
    /// What begins in the same commit as an entry: both are on disk, or neither.
    struct FollowUp
    {
        /// Runs in the transaction. Gives whether something begins.
        std::function<StoreResult<bool>()> begin;
        std::function<void()> start; ///< runs behind the commit, before the reports
    };

    /// @param database, outcomes, time  must outlive this object
    /// @param home  where settlements are kept that can't be written; null for a queue that lies in
    ///              the engine's own file. Must outlive this object.
    Outbox(StoreDatabase &database, Outcomes &outcomes, const DispatcherTimings &timings,
           TimeSource &time, KeptSettlements *home = nullptr);

    /// Commits the entry behind what waits for the store already. Where the store fails, both are
    /// retried, and nothing follows in their commit.
    void commit(const Entry &entry, const FollowUp &next);
    /// Takes an entry whose settlements are kept at home already, as an earlier run of the program
    /// left them.
    void commitKept(const Entry &entry);
    /// Whether every outcome is on disk.
    bool isEmpty() const { return !m_pending && m_keptAtHome == 0; }
    /// Whether the program may end: what isn't written is kept at home.
    bool isSafe() const
    {
        return !m_pending || (m_home != nullptr && m_pending->settlements.size() == m_keptAtHome);
    }

    /// Whether someone listens to the events. Where nobody does, failures and warnings are kept and
    /// not raised.
    void setHasListeners(bool hasListeners) { m_hasListeners = hasListeners; }
    /// Raises a warning where someone listens, and keeps it until it is acknowledged.
    void warn(qint32 code, const QString &text);
    /// @param others  messages that are still in the queue
    void reportSent(const StoredMessage &message, int others);
    /// A failure that nobody acknowledges is kept for the next listener, with its warning.
    void reportFailed(const StoredMessage &message, qint64 outcome, qint32 code);
    void reportQueueChange() { Q_EMIT queueChanged(); }
    /// The words of the warning for a message that may have been delivered.
    static QString doubtOf(const QString &phone);

    /// The failure or the warning of that number has been handled: it is not reported again.
    void noteHandled(qint64 report);
    const AcknowledgedOutcomes &acknowledgedOutcomes() const { return m_acknowledgedOutcomes; }
    const UnacknowledgedWarnings &unacknowledgedWarnings() const { return m_warnings; }

    /// Whoever meets a failure of the store reports it here.
    void noteStoreFailure(const StoreFailure &failure) { m_storeMonitor.noteFailure(failure); }
    StoreMonitor &storeMonitor() { return m_storeMonitor; }
    const StoreMonitor &storeMonitor() const { return m_storeMonitor; }

Q_SIGNALS:
    void queueChanged();
    void sent(const QString &phone, const QString &text, int queueCount);
    void sendingFailed(const QString &phone, const QString &text, int code);
    void warning(int code, const QString &text);
    /// Follows sendingFailed, with the warning that may belong to it, and every other warning: the
    /// number that noteHandled() takes. That of a failure is its outcome's id.
    void reportRaised(qint64 report);
    void warningHandled(int code, const QString &text);
    /// Comes with every warning, whether someone listens or not.
    void warned(int code, const QString &text);
    /// An entry is on disk, and nothing followed in its commit.
    void committed();

private:
    void flush(const FollowUp &next);
    void retry();
    void keepAtHome(const Entry &entry);
    void clearHome();

    StoreDatabase &m_database;
    KeptSettlements *const m_home;
    const int m_retryMs;
    bool m_hasListeners = false;
    std::optional<Entry> m_pending; ///< not on disk yet
    /// Settlements that are, of m_pending or of what was written last.
    qsizetype m_keptAtHome = 0;
    Timer m_retry;
    UnacknowledgedWarnings m_warnings;
    AcknowledgedOutcomes m_acknowledgedOutcomes;
    StoreMonitor m_storeMonitor;
};

} // namespace norvane
