#pragma once

#include "service/modem/PinGate.h"

#include <QList>
#include <QPair>
#include <QTimer>

#include <functional>

class Store;

/// The guard of the SIM over the store: an attempt is on disk before the PIN leaves, and is
/// remembered across restarts.
class StoredPinGate : public PinGate
{
public:
    /// @param store  must outlive this object
    /// @param now    the wall clock, "yyyy-MM-ddTHH:mm:ss"
    StoredPinGate(Store &store, std::function<QString()> now);

    Decision mayTry(const QString &simId, const QString &pin,
                    std::optional<int> triesLeft) override;
    void accepted(const QString &simId, const QString &pin) override;
    void refused(const QString &simId, const QString &pin) override;

private:
    void recordAccepted();

    Store &m_store;
    std::function<QString()> m_now;
    /// SIM and PIN of acceptances that could not be recorded yet.
    QList<QPair<QString, QString>> m_acceptedUnrecorded;
    QTimer m_again;
    /// SIM and PIN of refusals that could not be recorded. An accepted PIN that was refused since
    /// must not be tried again although the record still says that it may.
    QList<QPair<QString, QString>> m_unrecorded;
};
