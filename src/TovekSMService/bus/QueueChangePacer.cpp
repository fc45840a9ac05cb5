#include "TovekSMService/bus/QueueChangePacer.h"

namespace norvane {

QueueChangePacer::QueueChangePacer(TimeSource &time, QObject *parent)
    : QObject(parent), m_sinceReport(time), m_again(time)
{
    connect(&m_again, &Timer::timeout, this, &QueueChangePacer::consider);
}

void QueueChangePacer::listenerCame(const QString &listener)
{
    m_listeners.insert(listener);
}

void QueueChangePacer::listenerLeft(const QString &listener)
{
    m_listeners.remove(listener);
    m_fetching.remove(listener);
    consider();
}

void QueueChangePacer::listenerFetched(const QString &listener)
{
    if (m_fetching.remove(listener))
        consider();
}

void QueueChangePacer::queueChanged()
{
    m_pending = true;
    consider();
}

void QueueChangePacer::consider()
{
    if (!m_pending)
        return;
    if (m_sinceReport.isValid()) {
        const qint64 passed = m_sinceReport.elapsed();
        const qint64 due = m_fetching.isEmpty() ? minInterval : maxWait;
        if (passed < due) {
            m_again.start(static_cast<int>(due - passed));
            return;
        }
    }
    m_again.stop();
    m_pending = false;
    m_fetching = m_listeners;
    m_sinceReport.start();
    Q_EMIT report();
}

} // namespace norvane
