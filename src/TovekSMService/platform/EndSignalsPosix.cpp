#include "TovekSMService/platform/EndSignals.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace norvane {

namespace {

int g_pipe[2] = {-1, -1};

void noteSignal(int)
{
    const char byte = 0;
    // The result is of no use in a signal handler; a full pipe holds the request already.
    [[maybe_unused]] const auto written = ::write(g_pipe[1], &byte, 1);
}

} // namespace

EndSignals::EndSignals(QObject *parent) : QObject(parent)
{
    if (::pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(g_pipe[0], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &EndSignals::read);
    struct sigaction action = {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(number, &action, nullptr);
}

EndSignals::~EndSignals()
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(number, &action, nullptr);
    m_notifier.reset();
    for (int &end : g_pipe) {
        ::close(end);
        end = -1;
    }
}

void EndSignals::read()
{
    char bytes[16];
    while (::read(g_pipe[0], bytes, sizeof bytes) > 0) {
    }
    Q_EMIT endWanted();
}

} // namespace norvane
