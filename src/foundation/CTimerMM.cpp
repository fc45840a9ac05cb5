#include "foundation/CTimerMM.h"

#include "common/FailureNumbers.h"

#include <limits>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

void checkInterval(qint32 interval, const QString &source)
{
    if (interval < 1)
        throw NumberedFailure(Failure::InvalidPropertyValue, source,
                              u"Interval property must be positive"_s);
}

void checkResolution(qint32 resolution, const QString &source)
{
    if (resolution < 0)
        throw NumberedFailure(Failure::InvalidPropertyValue, source,
                              u"Resolution property must be non-negative"_s);
}

qint32 difference(qint32 later, qint32 earlier)
{
    const qint64 exact = qint64{later} - earlier;
    if (exact < std::numeric_limits<qint32>::min() || exact > std::numeric_limits<qint32>::max())
        Failure::raise(Failure::Overflow, u"CTimerMM::RaiseTimerEvent"_s);
    return static_cast<qint32>(exact);
}

} // namespace

std::shared_ptr<CTimerMM> CTimerMM::create()
{
    return std::shared_ptr<CTimerMM>(new CTimerMM);
}

CTimerMM::~CTimerMM()
{
    if (m_timerId != 0)
        MTimerMM::StopTimer(m_timerId);
    if (m_window != 0)
        MTimerMM::fUnregister(m_window);
}

void CTimerMM::setEnabled(bool enabled)
{
    if (enabled == m_enabled)
        return;
    const QString source = u"CTimerMM::Enabled"_s;
    checkInterval(m_interval, source);
    checkResolution(m_resolution, source);
    m_enabled = enabled;
    if (enabled) {
        if (m_window == 0)
            m_window = MTimerMM::fRegister(shared_from_this());
        m_timerId = MTimerMM::StartTimer(m_interval, m_resolution, m_eventType, m_window);
        m_lastTick = MTimerMM::GetClockMs();
    } else {
        MTimerMM::StopTimer(std::exchange(m_timerId, 0));
        MTimerMM::fUnregister(std::exchange(m_window, 0));
    }
}

void CTimerMM::setInterval(qint32 milliseconds)
{
    checkInterval(milliseconds, u"CTimerMM::Interval"_s);
    m_interval = milliseconds;
}

void CTimerMM::setResolution(qint32 milliseconds)
{
    checkResolution(milliseconds, u"CTimerMM::Resolution"_s);
    m_resolution = milliseconds;
}

void CTimerMM::RaiseTimerEvent()
{
    m_thisTick = MTimerMM::GetClockMs();
    const qint32 passed = difference(m_thisTick, m_lastTick);
    Q_EMIT Timer(passed);
    m_lastTick = MTimerMM::GetClockMs();
}

} // namespace norvane
