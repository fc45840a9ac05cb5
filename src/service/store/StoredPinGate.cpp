#include "service/store/StoredPinGate.h"

#include "service/store/Store.h"

#include <QDebug>

StoredPinGate::StoredPinGate(Store &store, std::function<QString()> now)
    : m_store(store), m_now(std::move(now))
{}

PinGate::Decision StoredPinGate::mayTry(const QString &simId, const QString &pin,
                                        std::optional<int> triesLeft)
{
    if (m_unrecorded.contains({simId, pin})) {
        refused(simId, pin);
        return Decision::AlreadyTried;
    }
    try {
        const PinHistory history = m_store.pinHistory(simId, pin);
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
    try {
        if (m_store.pinHistory(simId, pin) != PinHistory::Accepted)
            m_store.setPinHistory(simId, pin, PinHistory::Accepted, m_now());
    } catch (const StoreFailure &failure) {
        // The attempt stays on record as tried, which errs on the safe side.
        qWarning() << "an accepted PIN could not be recorded:" << failure.text();
    }
}

void StoredPinGate::refused(const QString &simId, const QString &pin)
{
    m_unrecorded.removeAll({simId, pin});
    try {
        m_store.setPinHistory(simId, pin, PinHistory::Refused, m_now());
    } catch (const StoreFailure &failure) {
        m_unrecorded.append({simId, pin});
        qWarning() << "a refused PIN could not be recorded:" << failure.text();
    }
}
