#include "foundation/CTimerMM.h"
#include "support/RecordingMessageBoxes.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>

#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

bool eventually(const std::function<bool()> &condition)
{
    return waitUntil(condition);
}

std::shared_ptr<CTimerMM> makeTimer(qint32 interval, TimerPlatform::EventType type)
{
    auto timer = CTimerMM::create();
    timer->setInterval(interval);
    timer->setEventType(type);
    return timer;
}

/// Of this program's timers, sorted: "(seconds, nanoseconds)"; zero for one that doesn't repeat.
QStringList intervalsOfSystem()
{
    QStringList intervals;
    for (const QString &descriptor : QDir(u"/proc/self/fdinfo"_s).entryList(QDir::Files)) {
        QFile info(u"/proc/self/fdinfo/"_s + descriptor);
        if (!info.open(QIODevice::ReadOnly))
            continue;
        const QString text = QString::fromLatin1(info.readAll());
        static const QRegularExpression interval(u"it_interval: (\\(.*\\))"_s);
        if (const auto match = interval.match(text); match.hasMatch())
            intervals.append(match.captured(1));
    }
    intervals.sort();
    return intervals;
}

/// Counts a timer's events while it is in scope, and runs it meanwhile.
class Counted
{
public:
    explicit Counted(std::shared_ptr<CTimerMM> timer) : m_timer(std::move(timer))
    {
        QObject::connect(m_timer.get(), &CTimerMM::Timer, m_timer.get(), [this] {
            ++events;
            onInterfaceThread &= QThread::currentThread() == qApp->thread();
        });
        m_timer->setEnabled(true);
    }
    Counted(const Counted &) = delete;
    Counted &operator=(const Counted &) = delete;
    ~Counted()
    {
        m_timer->setEnabled(false);
        QCoreApplication::processEvents();
    }

    int events = 0;
    bool onInterfaceThread = true;

private:
    std::shared_ptr<CTimerMM> m_timer;
};

std::atomic<int> g_callbacks{0};
std::atomic<quintptr> g_user{0};

void countingCallback(quint32, quint32, quintptr user, quintptr, quintptr)
{
    g_user = user;
    ++g_callbacks;
}

} // namespace

TEST(PlatformTimersTest, periodicTimerTicksOnTheInterfaceThread)
{
    const Counted timer(makeTimer(1, TimerPlatform::Periodic));
    EXPECT_TRUE(eventually([&] { return timer.events >= 20; }));
    EXPECT_TRUE(timer.onInterfaceThread);
}

TEST(PlatformTimersTest, oneShotTimerTicksOnce)
{
    const Counted once(makeTimer(1, TimerPlatform::OneShot));
    const Counted again(makeTimer(1, TimerPlatform::Periodic));
    EXPECT_TRUE(eventually([&] { return once.events > 0 && again.events >= 50; }));
    EXPECT_EQ(once.events, 1);
}

TEST(PlatformTimersTest, intervalIsKept)
{
    // As the system has it, which keeps it.
    EXPECT_EQ(intervalsOfSystem(), QStringList());
    const Counted slow(makeTimer(60'000, TimerPlatform::Periodic));
    EXPECT_EQ(intervalsOfSystem(), QStringList({u"(60, 0)"_s}));
    const Counted fast(makeTimer(50, TimerPlatform::Periodic));
    EXPECT_EQ(intervalsOfSystem(), QStringList({u"(0, 50000000)"_s, u"(60, 0)"_s}));
    const Counted once(makeTimer(3'600'000, TimerPlatform::OneShot));
    EXPECT_TRUE(intervalsOfSystem().contains(u"(0, 0)"_s));
    EXPECT_TRUE(eventually([&] { return fast.events > 0; }));
    EXPECT_EQ(once.events, 0);
}

TEST(PlatformTimersTest, endedTimerCallsNoMore)
{
    g_callbacks = 0;
    const quint32 id =
        timerPlatform().setEvent(1, 0, countingCallback, 4711, TimerPlatform::Periodic);
    ASSERT_NE(id, 0U);
    EXPECT_TRUE(eventually([] { return g_callbacks > 3; }));
    timerPlatform().killEvent(id);
    const int callbacks = g_callbacks;
    EXPECT_EQ(g_user, 4711U);
    const Counted other(makeTimer(1, TimerPlatform::Periodic));
    EXPECT_TRUE(eventually([&] { return other.events >= 20; }));
    EXPECT_EQ(g_callbacks, callbacks);
}

TEST(PlatformTimersTest, delayBelowAMillisecondGivesNoTimer)
{
    EXPECT_EQ(timerPlatform().setEvent(0, 0, countingCallback, 1, TimerPlatform::Periodic), 0U);
    EXPECT_EQ(timerPlatform().setEvent(-5, 0, countingCallback, 1, TimerPlatform::OneShot), 0U);
    timerPlatform().killEvent(0); // as a timer that never started is ended
}

TEST(PlatformTimersTest, startAndStopManyTimes)
{
    const auto timer = makeTimer(1, TimerPlatform::Periodic);
    for (int i = 0; i < 200; ++i) {
        timer->setEnabled(true);
        timer->setEnabled(false);
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(MTimerMM::mcolTimers, nullptr);
}

TEST(PlatformTimersTest, clockGoesOn)
{
    const qint32 before = timerPlatform().clockMs();
    EXPECT_TRUE(eventually([&] { return timerPlatform().clockMs() != before; }));
    EXPECT_GT(timerPlatform().clockMs(), before);
}

TEST(PlatformTimersTest, callbackWritesItsMessageAndAsksNothingElseOfTheSystem)
{
    const Counted timer(makeTimer(60'000, TimerPlatform::Periodic));
    const auto window = static_cast<quintptr>(MTimerMM::mcolTimers->cbegin()->hWnd);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // From here on any system call but read, write and exit kills the process.
        if (::prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) == 0) {
            for (int i = 0; i < 3; ++i)
                MTimerMM::TimerCallback(1, 0, window, 0, 0);
            ::syscall(SYS_exit, 0);
        }
        ::syscall(SYS_exit, 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    // The pipe is shared with the child: one event for each of its calls.
    EXPECT_TRUE(eventually([&] { return timer.events == 3; }));
}

} // namespace norvane
