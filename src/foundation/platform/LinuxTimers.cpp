#include "foundation/platform/TimerPlatform.h"

#include <atomic>
#include <csignal>
#include <ctime>
#include <map>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace norvane {

namespace {

/// Keeps every signal of the process away from threads that are started meanwhile.
class SignalsHeldBack
{
public:
    SignalsHeldBack()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_previous);
    }
    SignalsHeldBack(const SignalsHeldBack &) = delete;
    SignalsHeldBack &operator=(const SignalsHeldBack &) = delete;
    ~SignalsHeldBack() { pthread_sigmask(SIG_SETMASK, &m_previous, nullptr); }

private:
    sigset_t m_previous{};
};

/// One timer and its thread. The thread waits, reads and calls back: it allocates nothing and takes
/// no lock.
class TimerThread
{
public:
    TimerThread(quint32 id, TimerProc callback, WindowHandle user)
        : m_id(id), m_callback(callback), m_user(user),
          m_timer(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)),
          m_end(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {}
    TimerThread(const TimerThread &) = delete;
    TimerThread &operator=(const TimerThread &) = delete;

    ~TimerThread()
    {
        if (m_thread.joinable()) {
            const quint64 one = 1;
            // An event counter takes the value 1 unless it is full, and this is its only one.
            [[maybe_unused]] const ssize_t written = ::write(m_end, &one, sizeof one);
            m_thread.join();
        }
        for (const int descriptor : {m_timer, m_end}) {
            if (descriptor >= 0)
                ::close(descriptor);
        }
    }

    /// @return false if the platform provides no timer or thread
    bool start(qint32 delay, bool periodic)
    {
        itimerspec times = {};
        times.it_value.tv_sec = delay / 1000;
        times.it_value.tv_nsec = delay % 1000 * 1'000'000L;
        if (periodic)
            times.it_interval = times.it_value;
        if (m_timer < 0 || m_end < 0 || ::timerfd_settime(m_timer, 0, &times, nullptr) != 0)
            return false;
        try {
            const SignalsHeldBack held;
            m_thread = std::thread([this] { run(); });
        } catch (const std::system_error &) {
            return false;
        }
        return true;
    }

private:
    void run() const noexcept
    {
        pollfd waiting[] = {{m_end, POLLIN, 0}, {m_timer, POLLIN, 0}};
        for (;;) {
            if (::poll(waiting, std::size(waiting), -1) < 0)
                continue;
            if (waiting[0].revents != 0)
                return;
            quint64 ticks = 0;
            if (::read(m_timer, &ticks, sizeof ticks) != ssize_t{sizeof ticks})
                continue;
            // A thread that could not run for a while makes up for the ticks that it missed.
            for (; ticks > 0; --ticks)
                m_callback(m_id, 0, static_cast<quintptr>(m_user), 0, 0);
        }
    }

    const quint32 m_id;
    const TimerProc m_callback;
    const WindowHandle m_user;
    const int m_timer;
    const int m_end;
    std::thread m_thread;
};

class LinuxTimers : public TimerPlatform
{
public:
    // The timers of this system are exact to far less than a millisecond whatever the period, and
    // whatever the resolution that a timer is content with.
    void beginPeriod(quint32 /*milliseconds*/) override {}
    void endPeriod(quint32 /*milliseconds*/) override {}

    quint32 setEvent(qint32 delay, qint32 /*resolution*/, TimerProc callback, WindowHandle user,
                     qint32 type) override
    {
        if (delay < 1)
            return 0;
        const quint32 id = ++m_lastId;
        auto timer = std::make_unique<TimerThread>(id, callback, user);
        if (!timer->start(delay, (type & Periodic) != 0))
            return 0;
        m_timers.emplace(id, std::move(timer));
        return id;
    }

    void killEvent(quint32 id) override { m_timers.erase(id); }

    qint32 clockMs() override
    {
        timespec now = {};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        const qint64 milliseconds = qint64{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
        return static_cast<qint32>(static_cast<quint32>(milliseconds));
    }

private:
    quint32 m_lastId = 0;
    std::map<quint32, std::unique_ptr<TimerThread>> m_timers;
};

TimerPlatform *g_installed = nullptr;

} // namespace

WindowHandle TimerPlatform::createWindow(int &error)
{
    return MessageWindows::create(error);
}

WindowProc TimerPlatform::windowProc(WindowHandle window)
{
    return MessageWindows::procedure(window);
}

void TimerPlatform::setWindowProc(WindowHandle window, WindowProc procedure)
{
    MessageWindows::setProcedure(window, procedure);
}

void TimerPlatform::postMessage(WindowHandle window, quint32 message, quint64 wParam, qint64 lParam)
{
    MessageWindows::post(window, message, wParam, lParam);
}

TimerPlatform &timerPlatform()
{
    // Never released, as a timer may end with the process itself.
    static LinuxTimers &own = *new LinuxTimers;
    return g_installed ? *g_installed : own;
}

TimerPlatform *installTimerPlatform(TimerPlatform *platform)
{
    return std::exchange(g_installed, platform);
}

} // namespace norvane
