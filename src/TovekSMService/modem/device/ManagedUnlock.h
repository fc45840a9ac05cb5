#pragma once

#include "TovekSMService/modem/at/ModemTimings.h"
#include "TovekSMService/modem/at/ModemTypes.h"
#include "TovekSMService/modem/device/PinGate.h"
#include "TovekSMService/modem/manager/ManagedObjects.h"
#include "TovekSMService/modem/manager/ManagerBus.h"
#include "TovekSMService/time/Deadline.h"

#include <functional>
#include <optional>

namespace norvane {

/// Unlocks the SIM of a device that the modem manager owns, with the PIN where it asks for one and
/// the gate allows it.
class ManagedUnlock
{
public:
    /// @param looked  called when the device is to be looked at again
    /// @param resolved  called when the SIM has taken a PIN
    ManagedUnlock(PinGate &gate, const ModemTimings &timings, std::function<void()> looked,
                  std::function<void()> resolved, TimeSource &time);

    void start(const QString &pin);
    /// Nothing is tried any more.
    void stop();

    /// A PIN has left, and what became of it isn't known yet.
    bool awaitsPinOutcome() const { return m_isAttempted && !m_deadline.hasExpired(); }

    enum class Step { Open, Wait };
    /// What the SIM's lock asks for, by what the device shows now; a PIN may leave in the course.
    Result<Step, ModemFailure> advance(ManagerBus &bus, const ManagedDevice &device);

private:
    using Outcome = Result<Step, ModemFailure>;

    Outcome onPinAsked(ManagerBus &bus, const ManagedDevice &device);
    Outcome askPermission(ManagerBus &bus, const QString &device);
    Outcome decide(ManagerBus &bus, const ManagedDevice &device);
    void tryPin(ManagerBus &bus, const QString &sim);
    void onAnswered(const QDBusMessage &reply);
    Outcome refuse(int code, const QString &text);

    PinGate &m_gate;
    const ModemTimings m_timings;
    const std::function<void()> m_looked;
    const std::function<void()> m_resolved;
    QString m_pin;
    SimIdentity m_sim; ///< on which the PIN is tried
    bool m_isAttempted = false;
    std::optional<ModemFailure> m_refusal; ///< the answer to the PIN, or to the wish to give one
    bool m_isPermitted = false;            ///< the account may unlock SIMs
    bool m_isAsking = false;               ///< for that
    Deadline m_deadline;
};

} // namespace norvane
