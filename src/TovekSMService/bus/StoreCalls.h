#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/time/Deadline.h"
#include "TovekSMService/time/Timer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QList>
#include <QVariantList>

#include <functional>
#include <optional>

namespace norvane {

class Clock;
class Dispatcher;

/// Calls over the bus that need the store: what it can't do at once is retried until the call's
/// time is over, and only then does the call fail.
class StoreCalls
{
public:
    static constexpr qint64 retryTime = 10'000; ///< ms for which a call's step is retried

    /// What a call does with the store; gives the call's output arguments.
    using Step = std::function<StoreResult<QVariantList>()>;
    /// The output arguments of a call that has failed for good; without them it fails as a call.
    using Refusal = std::optional<QVariantList>;

    /// @param dispatcher, clock  must outlive this object
    StoreCalls(const QDBusConnection &bus, Dispatcher &dispatcher, const Clock &clock);

    /// Runs the step of the call, and answers the call with what it gives.
    void carryOut(const QDBusMessage &call, const Step &step, const Refusal &refusal);

private:
    /// A call whose step waits for the store.
    struct Waiting
    {
        QDBusMessage call;
        Step step;
        Refusal refusal;
        Deadline deadline;
    };

    StoreResult<QVariantList> attempt(const Step &step);
    void retryAll();
    void retry(const Waiting &waiting);
    QDBusMessage failureOf(const Waiting &waiting, const QString &reason);

    QDBusConnection m_bus;
    Dispatcher &m_dispatcher;
    const Clock &m_clock;
    QList<Waiting> m_waiting;
    Timer m_retry; ///< runs while calls wait
};

} // namespace norvane
