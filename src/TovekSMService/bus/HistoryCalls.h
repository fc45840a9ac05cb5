#pragma once

#include "TovekSMService/history/HistoryThread.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QList>
#include <QString>

#include <functional>

namespace norvane {

/// Calls over the bus that are answered by the thread of the history, in their order. A caller who
/// asks the same for something else doesn't wait for the earlier answer any more.
class HistoryCalls
{
public:
    static constexpr qsizetype maxOfCaller = 16;
    static constexpr qsizetype maxOfAll = 64;

    /// Is told of failures of the store.
    using FailureHandler = std::function<void(const StoreFailure &)>;

    /// @param time  must outlive this object
    HistoryCalls(const QDBusConnection &bus, const HistoryStorage &source, TimeSource &time,
                 const FailureHandler &onFailure, const HistoryThread::Pace &pace = {});

    /// Answers the call with what the query gives.
    /// @param filter  what the call looks for: it supersedes calls of the same caller and member
    ///                that look for something else. Null for one that supersedes none.
    void carryOut(const QDBusMessage &call, const QString &filter,
                  const HistoryThread::Query &query);

    /// While the file goes away.
    void suspend() { m_thread.suspend(); }
    void resume() { m_thread.resume(); }

private:
    struct Waiting
    {
        QDBusMessage call;
        QString filter;
        HistoryThread::Cancelled cancelled;
        bool isSuperseded = false;
    };

    bool isTooMuch(const QString &caller) const;
    void supersede(const QDBusMessage &call, const QString &filter);
    void answerFirst(const StoreResult<QVariantList> &result);

    QDBusConnection m_bus;
    const FailureHandler m_onFailure;
    QList<Waiting> m_waiting; ///< in the order of the calls
    HistoryThread m_thread;
};

} // namespace norvane
