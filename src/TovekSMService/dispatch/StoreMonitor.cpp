#include "TovekSMService/dispatch/StoreMonitor.h"

#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/StoreDatabase.h"

namespace norvane {

using namespace Qt::StringLiterals;

StoreMonitor::StoreMonitor(const QList<StoreDatabase *> &databases,
                           const DispatcherTimings &timings, TimeSource &time)
    : m_databases(databases), m_retryMs(timings.storeRetryMs), m_lastingMs(timings.storeFaultMs),
      m_failingFor(time), m_lostFor(time), m_probe(time)
{
    connect(&m_probe, &Timer::timeout, this, [this] { probe(); });
}

void StoreMonitor::noteFailure(const StoreFailure &failure)
{
    if (m_failure.isEmpty())
        m_failingFor.start();
    m_failure = failure.text();
    if (!m_probe.isActive())
        m_probe.start(m_retryMs);
    if (failure.kind() == StoreFailure::Kind::Corrupt && mayReportLoss())
        reportLoss(true);
}

bool StoreMonitor::mayReportLoss() const
{
    return !m_lostFor.isValid() || m_lostFor.hasExpired(m_lastingMs);
}

void StoreMonitor::reportLoss(bool damaged)
{
    m_lostFor.start();
    Q_EMIT lost(damaged);
}

/// Only a write shows whether the failure is over.
void StoreMonitor::probe()
{
    bool isWritable = true;
    for (StoreDatabase *const database : m_databases)
        isWritable = probe(*database) && isWritable;
    if (!isWritable) {
        m_probe.start(m_retryMs);
        return;
    }
    qCInfo(logDispatch) << "the store can be written again";
    m_failure.clear();
    endFault();
    m_lostFor.invalidate();
    Q_EMIT writable();
}

StoreResult<> StoreMonitor::probe(StoreDatabase &database)
{
    StoreResult<> written = database.probe();
    if (!written) {
        noteFailure(written.error());
        if (m_failingFor.hasExpired(m_lastingMs))
            reportLasting(database, written.error());
    }
    return written;
}

void StoreMonitor::reportLasting(const StoreDatabase &database, const StoreFailure &failure)
{
    const bool reopensItself = database.reopening() == StoreDatabase::Reopening::ByItself;
    if (database.access() != StoreDatabase::Access::Whole && !reopensItself)
        return;
    if (m_fault.isEmpty())
        warn(failure.text());
    // A file that was taken away and brought back is another one than that which is open.
    if (!reopensItself && failure.kind() != StoreFailure::Kind::Busy && mayReportLoss())
        reportLoss(false);
}

void StoreMonitor::warn(const QString &reason)
{
    m_fault = u"the store can't be used: "_s + reason;
    Q_EMIT warning(m_fault);
}

} // namespace norvane
