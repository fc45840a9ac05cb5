#pragma once

#include "gsm-simulator/RunningSimulator.h"
#include "harness/EngineConsole.h"
#include "harness/Sandbox.h"
#include "support/PostgresProxy.h"

#include <memory>

namespace norvane {

/// An engine that shares its queue with others: with a device, a session bus and a way to the
/// database of its own.
class SharingEngine
{
public:
    /// Whether a console is open all the time.
    enum class Console { None, Open };

    /// @param deviceOptions  of the simulated device, beside the usual ones
    SharingEngine(QString name, const QString &serverSocket, Console console,
                  const QStringList &deviceOptions);

    Sandbox sandbox;
    PostgresProxy proxy;

    const QString &name() const { return m_name; }
    const RunningSimulator &device() const { return m_device; }

    /// Stores its settings, and starts it.
    /// @param login  for libpq: database and user
    bool begin(const QString &login);
    /// Starts it again. Its console asks for what it has missed.
    bool start();
    /// Ends its connections, and refuses others.
    void cutOff();
    void freeze();
    void thaw();
    bool isFrozen() const { return m_isFrozen; }
    void setTrap(const PostgresTrap &trap);
    /// Whether its trap has acted, and holds everything since.
    bool isHeldByTrap() const { return m_trapHolds && proxy.hasTrapActed(); }

    bool hasConsole() const { return m_console != nullptr; }
    /// Opens a console, if there is none.
    const EngineConsole &console();

private:
    static constexpr int networkMs = 10;       ///< that the network takes for a part
    static constexpr int startLimit = 120'000; // ms; what only a hang takes

    const QString m_name;
    RunningSimulator m_device;
    std::unique_ptr<EngineConsole> m_console;
    bool m_isFrozen = false;
    bool m_trapHolds = false;
};

} // namespace norvane
