#include "TovekSMService/modem/device/ManagedUnlock.h"

#include "TovekSMService/modem/device/PinText.h"
#include "TovekSMService/modem/manager/ManagerFailures.h"
#include "TovekSMService/modem/manager/ManagerNames.h"
#include "contract/ErrorCodes.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

ManagedUnlock::ManagedUnlock(PinGate &gate, const ModemTimings &timings,
                             std::function<void()> looked, std::function<void()> resolved,
                             TimeSource &time)
    : m_gate(gate), m_timings(timings), m_looked(std::move(looked)),
      m_resolved(std::move(resolved)), m_deadline(time)
{}

void ManagedUnlock::start(const QString &pin)
{
    stop();
    m_pin = pin.trimmed();
    m_deadline.setRemainingTime(m_timings.simReadyMs);
}

void ManagedUnlock::stop()
{
    m_pin.clear();
    m_isAttempted = false;
    m_refusal.reset();
    m_isPermitted = false;
    m_isAsking = false;
}

ManagedUnlock::Outcome ManagedUnlock::advance(ManagerBus &bus, const ManagedDevice &device)
{
    using Manager::Lock;
    if (m_refusal) {
        if (std::exchange(m_isAttempted, false))
            m_gate.refused(m_sim, m_pin);
        return failed(*m_refusal);
    }
    if (m_isAttempted && device.imei() != m_sim.imei) {
        if (!m_deadline.hasExpired())
            return Step::Wait;
        return failed(ModemFailure{ErrorCode::portClosed, u"the device has gone"_s, false});
    }
    switch (device.lock()) {
    case Lock::Unknown:
        return Step::Wait;
    case Lock::None:
    case Lock::SimPin2:
    case Lock::SimPuk2: // what they guard isn't needed for messages
        if (std::exchange(m_isAttempted, false)) {
            m_gate.accepted(m_sim, m_pin);
            m_resolved();
        }
        return Step::Open;
    case Lock::SimPin:
        return onPinAsked(bus, device);
    case Lock::SimPuk:
        return refuse(ErrorCode::simPukRequired, u"the SIM asks for its PUK"_s);
    }
    return failed(ModemFailure{ErrorCode::phoneSecurity,
                               u"the device is locked by a code of its own"_s, true});
}

ManagedUnlock::Outcome ManagedUnlock::onPinAsked(ManagerBus &bus, const ManagedDevice &device)
{
    if (m_isAttempted && !m_deadline.hasExpired())
        return Step::Wait; // the manager may be slow to see that the PIN was right
    if (m_isAttempted)
        return refuse(ErrorCode::incorrectPassword, u"the SIM doesn't take the PIN"_s);
    if (m_pin.isEmpty())
        return failed(ModemFailure{ErrorCode::simPinRequired,
                                   u"the SIM asks for a PIN and none is set"_s, true});
    if (!isPin(m_pin))
        return failed(
            ModemFailure{ErrorCode::incorrectPassword, u"the PIN isn't 4 to 8 digits"_s, true});
    return decide(bus, device);
}

/// Which SIM it is must be certain: under another name a refused PIN would be tried again.
ManagedUnlock::Outcome ManagedUnlock::decide(ManagerBus &bus, const ManagedDevice &device)
{
    m_sim = {device.iccid(), device.imei()};
    const bool isSettled = device.state() == Manager::ModemState::Locked && device.hasSimFacts();
    if (!isSettled || m_sim.name().isEmpty()) {
        if (!m_deadline.hasExpired())
            return Step::Wait;
        return failed(ModemFailure{ErrorCode::simCommunication,
                                   u"neither the SIM nor the device tells its number"_s, false});
    }
    if (!m_isPermitted)
        return askPermission(bus, device.path());
    switch (m_gate.mayTry(m_sim, m_pin, device.pinTries())) {
    case PinGate::Decision::Try:
        tryPin(bus, device.simPath());
        return Step::Wait;
    case PinGate::Decision::AlreadyTried:
        return failed(ModemFailure{ErrorCode::incorrectPassword,
                                   u"this PIN was tried on this SIM before and not accepted"_s,
                                   true});
    case PinGate::Decision::TooFewTries:
        return failed(ModemFailure{ErrorCode::simPinRequired,
                                   u"the SIM has too few tries left to try a PIN on it"_s, true});
    case PinGate::Decision::NotRecorded:
        break;
    }
    return failed(ModemFailure{ErrorCode::simPinRequired,
                               u"the attempt can't be put on record, so the PIN isn't tried"_s,
                               false});
}

/// A PIN that the manager doesn't hand on for want of a right would stay on record as tried. The
/// same right is asked for by a call that a locked device only refuses.
ManagedUnlock::Outcome ManagedUnlock::askPermission(ManagerBus &bus, const QString &device)
{
    if (std::exchange(m_isAsking, true))
        return Step::Wait;
    bus.call(device, Manager::modem, u"Enable"_s, {true}, m_timings.slowCommandMs,
             [this](const QDBusMessage &reply) {
                 m_isAsking = false;
                 if (ManagerFailures::isDenied(reply))
                     m_refusal = ManagerFailures::ofDevice(reply);
                 else
                     m_isPermitted = true;
                 m_looked();
             });
    return Step::Wait;
}

void ManagedUnlock::tryPin(ManagerBus &bus, const QString &sim)
{
    m_isAttempted = true;
    m_deadline.setRemainingTime(m_timings.slowCommandMs + m_timings.simReadyMs);
    bus.call(sim, Manager::sim, u"SendPin"_s, {m_pin}, m_timings.slowCommandMs,
             [this](const QDBusMessage &reply) { onAnswered(reply); });
}

/// A reply that all is well proves nothing, nor does a call that got lost: the lock that the device
/// shows next tells what became of the PIN.
void ManagedUnlock::onAnswered(const QDBusMessage &reply)
{
    m_deadline.setRemainingTime(m_timings.simReadyMs);
    const ManagerFailures::Number number = ManagerFailures::numberOf(reply);
    constexpr int pukRequired = 12;
    constexpr int incorrectPassword = 16;
    if (number.space == FailureSpace::Cme && number.number == incorrectPassword)
        m_refusal = {ErrorCode::incorrectPassword, u"the SIM refuses the PIN"_s, true};
    else if (number.space == FailureSpace::Cme && number.number == pukRequired)
        m_refusal = {ErrorCode::simPukRequired, u"the SIM refuses the PIN and asks for its PUK"_s,
                     true};
    m_looked();
}

ManagedUnlock::Outcome ManagedUnlock::refuse(int code, const QString &text)
{
    if (std::exchange(m_isAttempted, false))
        m_gate.refused(m_sim, m_pin);
    return failed(ModemFailure{code, text, true});
}

} // namespace norvane
