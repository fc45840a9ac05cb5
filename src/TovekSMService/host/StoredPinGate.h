#pragma once

#include "TovekSMService/modem/device/PinGate.h"
#include "TovekSMService/store/PinHistory.h"
#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/time/Timer.h"

#include <QList>

#include <functional>

namespace norvane {

class PinRecord;

/// The guard of the SIM over the store: an attempt is on disk before the PIN leaves, and is
/// remembered across restarts. A device may tell its SIM's number at one time and not at another:
/// a PIN that was tried without that number isn't tried on a SIM of that device that has one, nor
/// the other way round.
class StoredPinGate : public PinGate
{
public:
    /// @param pins, time  must outlive this object
    /// @param now          the wall clock, "yyyy-MM-ddTHH:mm:ss"
    StoredPinGate(PinRecord &pins, std::function<QString()> now,
                  TimeSource &time = TimeSource::system());

    Decision mayTry(const SimIdentity &sim, const QString &pin,
                    std::optional<int> triesLeft) override;
    void accepted(const SimIdentity &sim, const QString &pin) override;
    void refused(const SimIdentity &sim, const QString &pin) override;

private:
    struct Attempt
    {
        SimIdentity sim;
        QString pin;

        bool isOf(const SimIdentity &other, const QString &otherPin) const
        {
            return sim.name() == other.name() && pin == otherPin;
        }
    };

    StoreResult<PinHistory> history(const SimIdentity &sim, const QString &pin) const;
    StoreResult<> record(const Attempt &attempt, PinHistory history);
    StoreResult<> recordNumbered(const Attempt &attempt, PinHistory history);
    void recordAccepted();
    void recordRefused();

    PinRecord &m_pins;
    std::function<QString()> m_now;
    /// Acceptances that could not be recorded yet.
    QList<Attempt> m_acceptedUnrecorded;
    Timer m_again;
    /// Refusals that could not be recorded. An accepted PIN that was refused since must not be
    /// tried again although the record still says that it may.
    QList<Attempt> m_refusedUnrecorded;
};

} // namespace norvane
