#pragma once

#include "TovekSMService/history/HistoryWorker.h"

#include <QObject>

#include <memory>

class QThread;

namespace norvane {

/// Answers questions about messages in a thread and with a connection of its own, one behind the
/// other, so that nothing else waits for them. Between two of them it fills the search index.
class HistoryThread : public QObject
{
    Q_OBJECT

public:
    using Pace = HistoryWorker::Pace;
    using Query = HistoryWorker::Query;
    /// Is called in the thread of this object.
    using Answer = HistoryWorker::Answer;
    using Cancelled = HistoryWorker::Cancelled;

    /// @param time  must outlive this object, and a thread that it left behind
    HistoryThread(const HistoryStorage &source, TimeSource &time, const Pace &pace,
                  QObject *parent = nullptr);
    /// Cancels what is being asked. Nobody is answered any more. A thread that waits for a server
    /// is left behind, and ends when the server answers or the connection is given up.
    ~HistoryThread() override;

    Cancelled ask(const Query &query, const Answer &answer);
    /// Closes the file, which is about to be replaced, and waits until it is closed. No question is
    /// answered until resume(). A connection to a server is left alone.
    void suspend();
    void resume();

private:
    const bool m_isOfFile;
    const std::shared_ptr<HistoryWorker> m_worker; ///< the thread's too
    std::unique_ptr<QThread> m_thread;
};

} // namespace norvane
