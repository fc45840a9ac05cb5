#pragma once

#include "TovekSMService/dispatch/DeviceBreaker.h"
#include "TovekSMService/dispatch/DeviceTests.h"
#include "TovekSMService/dispatch/ResetLimit.h"
#include "TovekSMService/modem/device/Modem.h"
#include "TovekSMService/time/Timer.h"
#include "contract/DeviceSettings.h"

#include <QObject>

#include <optional>

namespace norvane {

class Clock;
class Outbox;
class EngineSettingsStore;
struct DispatcherTimings;
struct EngineSettings;
struct RunState;

/// Decides how the device is brought up and kept: opened while the engine is started or a test is
/// asked for, opened again behind growing delays, reset, tested, closed.
class DeviceKeeper : public QObject
{
    Q_OBJECT

public:
    using Warning = DeviceBreaker::Warning;
    enum class Reopening { IfChanged, Always };

    /// @param settingsStore, modem, clock, outbox, state  must outlive this object
    DeviceKeeper(EngineSettingsStore &settingsStore, Modem &modem, const Clock &clock,
                 Outbox &outbox, const RunState &state, const RetryPolicy &retries,
                 const DispatcherTimings &timings, const EngineSettings &settings);

    /// Takes over from the store when the device was reset last.
    [[nodiscard]] StoreResult<> recallReset() { return m_resetLimit.recall(); }

    bool isInForce(const DeviceSettings &settings) const { return m_inForce == settings; }
    /// Puts the settings in force, and forgets the fault of the device: it is closed and opened
    /// anew by keep().
    void putInForce(const DeviceSettings &settings, Reopening reopening);
    /// Another store holds the settings now: the device is closed by keep(), and nothing is known
    /// of it.
    void forgetSettings();

    /// Asks the device when its turn comes. Gives 1 or the code of what stands in the way, within
    /// the time limit, and warns of the reason before that.
    void test(DeviceTests::Answer answer) { m_tests.add(std::move(answer)); }
    /// A device that has passed a test needn't wait open for a start.
    void releaseTested() { m_tests.releaseDevice(); }

    /// Does what has its turn with the device.
    /// @return whether that is messages
    bool keep();
    /// Whether no test, new settings or question to the device comes before messages.
    bool isFree() const;
    /// Whether the device may be closed: its word about a PIN would be lost, and the PIN stay on
    /// record as one that must not be tried again.
    bool mayClose() const { return !m_modem.awaitsPinOutcome(); }
    /// Closes the device for good.
    void shutDown();

    /// A part failed.
    /// @param ofDevice  whether the failure says that the device would take no message
    void noteFailed(const SendFailure &failure, bool ofDevice);
    /// Closes a device that takes no message, for a while.
    /// @return whether it has failed so often that the breaker is open
    bool giveUp(const SendFailure &failure);
    /// The device works: it took a part, or has been ready for long enough.
    void endFault() { m_breaker.clear(); }
    /// Puts off `steady`.
    void restartSteadyTimer() { m_breaker.restartSteadyTimer(); }

    const std::optional<DeviceDetails> &knownDevice() const { return m_knownDevice; }
    /// What was warned of and still stands; of code 0 for nothing.
    const Warning &fault() const { return m_breaker.fault(); }

Q_SIGNALS:
    void deviceInfo(const DeviceDetails &details);
    /// Something else may have its turn.
    void changed();
    /// The device has been ready for long enough for its fault to be forgotten.
    void steady();

private:
    bool use();
    bool mayOpen() const;
    void open();
    Modem::OpenMode openMode() const;
    QString knownImei() const;
    void close();
    void onReady(const DeviceDetails &details);
    void onFailed(const ModemFailure &failure);
    void onTested(bool ok, int code, const DeviceDetails &details, const QString &reason);
    void noteDetails(const DeviceDetails &details);
    void rememberDevice(const DeviceDetails &details);

    EngineSettingsStore &m_settings;
    Modem &m_modem;
    Outbox &m_outbox;
    const RunState &m_state;
    const int m_refreshMs;
    ResetLimit m_resetLimit;
    DeviceBreaker m_breaker;
    DeviceTests m_tests;
    std::optional<DeviceSettings> m_inForce; ///< as of the last start or applySettings()
    bool m_reopen = false;                   ///< with other settings
    QString m_parameter;                     ///< of the settings with which the device was opened
    std::optional<DeviceDetails> m_knownDevice;
    Timer m_refresh;
    bool m_refreshDue = false;
};

} // namespace norvane
