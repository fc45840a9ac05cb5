#include "TovekSMService/dispatch/DeviceTests.h"

#include "TovekSMService/dispatch/DeviceBreaker.h"
#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "contract/ErrorCodes.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

DeviceTests::DeviceTests(DeviceBreaker &breaker, const DispatcherTimings &timings, TimeSource &time)
    : m_breaker(breaker), m_limitMs(timings.testAnswerMs), m_holdMs(timings.keepTestedMs),
      m_limit(time), m_hold(time)
{
    connect(&m_limit, &Timer::timeout, this, [this] {
        fail(ErrorCode::noRespond, u"the test took too long"_s);
        Q_EMIT ended();
    });
    connect(&m_hold, &Timer::timeout, this, &DeviceTests::ended);
}

void DeviceTests::add(Answer answer)
{
    m_pending.append(std::move(answer));
    if (!m_limit.isActive())
        m_limit.start(m_limitMs);
}

void DeviceTests::pass(const DeviceDetails &details)
{
    if (m_pending.isEmpty())
        return;
    m_tested = details;
    m_hold.start(m_holdMs);
    answer(ErrorCode::ok);
}

void DeviceTests::fail(qint32 code, const QString &reason)
{
    if (m_pending.isEmpty())
        return;
    m_hold.stop();
    m_breaker.warn(code, reason);
    answer(code);
}

bool DeviceTests::wasJustReported(const DeviceDetails &details) const
{
    return m_pending.isEmpty() && m_hold.isActive() && m_tested && m_tested->imei == details.imei &&
           m_tested->model == details.model && m_tested->simId == details.simId;
}

void DeviceTests::answer(qint32 result)
{
    m_limit.stop();
    for (const Answer &pending : std::exchange(m_pending, {}))
        pending(result);
}

} // namespace norvane
