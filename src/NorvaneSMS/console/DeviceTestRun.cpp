#include "NorvaneSMS/console/DeviceTestRun.h"

namespace norvane {

void DeviceTestRun::stopEngine()
{
    m_wasRunning = m_engine.GetEngineStatus() == SMSManager::running;
    m_engine.DeliverPendingEvents();
    if (m_wasRunning) {
        m_engine.StopEngine();
        m_engine.DeliverPendingEvents();
    }
}

bool DeviceTestRun::test()
{
    const qint32 result = m_engine.TestDevice();
    m_engine.DeliverPendingEvents();
    return result == SMSManager::deviceAnswered;
}

void DeviceTestRun::restartEngine()
{
    if (m_wasRunning) {
        m_engine.StartEngine();
        m_engine.DeliverPendingEvents();
    }
}

} // namespace norvane
