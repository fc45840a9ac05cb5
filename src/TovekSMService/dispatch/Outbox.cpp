#include "TovekSMService/dispatch/Outbox.h"

#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/KeptSettlements.h"
#include "TovekSMService/store/MessageQueue.h"
#include "TovekSMService/store/StoreDatabase.h"
#include "contract/ErrorCodes.h"

namespace norvane {

using namespace Qt::StringLiterals;

Outbox::Entry Outbox::Entry::then(const Entry &next) const
{
    const auto writeBoth = [write = write, other = next.write]() -> StoreResult<> {
        if (StoreResult<> written = write ? write() : StoreResult<>(); !written || !other)
            return written;
        return other();
    };
    const auto reportBoth = [report = report, other = next.report] {
        if (report)
            report();
        if (other)
            other();
    };
    return {writeBoth, reportBoth, settlements + next.settlements};
}

Outbox::Outbox(StoreDatabase &database, Outcomes &outcomes, const DispatcherTimings &timings,
               TimeSource &time, KeptSettlements *home)
    : m_database(database), m_home(home), m_retryMs(timings.storeRetryMs), m_retry(time),
      m_acknowledgedOutcomes(outcomes, timings.storeRetryMs, time),
      m_storeMonitor(home == nullptr ? QList{&database} : QList{&database, &home->database()},
                     timings, time)
{
    connect(&m_retry, &Timer::timeout, this, &Outbox::retry);
    connect(&m_storeMonitor, &StoreMonitor::warning, this,
            [this](const QString &text) { warn(ErrorCode::mapFile, text); });
}

void Outbox::commit(const Entry &entry, const FollowUp &next)
{
    m_pending = m_pending.value_or(Entry()).then(entry);
    flush(next);
}

void Outbox::flush(const FollowUp &next)
{
    const Entry entry = *m_pending;
    // What is kept at home would be settled once more behind a sudden end: nothing may begin before
    // it is gone from there.
    const bool mayFollow = m_keptAtHome == 0 && next.begin;
    const StoreResult<bool> isFollowed = m_database.together([&] {
        return entry.write().and_then(
            [&] { return mayFollow ? next.begin() : StoreResult<bool>(false); });
    });
    if (!isFollowed) {
        qCWarning(logDispatch) << "an outcome waits for the store:" << isFollowed.error().text();
        noteStoreFailure(isFollowed.error());
        keepAtHome(entry);
        m_retry.start(m_retryMs);
        return;
    }
    m_pending.reset();
    m_retry.stop();
    if (*isFollowed)
        next.start();
    entry.report();
    if (!*isFollowed)
        clearHome();
}

void Outbox::retry()
{
    if (m_pending)
        flush({});
    else
        clearHome();
}

void Outbox::commitKept(const Entry &entry)
{
    m_keptAtHome = entry.settlements.size();
    commit(entry, {});
}

void Outbox::keepAtHome(const Entry &entry)
{
    if (m_home == nullptr || entry.settlements.size() == m_keptAtHome)
        return;
    if (const StoreResult<> kept = m_home->keep(entry.settlements); !kept) {
        qCWarning(logDispatch) << "an outcome can't be kept at home:" << kept.error().text();
        noteStoreFailure(kept.error());
        return;
    }
    m_keptAtHome = entry.settlements.size();
}

/// Nothing of the outbox is pending any more when that is done.
void Outbox::clearHome()
{
    if (m_keptAtHome > 0) {
        if (const StoreResult<> cleared = m_home->clear(); !cleared) {
            qCWarning(logDispatch) << "what was kept at home stays:" << cleared.error().text();
            noteStoreFailure(cleared.error());
            m_retry.start(m_retryMs);
            return;
        }
        m_keptAtHome = 0;
    }
    Q_EMIT committed();
}

void Outbox::warn(qint32 code, const QString &text)
{
    qCWarning(logDispatch).noquote() << "warning" << code << text;
    Q_EMIT warned(code, text);
    const qint64 report = m_warnings.add({code, text});
    if (!m_hasListeners)
        return;
    Q_EMIT warning(code, text);
    if (report != 0)
        Q_EMIT reportRaised(report);
}

void Outbox::reportSent(const StoredMessage &message, int others)
{
    if (m_hasListeners)
        Q_EMIT sent(message.phone, message.text, others);
    Q_EMIT queueChanged();
}

void Outbox::reportFailed(const StoredMessage &message, qint64 outcome, qint32 code)
{
    if (m_hasListeners)
        Q_EMIT sendingFailed(message.phone, message.text, code);
    if (code == ErrorCode::noRespond) {
        const QString text = doubtOf(message.phone);
        qCWarning(logDispatch).noquote() << "warning" << code << text;
        Q_EMIT warned(code, text);
        if (m_hasListeners)
            Q_EMIT warning(code, text);
    }
    if (m_hasListeners)
        Q_EMIT reportRaised(outcome);
    Q_EMIT queueChanged();
}

QString Outbox::doubtOf(const QString &phone)
{
    return u"no answer for the message to %1; it may have been delivered"_s.arg(phone);
}

void Outbox::noteHandled(qint64 report)
{
    if (report > 0)
        m_acknowledgedOutcomes.add(report);
    else if (const std::optional<Warning> handled = m_warnings.remove(report))
        Q_EMIT warningHandled(handled->code, handled->text);
}

} // namespace norvane
