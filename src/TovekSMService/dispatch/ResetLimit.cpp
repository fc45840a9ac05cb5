#include "TovekSMService/dispatch/ResetLimit.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/EngineSettingsStore.h"
#include "TovekSMService/time/Clock.h"

namespace norvane {

namespace {

constexpr qint64 millisecondsOf(qint64 seconds)
{
    return seconds * 1000;
}

} // namespace

ResetLimit::ResetLimit(EngineSettingsStore &settings, const Clock &clock, int intervalSeconds)
    : m_settings(settings), m_clock(clock), m_interval(intervalSeconds), m_next(clock.time())
{}

void ResetLimit::noteReset()
{
    m_next.setRemainingTime(millisecondsOf(m_interval));
    if (const StoreResult<> noted = m_settings.setLastReset(m_clock.wallClockText()); !noted)
        qCWarning(logDispatch) << "the reset of the device could not be noted:"
                               << noted.error().text();
}

StoreResult<> ResetLimit::recall()
{
    return m_settings.lastReset().map([this](const QString &at) {
        const QDateTime last = momentOf(at);
        const qint64 passed = last.secsTo(m_clock.wallClock());
        if (last.isValid() && passed >= 0 && passed < m_interval)
            m_next.setRemainingTime(millisecondsOf(m_interval - passed));
    });
}

} // namespace norvane
