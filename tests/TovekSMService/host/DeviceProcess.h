#pragma once

#include "TovekSMService/host/EngineProcess.h"
#include "gsm-simulator/RunningSimulator.h"

#include <memory>

namespace norvane {

/// The engine's program with a simulated device, listened to.
class DeviceProcess : public EngineProcess
{
protected:
    /// Starts the engine and listens to it from its first event on.
    void startHeard();
    /// Ends it as a crash would, and starts it again.
    void restart();

    void plugIn(const QStringList &options = {});
    /// Sets device and PIN, and puts them in force.
    void use(const QString &device, const QString &pin = {});

    bool hears(const QString &event);
    qsizetype count(const QString &event) const;

    /// How many wrong PINs the SIM still takes, asked when the engine has let go of the device.
    int triesLeft();

    std::unique_ptr<RunningSimulator> m_device;
    std::unique_ptr<Listener> m_listener;
};

} // namespace norvane
