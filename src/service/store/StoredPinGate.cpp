#include "service/store/StoredPinGate.h"

#include "service/store/Store.h"

#include <QDebug>

namespace {

constexpr int retryMs = 1000;

} // namespace

StoredPinGate::StoredPinGate(Store &store, std::function<QString()> now)
    : m_store(store), m_now(std::move(now))
{
    m_again.setSingleShot(true);
    QObject::connect(&m_again, &QTimer::timeout, &m_again, [this] { recordAccepted(); });
}

PinGate::Decision StoredPinGate::mayTry(const QString &simId, const QString &pin,
                                        std::optional<int> triesLeft)
{
    if (m_unrecorded.contains({simId, pin})) {
        refused(simId, pin);
        return Decision::AlreadyTried;
    }
    recordAccepted();
    try {
        const PinHistory history = m_acceptedUnrecorded.contains({simId, pin})
                                       ? PinHistory::Accepted
                                       : m_store.pinHistory(simId, pin);
        const Decision decision = decidePinAttempt(history, triesLeft);
        if (decision == Decision::Try && history != PinHistory::Accepted)
            m_store.setPinHistory(simId, pin, PinHistory::Tried, m_now());
        return decision;
    } catch (const StoreFailure &failure) {
        qWarning() << "a PIN attempt could not be recorded:" << failure.text();
        return Decision::NotRecorded;
    }
}

void StoredPinGate::accepted(const QString &simId, const QString &pin)
{
    m_acceptedUnrecorded.append({simId, pin});
    recordAccepted();
}

/// Until it is on record the attempt stands there as one whose end isn't known, and the right PIN
/// would not be used again.
void StoredPinGate::recordAccepted()
{
    try {
        while (!m_acceptedUnrecorded.isEmpty()) {
            const auto &[simId, pin] = m_acceptedUnrecorded.constFirst();
            if (m_store.pinHistory(simId, pin) != PinHistory::Accepted)
                m_store.setPinHistory(simId, pin, PinHistory::Accepted, m_now());
            m_acceptedUnrecorded.removeFirst();
        }
    } catch (const StoreFailure &failure) {
        qWarning() << "an accepted PIN waits for the store:" << failure.text();
        m_again.start(retryMs);
    }
}

void StoredPinGate::refused(const QString &simId, const QString &pin)
{
    m_acceptedUnrecorded.removeAll({simId, pin});
    m_unrecorded.removeAll({simId, pin});
    try {
        m_store.setPinHistory(simId, pin, PinHistory::Refused, m_now());
    } catch (const StoreFailure &failure) {
        m_unrecorded.append({simId, pin});
        qWarning() << "a refused PIN could not be recorded:" << failure.text();
    }
}
