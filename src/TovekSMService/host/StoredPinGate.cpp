#include "TovekSMService/host/StoredPinGate.h"

#include "TovekSMService/host/PinRule.h"
#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/PinRecord.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int retryMs = 1000;

/// Stands for the SIMs of a device that have told their number.
QString numberedSimsOf(const QString &imei)
{
    return u"numbered in "_s + imei;
}

/// Whether the two may be one SIM: known by the same name, or in the same device, and only one of
/// them by its own number.
bool mayBeOne(const SimIdentity &sim, const SimIdentity &other)
{
    return sim.name() == other.name() || (sim.iccid.isEmpty() != other.iccid.isEmpty() &&
                                          !sim.imei.isEmpty() && sim.imei == other.imei);
}

} // namespace

StoredPinGate::StoredPinGate(PinRecord &pins, std::function<QString()> now, TimeSource &time)
    : m_pins(pins), m_now(std::move(now)), m_again(time)
{
    QObject::connect(&m_again, &Timer::timeout, &m_again, [this] { recordAccepted(); });
}

PinGate::Decision StoredPinGate::mayTry(const SimIdentity &sim, const QString &pin,
                                        std::optional<int> triesLeft)
{
    const auto concerns = [&](const Attempt &refusal) {
        return mayBeOne(refusal.sim, sim) && refusal.pin == pin;
    };
    if (std::ranges::any_of(m_refusedUnrecorded, concerns)) {
        recordRefused();
        return Decision::AlreadyTried;
    }
    recordAccepted();
    const StoreResult<Decision> decided =
        history(sim, pin).and_then([&](PinHistory known) -> StoreResult<Decision> {
            const Decision decision = decidePinAttempt(known, triesLeft);
            if (decision != Decision::Try || known == PinHistory::Accepted)
                return decision;
            return record({sim, pin}, PinHistory::Tried).map([decision] { return decision; });
        });
    if (!decided)
        qCWarning(logStore) << "a PIN attempt could not be recorded:" << decided.error().text();
    return decided.value_or(Decision::NotRecorded);
}

void StoredPinGate::accepted(const SimIdentity &sim, const QString &pin)
{
    m_acceptedUnrecorded.append({sim, pin});
    recordAccepted();
}

void StoredPinGate::refused(const SimIdentity &sim, const QString &pin)
{
    m_acceptedUnrecorded.removeIf([&](const Attempt &attempt) { return attempt.isOf(sim, pin); });
    m_refusedUnrecorded.append({sim, pin});
    recordRefused();
}

/// Until it is on record the attempt stands there as one whose end isn't known, and the right PIN
/// would not be used again.
void StoredPinGate::recordAccepted()
{
    while (!m_acceptedUnrecorded.isEmpty()) {
        const Attempt attempt = m_acceptedUnrecorded.constFirst();
        const StoreResult<> recorded =
            m_pins.history(attempt.sim.name(), attempt.pin).and_then([&](PinHistory known) {
                return known == PinHistory::Accepted ? StoreResult<>()
                                                     : record(attempt, PinHistory::Accepted);
            });
        if (!recorded) {
            qCWarning(logStore) << "an accepted PIN waits for the store:"
                                << recorded.error().text();
            m_again.start(retryMs);
            return;
        }
        m_acceptedUnrecorded.removeFirst();
    }
}

void StoredPinGate::recordRefused()
{
    while (!m_refusedUnrecorded.isEmpty()) {
        const StoreResult<> recorded =
            record(m_refusedUnrecorded.constFirst(), PinHistory::Refused);
        if (!recorded) {
            qCWarning(logStore) << "a refused PIN could not be recorded:"
                                << recorded.error().text();
            return;
        }
        m_refusedUnrecorded.removeFirst();
    }
}

StoreResult<PinHistory> StoredPinGate::history(const SimIdentity &sim, const QString &pin) const
{
    const bool taken = std::ranges::any_of(
        m_acceptedUnrecorded, [&](const Attempt &attempt) { return attempt.isOf(sim, pin); });
    const StoreResult<PinHistory> own =
        taken ? PinHistory::Accepted : m_pins.history(sim.name(), pin);
    if (!own || own == PinHistory::Tried || own == PinHistory::Refused || sim.imei.isEmpty())
        return own;
    return m_pins.history(sim.iccid.isEmpty() ? numberedSimsOf(sim.imei) : sim.imei, pin)
        .map([&](PinHistory other) {
            // Refused under the other name, an accepted one is so since: the PIN was changed.
            if (other == PinHistory::Refused || own == PinHistory::Accepted)
                return other == PinHistory::Refused ? other : *own;
            // That one SIM of the device has taken the PIN says nothing about this one.
            return other == PinHistory::Accepted ? PinHistory::NeverTried : other;
        });
}

/// The SIM's own record comes last: with that in place, the other one is.
StoreResult<> StoredPinGate::record(const Attempt &attempt, PinHistory history)
{
    const auto &[sim, pin] = attempt;
    const bool hasBoth = !sim.iccid.isEmpty() && !sim.imei.isEmpty();
    const StoreResult<> numbered = hasBoth ? recordNumbered(attempt, history) : StoreResult<>();
    return numbered.and_then(
        [&, this] { return m_pins.setHistory(attempt.sim.name(), attempt.pin, history, m_now()); });
}

/// All SIMs of the device share this one, so a refusal stays, and an attempt of another SIM whose
/// end isn't known becomes one: what this SIM says of the PIN says nothing about that.
StoreResult<> StoredPinGate::recordNumbered(const Attempt &attempt, PinHistory history)
{
    const QString name = numberedSimsOf(attempt.sim.imei);
    const StoreResult<PinHistory> known = m_pins.history(name, attempt.pin);
    if (!known)
        return failed(known.error());
    if (known == PinHistory::Refused)
        return {};
    const StoreResult<PinHistory> own = m_pins.history(attempt.sim.name(), attempt.pin);
    if (!own)
        return failed(own.error());
    const bool ofAnother = known == PinHistory::Tried && own == PinHistory::NeverTried;
    return m_pins.setHistory(name, attempt.pin, ofAnother ? PinHistory::Refused : history, m_now());
}

} // namespace norvane
