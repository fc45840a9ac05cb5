#include "TovekSMService/bus/HistoryChangePacer.h"

namespace norvane {

HistoryChangePacer::HistoryChangePacer(TimeSource &time, QObject *parent)
    : QObject(parent), m_sinceReport(time), m_again(time)
{
    connect(&m_again, &Timer::timeout, this, &HistoryChangePacer::consider);
}

void HistoryChangePacer::historyChanged()
{
    m_pending = true;
    consider();
}

void HistoryChangePacer::consider()
{
    if (!m_pending)
        return;
    const qint64 passed = m_sinceReport.isValid() ? m_sinceReport.elapsed() : minInterval;
    if (passed < minInterval) {
        if (!m_again.isActive())
            m_again.start(static_cast<int>(minInterval - passed));
        return;
    }
    m_again.stop();
    m_pending = false;
    m_sinceReport.start();
    Q_EMIT report();
}

} // namespace norvane
