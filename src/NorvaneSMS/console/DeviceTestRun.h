#pragma once

#include "contract/SMSManager.h"

namespace norvane {

/// A test of the device, for which a running engine is stopped. Events that arrived before an
/// answer of the engine are handled before the call returns, so that they keep their order.
class DeviceTestRun
{
public:
    /// @param engine outlives this object
    explicit DeviceTestRun(SMSManager &engine) : m_engine(engine) {}

    void stopEngine();
    /// Asks the device, which may take minutes. @return whether it answered
    bool test();
    /// Starts the engine again if it ran before.
    void restartEngine();

private:
    SMSManager &m_engine;
    bool m_wasRunning = false;
};

} // namespace norvane
