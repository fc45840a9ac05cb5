#include "TovekSMService/history/HistoryThread.h"

#include "TovekSMService/platform/LeftThreads.h"

#include <QThread>

#include <utility>

namespace norvane {

namespace {

constexpr int serverEndMs = 100; ///< for which the end of a question to a server is waited for

} // namespace

HistoryThread::HistoryThread(const HistoryStorage &source, TimeSource &time, const Pace &pace,
                             QObject *parent)
    : QObject(parent), m_isOfFile(source.isFile()),
      m_worker(std::make_shared<HistoryWorker>(source, time, pace, this)),
      m_thread(QThread::create([worker = m_worker] { worker->run(); }))
{
    m_thread->start();
}

HistoryThread::~HistoryThread()
{
    m_worker->end();
    if (m_isOfFile) { // it answers within a moment, and is closed when this returns
        m_thread->wait();
        return;
    }
    LeftThreads::endOrLeave(std::move(m_thread), serverEndMs);
}

HistoryThread::Cancelled HistoryThread::ask(const Query &query, const Answer &answer)
{
    return m_worker->ask(query, answer);
}

void HistoryThread::suspend()
{
    if (m_isOfFile)
        m_worker->suspend();
}

void HistoryThread::resume()
{
    if (m_isOfFile)
        m_worker->resume();
}

} // namespace norvane
