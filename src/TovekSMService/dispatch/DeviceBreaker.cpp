#include "TovekSMService/dispatch/DeviceBreaker.h"

#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "TovekSMService/dispatch/Outbox.h"
#include "TovekSMService/modem/at/ModemTypes.h"
#include "contract/ErrorCodes.h"

#include <utility>

namespace norvane {

namespace {

/// Whether the device can't be reached, of which one failure is enough to warn.
bool isOfThePort(qint32 code)
{
    return code <= ErrorCode::portNotFound && code >= ErrorCode::portRead;
}

} // namespace

DeviceBreaker::DeviceBreaker(Outbox &outbox, const RetryPolicy &retries,
                             const DispatcherTimings &timings, int maxFailures, TimeSource &time)
    : m_outbox(outbox), m_retries(retries), m_maxFailures(maxFailures),
      m_steadyMs(timings.steadyMs), m_reopen(time), m_steady(time)
{
    connect(&m_reopen, &Timer::timeout, this, &DeviceBreaker::openingAllowed);
    connect(&m_steady, &Timer::timeout, this, &DeviceBreaker::steady);
}

void DeviceBreaker::noteReady()
{
    m_needsOperator = false;
    m_reopen.stop();
    restartSteadyTimer();
    if (!m_openWarned) // the fault of a device that answers and takes no message still stands
        m_fault = {};
}

void DeviceBreaker::noteLost(const ModemFailure &failure)
{
    count(!isOfThePort(failure.code) && !failure.needsOperator);
    delayOpening();
    warnOnce(failure.code, failure.text);
}

void DeviceBreaker::noteRefusal(qint32 code, const QString &text)
{
    count(!isOfThePort(code));
    delayOpening();
    if (isOfThePort(code))
        warnOnce(code, text);
    else if (isOpen())
        warnOfOpenBreaker(code, text);
}

void DeviceBreaker::pause(qint32 code, const QString &text)
{
    delayOpening();
    warnOfOpenBreaker(code, text);
}

void DeviceBreaker::warn(qint32 code, const QString &text)
{
    m_warnedCodes.insert(code);
    m_outbox.warn(code, text);
}

void DeviceBreaker::clear()
{
    m_failures = 0;
    m_answeredFailures = 0;
    m_openWarned = false;
    m_needsOperator = false;
    m_fault = {};
    m_warnedCodes.clear();
    m_reopen.stop();
}

/// @param answered  whether the failure came from a device that was there: only that one may be
///                  helped by a reset, which an absent one or a wrong setting is not
void DeviceBreaker::count(bool answered)
{
    ++m_failures;
    if (answered)
        ++m_answeredFailures;
    m_steady.stop();
}

void DeviceBreaker::delayOpening()
{
    m_reopen.start(m_retries.reopenDelay(m_failures));
}

void DeviceBreaker::warnOfOpenBreaker(qint32 code, const QString &text)
{
    if (!std::exchange(m_openWarned, true))
        warnOnce(code, text);
}

/// Of one fault each code is warned of once, however often it is met again.
void DeviceBreaker::warnOnce(qint32 code, const QString &text)
{
    if (!m_warnedCodes.contains(code)) {
        m_fault = {code, text};
        warn(code, text);
    } else if (m_fault.code != code) {
        // Else it keeps the words in which it was warned of, so that nobody is told twice.
        m_fault = {code, text};
    }
}

} // namespace norvane
