#include "service/store/StoredPinGate.h"

#include "service/store/Store.h"

#include <QDebug>

namespace {

constexpr int retryMs = 1000;

/// Stands for the SIMs of a device that have told their number.
QString numberedSimsOf(const QString &imei)
{
    return QStringLiteral("numbered in ") + imei;
}

} // namespace

StoredPinGate::StoredPinGate(Store &store, std::function<QString()> now)
    : m_store(store), m_now(std::move(now))
{
    m_again.setSingleShot(true);
    QObject::connect(&m_again, &QTimer::timeout, &m_again, [this] { recordAccepted(); });
}

PinGate::Decision StoredPinGate::mayTry(const SimIdentity &sim, const QString &pin,
                                        std::optional<int> triesLeft)
{
    if (m_unrecorded.contains({sim, pin})) {
        refused(sim, pin);
        return Decision::AlreadyTried;
    }
    recordAccepted();
    try {
        const PinHistory known =
            m_acceptedUnrecorded.contains({sim, pin}) ? PinHistory::Accepted : history(sim, pin);
        const Decision decision = decidePinAttempt(known, triesLeft);
        if (decision == Decision::Try && known != PinHistory::Accepted)
            record(sim, pin, PinHistory::Tried);
        return decision;
    } catch (const StoreFailure &failure) {
        qWarning() << "a PIN attempt could not be recorded:" << failure.text();
        return Decision::NotRecorded;
    }
}

void StoredPinGate::accepted(const SimIdentity &sim, const QString &pin)
{
    m_acceptedUnrecorded.append({sim, pin});
    recordAccepted();
}

/// Until it is on record the attempt stands there as one whose end isn't known, and the right PIN
/// would not be used again.
void StoredPinGate::recordAccepted()
{
    try {
        while (!m_acceptedUnrecorded.isEmpty()) {
            const auto &[sim, pin] = m_acceptedUnrecorded.constFirst();
            if (m_store.pinHistory(sim.name(), pin) != PinHistory::Accepted)
                record(sim, pin, PinHistory::Accepted);
            m_acceptedUnrecorded.removeFirst();
        }
    } catch (const StoreFailure &failure) {
        qWarning() << "an accepted PIN waits for the store:" << failure.text();
        m_again.start(retryMs);
    }
}

void StoredPinGate::refused(const SimIdentity &sim, const QString &pin)
{
    m_acceptedUnrecorded.removeAll({sim, pin});
    m_unrecorded.removeAll({sim, pin});
    try {
        record(sim, pin, PinHistory::Refused);
    } catch (const StoreFailure &failure) {
        m_unrecorded.append({sim, pin});
        qWarning() << "a refused PIN could not be recorded:" << failure.text();
    }
}

PinHistory StoredPinGate::history(const SimIdentity &sim, const QString &pin) const
{
    const PinHistory own = m_store.pinHistory(sim.name(), pin);
    if (own != PinHistory::NeverTried || sim.imei.isEmpty())
        return own;
    const PinHistory other =
        m_store.pinHistory(sim.iccid.isEmpty() ? numberedSimsOf(sim.imei) : sim.imei, pin);
    // That one SIM of the device has taken the PIN says nothing about this one.
    return other == PinHistory::Accepted ? PinHistory::NeverTried : other;
}

/// The SIM's own record comes last: with that in place, the other one is.
void StoredPinGate::record(const SimIdentity &sim, const QString &pin, PinHistory history)
{
    if (!sim.iccid.isEmpty() && !sim.imei.isEmpty()) {
        const QString name = numberedSimsOf(sim.imei);
        if (m_store.pinHistory(name, pin) != PinHistory::Refused)
            m_store.setPinHistory(name, pin, history, m_now());
    }
    m_store.setPinHistory(sim.name(), pin, history, m_now());
}
