#include "TovekSMService/platform/LeftThreads.h"

#include <QThread>

#include <atomic>

namespace norvane {

namespace {

std::atomic<int> g_running = 0;

} // namespace

void LeftThreads::endOrLeave(std::unique_ptr<QThread> thread, int ms)
{
    if (thread->wait(ms))
        return;
    ++g_running;
    QThread *const left = thread.release();
    QObject::connect(
        left, &QThread::finished, left, [] { --g_running; }, Qt::DirectConnection);
    QObject::connect(left, &QThread::finished, left, &QObject::deleteLater);
}

bool LeftThreads::areAny()
{
    return g_running > 0;
}

} // namespace norvane
