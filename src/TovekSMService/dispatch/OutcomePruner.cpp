#include "TovekSMService/dispatch/OutcomePruner.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/Outcomes.h"
#include "TovekSMService/time/Clock.h"

namespace norvane {

namespace {

constexpr qint64 secondsOfDay = 24 * 60 * 60;

} // namespace

OutcomePruner::OutcomePruner(Outcomes &outcomes, const Clock &clock, int keepDays, const Pace &pace)
    : m_outcomes(outcomes), m_clock(clock), m_keepSeconds(keepDays * secondsOfDay), m_pace(pace),
      m_timer(clock.time())
{
    connect(&m_timer, &Timer::timeout, this, &OutcomePruner::step);
    m_timer.start(m_pace.stepMs);
}

void OutcomePruner::step()
{
    const StoreResult<int> forgotten =
        m_outcomes.prune(m_clock.wallClockText(-m_keepSeconds), m_pace.outcomes);
    if (!forgotten)
        qCWarning(logDispatch).noquote()
            << "old outcomes stay for now:" << forgotten.error().text();
    m_timer.start(forgotten.value_or(0) < m_pace.outcomes ? m_pace.restMs : m_pace.stepMs);
}

} // namespace norvane
