#include "TovekSMService/dispatch/OutcomePruner.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"

#include <algorithm>

namespace norvane {

OutcomePruner::OutcomePruner(Store &store, const Clock &clock, int keepDays, const Pace &pace)
    : m_store(store), m_clock(clock), m_keepSeconds(keepDays * secondsOfDay), m_pace(pace),
      m_timer(clock.time())
{
    connect(&m_timer, &Timer::timeout, this, &OutcomePruner::step);
    m_timer.start(m_pace.stepMs);
}

void OutcomePruner::step()
{
    const StoreResult<int> rows = forget(m_clock.wallClockText(-m_keepSeconds));
    if (!rows) {
        qCWarning(logDispatch).noquote() << "old outcomes stay for now:" << rows.error().text();
        m_timer.start(m_pace.againMs);
        return;
    }
    if (*rows > 0)
        Q_EMIT forgotten();
    m_timer.start(*rows < m_pace.rows ? m_pace.restMs : m_pace.stepMs);
}

/// Gives how much was forgotten of what there is most of.
StoreResult<int> OutcomePruner::forget(const QString &before)
{
    return m_store.database().together([&]() -> StoreResult<int> {
        if (const StoreResult<bool> isMine = m_store.database().mayDoChores(); !isMine || !*isMine)
            return isMine.map([](bool) { return 0; });
        if (const StoreResult<> pruned = m_store.queue().prune(m_pace.rows); !pruned)
            return failed(pruned.error());
        return m_store.outcomes().prune(before, m_pace.rows).and_then([&](int outcomes) {
            return m_store.sentParts().prune(before, m_pace.rows).and_then([&](int parts) {
                return m_store.queue()
                    .pruneAttempts(before, m_pace.rows)
                    .and_then([&](int attempts) {
                        return m_store.received().prune(before, m_pace.rows).map([&](int received) {
                            return std::max({outcomes, parts, attempts, received});
                        });
                    });
            });
        });
    });
}

} // namespace norvane
