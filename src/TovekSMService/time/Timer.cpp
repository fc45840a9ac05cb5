#include "TovekSMService/time/Timer.h"

namespace norvane {

Timer::Timer(TimeSource &time, Qt::TimerType type, QObject *parent)
    : QObject(parent), m_type(type), m_alarm(time.makeAlarm([this] { Q_EMIT timeout(); }))
{}

void Timer::start(int milliseconds)
{
    m_interval = milliseconds;
    m_alarm->set(milliseconds, m_type);
}

} // namespace norvane
