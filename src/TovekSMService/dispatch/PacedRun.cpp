#include "TovekSMService/dispatch/PacedRun.h"

#include "TovekSMService/dispatch/DispatcherTimings.h"

#include <utility>

namespace norvane {

PacedRun::PacedRun(const DispatcherTimings &timings, TimeSource &time)
    : m_lateMs(timings.runLateMs), m_pace(timings.run), m_elapsed(time), m_committing(time),
      m_late(time)
{
    connect(&m_late, &Timer::timeout, this, [this] {
        forgetPace();
        Q_EMIT late();
    });
}

void PacedRun::start(const QList<LeavingMessage> &messages)
{
    if (m_committing.isValid())
        m_pace.recordCommit(m_committing.nsecsElapsed());
    m_committing.invalidate();
    m_run = SendingRun(messages);
    m_length = static_cast<int>(messages.size());
    if (m_length > 1)
        m_late.start(static_cast<int>(m_pace.stretched(m_lateMs)));
    m_elapsed.start();
}

void PacedRun::recordTaken(const SendingRun::Taken &taken)
{
    m_run.recordTaken(taken);
    if (!m_run.hasNext())
        m_pace.recordTaken(m_length, m_elapsed.nsecsElapsed());
}

SendingRun PacedRun::end()
{
    m_late.stop();
    m_committing.start();
    return std::exchange(m_run, {});
}

} // namespace norvane
