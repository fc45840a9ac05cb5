#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/time/Stopwatch.h"
#include "TovekSMService/time/Timer.h"

#include <QList>
#include <QObject>
#include <QString>

namespace norvane {

struct DispatcherTimings;
class StoreDatabase;

/// Decides whether the store can be written: probes all of its databases from the first failure
/// until they succeed together. A failure that lasts is warned of once, and asks for the store to
/// be opened anew.
class StoreMonitor : public QObject
{
    Q_OBJECT

public:
    /// @param databases, time  must outlive this object
    StoreMonitor(const QList<StoreDatabase *> &databases, const DispatcherTimings &timings,
                 TimeSource &time);

    /// Whoever meets a failure of the store reports it here.
    void noteFailure(const StoreFailure &failure);
    /// What keeps the store from being written at present; empty for nothing.
    QString failure() const { return m_failure; }

    /// Warns of a store that can't be used. The fault stands until endFault().
    void warn(const QString &reason);
    void endFault() { m_fault.clear(); }
    /// What was warned of and still stands; empty for nothing.
    QString fault() const { return m_fault; }

Q_SIGNALS:
    void warning(const QString &text);
    /// The store has failed for some time, or is damaged.
    void lost(bool damaged);
    void writable();

private:
    void probe();
    StoreResult<> probe(StoreDatabase &database);
    void reportLasting(const StoreDatabase &database, const StoreFailure &failure);
    bool mayReportLoss() const;
    void reportLoss(bool damaged);

    const QList<StoreDatabase *> m_databases;
    const int m_retryMs;
    const int m_lastingMs; ///< after which a failure is warned of
    QString m_failure;
    QString m_fault;
    Stopwatch m_failingFor;
    Stopwatch m_lostFor; ///< since it was asked for to be opened anew
    Timer m_probe;
};

} // namespace norvane
