#pragma once

#include "NorvaneSMS/engine/SMSManagerProxy.h"
#include "gsm-simulator/RunningSimulator.h"
#include "support/WaitUntil.h"

#include <QDBusConnection>
#include <QStringList>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace norvane {

/// A real engine on the private bus of the test, with a simulated device. The engine is started by
/// the first proxy and ended with this object.
class EngineProcess : public ::testing::Test
{
protected:
    EngineProcess();
    ~EngineProcess() override;

    /// Starts a simulated device and stores where it is.
    void plugIn(const QStringList &simulatorOptions = {});
    /// Stores device and speed through the engine's own command line.
    static void storeDevice(const QString &parameter);

    std::unique_ptr<SMSManagerProxy> makeProxy();
    static std::unique_ptr<EngineLauncher> makeLauncher(const QDBusConnection &bus);

    /// The process that owns the engine's name, 0 if there is none.
    static qint64 enginePid();

    /// The engine processes that work in this test's folders.
    static QList<qint64> enginesOfThisTest();

    /// Ends the engine as a crash would, and waits until the bus has noticed. A killed process
    /// keeps its connection until the system has closed its files, which may wait for the disk.
    static void killEngine();

    static bool eventually(const std::function<bool()> &condition) { return waitUntil(condition); }

    std::unique_ptr<RunningSimulator> device;

private:
    std::unique_ptr<EngineLauncher> m_launcher;
};

} // namespace norvane
