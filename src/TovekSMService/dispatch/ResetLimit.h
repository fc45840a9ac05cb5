#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/time/Deadline.h"

namespace norvane {

class Clock;
class EngineSettingsStore;

/// Decides whether the last reset of the device's functionality is long enough ago for another one.
/// The store keeps when that was: an engine that is started again and again resets the device no
/// more often than one that runs.
class ResetLimit
{
public:
    /// @param settings, clock     must outlive this object
    /// @param intervalSeconds  between two resets at least
    ResetLimit(EngineSettingsStore &settings, const Clock &clock, int intervalSeconds);

    bool allowsReset() const { return m_next.hasExpired(); }
    /// The device was reset now.
    void noteReset();
    /// Takes over from the store when the last reset was.
    [[nodiscard]] StoreResult<> recall();

private:
    EngineSettingsStore &m_settings;
    const Clock &m_clock;
    const int m_interval; ///< s
    Deadline m_next;
};

} // namespace norvane
