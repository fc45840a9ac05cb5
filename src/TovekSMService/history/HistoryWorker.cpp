#include "TovekSMService/history/HistoryWorker.h"

#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/log/Categories.h"
#include "TovekSMService/time/Stopwatch.h"

#include <QObject>

#include <algorithm>
#include <chrono>
#include <utility>

namespace norvane {

HistoryWorker::HistoryWorker(const HistoryStorage &source, TimeSource &time, const Pace &pace,
                             QObject *receiver)
    : m_time(time), m_pace(pace), m_receiver(receiver), m_connection(source, time)
{}

HistoryWorker::Cancelled HistoryWorker::ask(const Query &query, const Answer &answer)
{
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.push_back({query, answer, cancelled});
    }
    m_changed.notify_all();
    return cancelled;
}

void HistoryWorker::suspend()
{
    std::unique_lock lock(m_mutex);
    m_isSuspended = true;
    if (m_current)
        m_current->store(true);
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_isClosed; });
}

void HistoryWorker::resume()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isSuspended = false;
    }
    m_changed.notify_all();
}

void HistoryWorker::end()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
        m_receiver = nullptr;
        m_jobs.clear();
        if (m_current)
            m_current->store(true);
    }
    m_changed.notify_all();
}

void HistoryWorker::run()
{
    std::unique_lock lock(m_mutex);
    int restMs = m_pace.restMs;
    while (!m_isEnding) {
        if (m_isSuspended) {
            m_connection.close();
            m_isClosed = true;
            m_changed.notify_all();
            m_changed.wait(lock);
            continue;
        }
        const bool isAsked = waitForWork(lock, restMs);
        if (m_isSuspended || m_isEnding)
            continue;
        m_isClosed = false;
        if (!isAsked) {
            lock.unlock();
            restMs = index();
            lock.lock();
            continue;
        }
        const Job job = std::move(m_jobs.front());
        m_jobs.pop_front();
        m_current = job.cancelled;
        lock.unlock();
        const StoreResult<QVariantList> result = carryOut(job);
        post(job, result);
        lock.lock();
        m_current.reset();
    }
    m_connection.close();
}

/// Gives whether something was asked, and not that the time is over.
bool HistoryWorker::waitForWork(std::unique_lock<std::mutex> &lock, int ms)
{
    m_changed.wait_for(lock, std::chrono::milliseconds(ms),
                       [this] { return !m_jobs.empty() || m_isSuspended || m_isEnding; });
    return !m_jobs.empty();
}

/// A connection that is found to be lost is made once more, while there is time.
StoreResult<QVariantList> HistoryWorker::carryOut(const Job &job)
{
    const QueryLimit limit(m_time, job.cancelled.get());
    const auto attempt = [&] {
        return limit.check()
            .and_then([this] { return m_connection.open(); })
            .and_then([&](StoreDatabase *database) { return job.query(*database, limit); });
    };
    StoreResult<QVariantList> result = attempt();
    // It may be the index alone that is damaged; what fails without it concerns the whole file.
    if (!result && result.error().kind() == StoreFailure::Kind::Corrupt &&
        m_connection.giveUpIndexes())
        result = attempt();
    const bool isSound = result || result.error().kind() == StoreFailure::Kind::Busy;
    if (isSound)
        return result;
    const bool isLost = m_connection.isOpen();
    m_connection.giveUp();
    return isLost && limit.check() ? attempt() : result;
}

/// The receiver may end at any time, but not while the lock is held.
void HistoryWorker::post(const Job &job, const StoreResult<QVariantList> &result)
{
    const std::lock_guard lock(m_mutex);
    if (m_receiver != nullptr)
        QMetaObject::invokeMethod(m_receiver, [answer = job.answer, result] { answer(result); });
}

/// Gives for how long the index is left alone then, in milliseconds.
int HistoryWorker::index()
{
    Stopwatch taken(m_time);
    taken.start();
    const StoreResult<int> rows = m_connection.index(m_pace.rows);
    if (!rows) {
        qCDebug(logStore) << "the search index waits:" << rows.error().text();
        if (rows.error().kind() == StoreFailure::Kind::Corrupt)
            m_connection.giveUpIndexes();
        if (rows.error().kind() != StoreFailure::Kind::Busy)
            m_connection.giveUp();
        return m_pace.restMs;
    }
    if (*rows < m_pace.rows)
        return m_pace.restMs;
    return std::max(m_pace.stepMs, static_cast<int>(taken.elapsed()) * m_pace.busyFactor);
}

} // namespace norvane
