#include "TovekSMService/bus/StoreCalls.h"

#include "TovekSMService/dispatch/Dispatcher.h"
#include "TovekSMService/log/Categories.h"
#include "contract/ErrorCodes.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int retryInterval = 200; // ms between two attempts

} // namespace

StoreCalls::StoreCalls(const QDBusConnection &bus, Dispatcher &dispatcher, const Clock &clock)
    : m_bus(bus), m_dispatcher(dispatcher), m_clock(clock), m_retry(clock.time())
{
    QObject::connect(&m_retry, &Timer::timeout, &m_retry, [this] { retryAll(); });
}

void StoreCalls::carryOut(const QDBusMessage &call, const Step &step, const Refusal &refusal)
{
    const StoreResult<QVariantList> done = attempt(step);
    if (done) {
        if (call.isReplyRequired())
            m_bus.send(call.createReply(*done));
        return;
    }
    qCWarning(logBus) << "a call waits for the store:" << done.error().text();
    Deadline deadline(m_clock.time());
    deadline.setRemainingTime(retryTime);
    m_waiting.append({call, step, refusal, deadline});
    if (!m_retry.isActive())
        m_retry.start(retryInterval);
}

/// Whoever looks after the store hears of its failure.
StoreResult<QVariantList> StoreCalls::attempt(const Step &step)
{
    StoreResult<QVariantList> done = step();
    if (!done)
        m_dispatcher.noticeStoreFailure(done.error());
    return done;
}

/// Those that wait, in the order in which they came.
void StoreCalls::retryAll()
{
    for (const Waiting &waiting : std::exchange(m_waiting, {}))
        retry(waiting);
    if (!m_waiting.isEmpty())
        m_retry.start(retryInterval);
}

void StoreCalls::retry(const Waiting &waiting)
{
    const StoreResult<QVariantList> done = attempt(waiting.step);
    if (done)
        m_bus.send(waiting.call.createReply(*done));
    else if (waiting.deadline.hasExpired())
        m_bus.send(failureOf(waiting, done.error().text()));
    else
        m_waiting.append(waiting);
}

QDBusMessage StoreCalls::failureOf(const Waiting &waiting, const QString &reason)
{
    if (!waiting.refusal)
        return waiting.call.createErrorReply(u"com.tovek.SMService.Error.Store"_s, reason);
    // An answer alone may go unacknowledged.
    m_dispatcher.warn(ErrorCode::fail, reason);
    return waiting.call.createReply(*waiting.refusal);
}

} // namespace norvane
