#include "TovekSMService/modem/device/ManagedStartup.h"

#include "TovekSMService/modem/manager/ManagerFailures.h"
#include "TovekSMService/modem/manager/ManagerNames.h"
#include "contract/ErrorCodes.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

ModemFailure failureOf(Manager::FailedReason reason)
{
    switch (reason) {
    case Manager::FailedReason::SimMissing:
        return {ErrorCode::simNotInserted, u"no SIM is inserted"_s, false};
    case Manager::FailedReason::SimError:
        return {ErrorCode::simCommunication, u"the device rejects the SIM"_s, false};
    case Manager::FailedReason::None:
    case Manager::FailedReason::Unknown:
        break;
    }
    return {ErrorCode::phoneInit, u"the modem manager can't bring the device up"_s, false};
}

} // namespace

ManagedStartup::ManagedStartup(PinGate &gate, const ModemTimings &timings,
                               std::function<void()> looked, std::function<void()> resolved,
                               TimeSource &time)
    : m_timings(timings), m_looked(looked),
      m_unlock(gate, timings, std::move(looked), std::move(resolved), time), m_network(time)
{}

void ManagedStartup::start(const QString &pin)
{
    stop();
    m_unlock.start(pin);
}

void ManagedStartup::stop()
{
    m_unlock.stop();
    m_isEnabling = false;
    m_isEnabled = false;
    m_refusal.reset();
}

ManagedStartup::Outcome ManagedStartup::advance(ManagerBus &bus, const ManagedDevice &device)
{
    if (m_refusal)
        return failed(*m_refusal);
    if (device.state() == Manager::ModemState::Failed && !m_unlock.awaitsPinOutcome() &&
        device.lock() != Manager::Lock::SimPuk)
        return failed(failureOf(device.failedReason()));
    const auto step = m_unlock.advance(bus, device);
    if (!step)
        return failed(step.error());
    return *step == ManagedUnlock::Step::Open ? onUnlocked(bus, device) : Readiness::Wait;
}

ManagedStartup::Outcome ManagedStartup::onUnlocked(ManagerBus &bus, const ManagedDevice &device)
{
    using State = Manager::ModemState;
    if (device.state() == State::Disabled && !std::exchange(m_isEnabling, true))
        enable(bus, device.path());
    const bool isOn = device.isRegistered() || device.state() == State::Enabled ||
                      device.state() == State::Searching;
    if (!isOn)
        return Readiness::Wait;
    if (!std::exchange(m_isEnabled, true))
        m_network.setRemainingTime(m_timings.networkReadyMs);
    // Without a network it is ready all the same: what is sent then fails with its reason.
    if (!device.isRegistered() && !m_network.hasExpired())
        return Readiness::Wait;
    if (!device.canSend())
        return failed(
            ModemFailure{ErrorCode::notSupported, u"the device can't send messages"_s, false});
    return Readiness::Ready;
}

void ManagedStartup::enable(ManagerBus &bus, const QString &device)
{
    bus.call(device, Manager::modem, u"Enable"_s, {true}, m_timings.initialisationMs,
             [this](const QDBusMessage &reply) {
                 m_isEnabling = false;
                 if (reply.type() == QDBusMessage::ErrorMessage)
                     m_refusal = ManagerFailures::ofDevice(reply);
                 m_looked();
             });
}

} // namespace norvane
