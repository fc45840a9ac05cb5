#include "TovekSMService/bus/HistoryCalls.h"

#include "contract/BusTypes.h"

#include <QDBusError>

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString errorName(const StoreFailure &failure)
{
    return failure.kind() == StoreFailure::Kind::Busy ? QString::fromLatin1(Bus::busyError)
                                                      : u"com.tovek.SMService.Error.Store"_s;
}

} // namespace

HistoryCalls::HistoryCalls(const QDBusConnection &bus, const HistoryStorage &source,
                           TimeSource &time, const FailureHandler &onFailure,
                           const HistoryThread::Pace &pace)
    : m_bus(bus), m_onFailure(onFailure), m_thread(source, time, pace)
{}

void HistoryCalls::carryOut(const QDBusMessage &call, const QString &filter,
                            const HistoryThread::Query &query)
{
    if (!filter.isNull())
        supersede(call, filter);
    if (isTooMuch(call.service())) {
        m_bus.send(call.createErrorReply(QDBusError::LimitsExceeded,
                                         u"too many calls wait for their answers"_s));
        return;
    }
    const HistoryThread::Cancelled cancelled = m_thread.ask(
        query, [this](const StoreResult<QVariantList> &result) { answerFirst(result); });
    m_waiting.append({call, filter, cancelled});
}

bool HistoryCalls::isTooMuch(const QString &caller) const
{
    const auto ofCaller =
        std::count_if(m_waiting.cbegin(), m_waiting.cend(), [&caller](const Waiting &waiting) {
            return waiting.call.service() == caller;
        });
    return m_waiting.size() >= maxOfAll || ofCaller >= maxOfCaller;
}

void HistoryCalls::supersede(const QDBusMessage &call, const QString &filter)
{
    for (Waiting &waiting : m_waiting) {
        if (waiting.call.service() != call.service() || waiting.call.member() != call.member() ||
            waiting.filter.isNull() || waiting.filter == filter)
            continue;
        waiting.isSuperseded = true;
        waiting.cancelled->store(true);
    }
}

/// The thread answers in the order in which it was asked.
void HistoryCalls::answerFirst(const StoreResult<QVariantList> &result)
{
    const Waiting waiting = m_waiting.takeFirst();
    if (waiting.isSuperseded)
        m_bus.send(waiting.call.createErrorReply(QLatin1String(Bus::supersededError),
                                                 u"a later call looks for something else"_s));
    else if (result)
        m_bus.send(waiting.call.createReply(*result));
    else
        m_bus.send(waiting.call.createErrorReply(errorName(result.error()), result.error().text()));
    if (!result && !waiting.isSuperseded)
        m_onFailure(result.error());
}

} // namespace norvane
