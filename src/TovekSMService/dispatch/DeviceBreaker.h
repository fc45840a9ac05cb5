#pragma once

#include "TovekSMService/dispatch/RetryPolicy.h"
#include "TovekSMService/dispatch/UnacknowledgedWarnings.h"
#include "TovekSMService/time/Timer.h"

#include <QObject>
#include <QSet>

namespace norvane {

class Outbox;
struct DispatcherTimings;
struct ModemFailure;

/// Decides what the device's failures in a row come to: how long it stays closed, whether a reset
/// may help, and what is warned of, once for each fault. At the limit the breaker opens.
class DeviceBreaker : public QObject
{
    Q_OBJECT

public:
    using Warning = UnacknowledgedWarnings::Warning;

    /// @param outbox, time  must outlive this object
    /// @param maxFailures   in a row, at which the breaker opens
    DeviceBreaker(Outbox &outbox, const RetryPolicy &retries, const DispatcherTimings &timings,
                  int maxFailures, TimeSource &time);

    bool isOpen() const { return m_failures >= m_maxFailures; }
    /// Whether the delay before the next opening of the device is over.
    bool allowsOpening() const { return !m_reopen.isActive(); }
    /// Whether a reset of the device's functionality may help.
    bool suggestsReset() const { return m_answeredFailures >= m_maxFailures && !m_needsOperator; }
    /// The fault that stands, as it was met last; of code 0 for none.
    const Warning &fault() const { return m_fault; }

    /// The device is open and answers. `steady` follows, unless it fails before.
    void noteReady();
    /// Puts off `steady`.
    void restartSteadyTimer() { m_steady.start(m_steadyMs); }
    /// @param needsOperator  whether the SIM waits for the operator, where no reset helps
    void noteSimState(bool needsOperator) { m_needsOperator = needsOperator; }
    /// The device can't be opened, or was lost.
    void noteLost(const ModemFailure &failure);
    /// The device didn't take a part.
    void noteRefusal(qint32 code, const QString &text);
    /// The device didn't say whether it took a part.
    void noteLostAnswer() { count(true); }
    /// Begins the delay before the next opening, and warns of the open breaker.
    void pause(qint32 code, const QString &text);
    /// Warns, whether that code was warned of in the present fault or not.
    void warn(qint32 code, const QString &text);
    /// The fault is over.
    void clear();

Q_SIGNALS:
    void openingAllowed();
    /// The device has been ready for long enough for its fault to be forgotten.
    void steady();

private:
    void count(bool answered);
    void delayOpening();
    void warnOfOpenBreaker(qint32 code, const QString &text);
    void warnOnce(qint32 code, const QString &text);

    Outbox &m_outbox;
    const RetryPolicy m_retries;
    const int m_maxFailures;
    const int m_steadyMs;

    int m_failures = 0;         ///< in a row
    int m_answeredFailures = 0; ///< of these, the ones behind an open line
    bool m_openWarned = false;
    bool m_needsOperator = false;
    Warning m_fault;
    QSet<qint32> m_warnedCodes; ///< of the present fault
    Timer m_reopen;
    Timer m_steady; ///< runs while the device is ready and its fault not yet forgotten
};

} // namespace norvane
