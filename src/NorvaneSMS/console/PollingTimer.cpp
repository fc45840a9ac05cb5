#include "NorvaneSMS/console/PollingTimer.h"

#include "foundation/CTimerMM.h"

#include <utility>

namespace norvane {

namespace {

constexpr qint32 poolingInterval = 10'000; // milliseconds
constexpr qint32 poolingResolution = 1;
constexpr qint32 periodicEvents = 1;

} // namespace

PollingTimer::PollingTimer(Tick tick) : m_tick(std::move(tick)) {}

PollingTimer::~PollingTimer() = default;

void PollingTimer::start()
{
    // A timer that is replaced while it runs stays registered and ticks on, unacknowledged.
    if (m_timer)
        m_timer->disconnect(this);
    m_timer = CTimerMM::create();
    connect(m_timer.get(), &CTimerMM::Timer, this, &PollingTimer::onTimer);
    m_timer->setEnabled(false);
    m_timer->setInterval(poolingInterval);
    m_timer->setResolution(poolingResolution);
    m_timer->setEventType(periodicEvents);
    m_timer->setEnabled(true);
}

void PollingTimer::stop()
{
    if (!m_timer)
        return;
    m_timer->setEnabled(false);
    m_timer->disconnect(this);
    m_timer.reset();
}

void PollingTimer::onTimer(qint32 lMilliseconds)
{
    try {
        m_tick(lMilliseconds);
    } catch (...) { // ends this tick and nothing else
    }
}

} // namespace norvane
