#pragma once

#include "TovekSMService/history/HistoryConnection.h"

#include <QVariantList>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

class QObject;

namespace norvane {

class QueryLimit;

/// The work of the thread of the history: it answers questions in their order, and fills the search
/// index between two of them. All functions but run() may be called from any thread.
class HistoryWorker
{
public:
    struct Pace
    {
        int rows = 100;      ///< that are indexed at a time
        int stepMs = 100;    ///< between two steps while there is more to index
        int busyFactor = 10; ///< for so many times as long as a step took nothing else is indexed
        int restMs = 2000;   ///< until it looks again
    };
    using Query = std::function<StoreResult<QVariantList>(StoreDatabase &, const QueryLimit &)>;
    /// Is called in the thread of the receiver.
    using Answer = std::function<void(const StoreResult<QVariantList> &)>;
    /// Set it to cancel a question, whose answer is a failure then.
    using Cancelled = std::shared_ptr<std::atomic<bool>>;

    /// @param time      must outlive this object
    /// @param receiver  of the answers, until end()
    HistoryWorker(const HistoryStorage &source, TimeSource &time, const Pace &pace,
                  QObject *receiver);

    /// Works until end(), in the thread that calls it.
    void run();

    Cancelled ask(const Query &query, const Answer &answer);
    /// Closes the connection and waits until it is closed. No question is answered until resume().
    void suspend();
    void resume();
    /// Cancels what is being asked. Nobody is answered any more.
    void end();

private:
    struct Job
    {
        Query query;
        Answer answer;
        Cancelled cancelled;
    };

    bool waitForWork(std::unique_lock<std::mutex> &lock, int ms);
    StoreResult<QVariantList> carryOut(const Job &job);
    void post(const Job &job, const StoreResult<QVariantList> &result);
    int index();

    TimeSource &m_time;
    const Pace m_pace;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    QObject *m_receiver;
    std::deque<Job> m_jobs;
    Cancelled m_current; ///< of the query that runs
    bool m_isSuspended = false;
    bool m_isClosed = true; ///< the connection
    bool m_isEnding = false;
    HistoryConnection m_connection; ///< of the thread in run() alone
};

} // namespace norvane
