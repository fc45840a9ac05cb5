#pragma once

#include "TovekSMService/history/HistoryConnection.h"

#include <QObject>
#include <QVariantList>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

class QThread;

namespace norvane {

class QueryLimit;

/// Answers questions about messages in a thread and with a connection of its own, one behind the
/// other, so that nothing else waits for them. Between two of them it fills the search index.
class HistoryThread : public QObject
{
    Q_OBJECT

public:
    struct Pace
    {
        int rows = 100;      ///< that are indexed at a time
        int stepMs = 100;    ///< between two steps while there is more to index
        int busyFactor = 10; ///< for so many times as long as a step took nothing else is indexed
        int restMs = 2000;   ///< until it looks again
    };
    using Query = std::function<StoreResult<QVariantList>(StoreDatabase &, const QueryLimit &)>;
    /// Is called in the thread of this object.
    using Answer = std::function<void(const StoreResult<QVariantList> &)>;
    /// Set by whoever doesn't want the answer any more, which is a failure then.
    using Cancelled = std::shared_ptr<std::atomic<bool>>;

    /// @param time  must outlive this object
    HistoryThread(const HistoryStorage &source, TimeSource &time, const Pace &pace,
                  QObject *parent = nullptr);
    /// Ends what is being asked. Nobody is answered any more.
    ~HistoryThread() override;

    Cancelled ask(const Query &query, const Answer &answer);
    /// Closes the connection, and waits for that: the file goes away. Until resume() what is asked
    /// waits.
    void suspend();
    void resume();

private:
    struct Job
    {
        Query query;
        Answer answer;
        Cancelled cancelled;
    };

    void run();
    bool waitForWork(std::unique_lock<std::mutex> &lock, int ms);
    StoreResult<QVariantList> carryOut(const Job &job);
    int index();

    const HistoryStorage m_source;
    TimeSource &m_time;
    const Pace m_pace;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Job> m_jobs;
    Cancelled m_current; ///< of the query that runs
    bool m_isSuspended = false;
    bool m_isClosed = true; ///< the connection
    bool m_isEnding = false;
    HistoryConnection m_connection; ///< the thread's alone
    std::unique_ptr<QThread> m_thread;
};

} // namespace norvane
