#pragma once

#include "TovekSMService/modem/device/ManagedUnlock.h"

namespace norvane {

/// Brings a device that the modem manager has to readiness, step by step: its SIM is unlocked, the
/// device enabled, and its network waited for.
class ManagedStartup
{
public:
    /// @param looked, resolved  as for ManagedUnlock
    ManagedStartup(PinGate &gate, const ModemTimings &timings, std::function<void()> looked,
                   std::function<void()> resolved, TimeSource &time);

    void start(const QString &pin);
    void stop();
    /// The manager or the device has gone: calls to it are not answered any more.
    void noteLost() { m_isEnabling = false; }

    bool awaitsPinOutcome() const { return m_unlock.awaitsPinOutcome(); }

    enum class Readiness { Ready, Wait };
    /// Does what the device needs next, by what it shows now.
    Result<Readiness, ModemFailure> advance(ManagerBus &bus, const ManagedDevice &device);

private:
    using Outcome = Result<Readiness, ModemFailure>;

    Outcome onUnlocked(ManagerBus &bus, const ManagedDevice &device);
    void enable(ManagerBus &bus, const QString &device);

    const ModemTimings m_timings;
    const std::function<void()> m_looked;
    ManagedUnlock m_unlock;
    bool m_isEnabling = false;
    bool m_isEnabled = false;
    std::optional<ModemFailure> m_refusal; ///< to be enabled
    Deadline m_network;                    ///< by which the network is waited for
};

} // namespace norvane
