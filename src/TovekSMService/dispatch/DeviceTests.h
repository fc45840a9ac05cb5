#pragma once

#include "TovekSMService/modem/at/ModemTypes.h"
#include "TovekSMService/time/Timer.h"

#include <QList>
#include <QObject>

#include <functional>
#include <optional>

namespace norvane {

class DeviceBreaker;
struct DispatcherTimings;

/// Decides what the tests of the device that were asked for are answered, and when at the latest;
/// and for how long a device that has passed one is kept open for the start behind it.
class DeviceTests : public QObject
{
    Q_OBJECT

public:
    /// Takes 1, or the code of what stands in the way.
    using Answer = std::function<void(qint32)>;

    /// @param breaker, time  must outlive this object
    DeviceTests(DeviceBreaker &breaker, const DispatcherTimings &timings, TimeSource &time);

    void add(Answer answer);
    bool arePending() const { return !m_pending.isEmpty(); }
    void pass(const DeviceDetails &details);
    /// Warns of the reason before the answer, so that whoever asked has it when the call returns.
    void fail(qint32 code, const QString &reason);

    /// Whether the device has passed a test a moment ago, and stays open.
    bool isDeviceHeld() const { return m_hold.isActive(); }
    void releaseDevice() { m_hold.stop(); }
    /// Whether this device was reported to a test a moment ago: raised again, its details would
    /// wipe the test's result off the console.
    bool wasJustReported(const DeviceDetails &details) const;

Q_SIGNALS:
    /// Nobody waits for the device any more, or holds it.
    void ended();

private:
    void answer(qint32 result);

    DeviceBreaker &m_breaker;
    const int m_limitMs;
    const int m_holdMs;
    QList<Answer> m_pending;
    Timer m_limit;
    std::optional<DeviceDetails> m_tested; ///< that passed the last test
    Timer m_hold;
};

} // namespace norvane
