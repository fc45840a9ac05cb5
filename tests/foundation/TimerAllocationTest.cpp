#include "foundation/MTimerMM.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>

// A program of its own, as it counts what is allocated: nothing of the timer's thread may be.

namespace {

thread_local bool t_counting = false;
std::atomic<int> g_allocations{0};

void noteAllocation() noexcept
{
    if (t_counting)
        ++g_allocations;
}

} // namespace

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

// The sanitizer's own allocation functions tell of each call; not every compiler brings the header
// that declares this.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*atMalloc)(const volatile void *,
                                                                          std::size_t),
                                                         void (*atFree)(const volatile void *));

namespace {
[[maybe_unused]] const int g_hooks = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void *, std::size_t) { noteAllocation(); }, [](const volatile void *) {});
} // namespace

#else

// In the place of the C library's own, for this program and all libraries of it.
extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);

void *malloc(std::size_t size)
{
    noteAllocation();
    return __libc_malloc(size);
}
void *calloc(std::size_t count, std::size_t size)
{
    noteAllocation();
    return __libc_calloc(count, size);
}
void *realloc(void *block, std::size_t size)
{
    noteAllocation();
    return __libc_realloc(block, size);
}
void *aligned_alloc(std::size_t alignment, std::size_t size)
{
    noteAllocation();
    return __libc_memalign(alignment, size);
}
int posix_memalign(void **block, std::size_t alignment, std::size_t size)
{
    noteAllocation();
    *block = __libc_memalign(alignment, size);
    return *block ? 0 : ENOMEM;
}
}

#endif

namespace {

/// What is allocated by this thread while `work` runs.
template <typename Work>
int allocationsOf(Work &&work)
{
    g_allocations = 0;
    t_counting = true;
    work();
    t_counting = false;
    return g_allocations;
}

class TimerAllocationTest : public ::testing::Test
{
protected:
    TimerAllocationTest()
    {
        int error = 0;
        window = timerPlatform().createWindow(error);
        EXPECT_NE(window, 0);
        ticks = 0;
        timerPlatform().setWindowProc(window,
                                      [](WindowHandle, quint32 message, quint64, qint64) -> qint64 {
                                          ticks += message == MTimerMM::WM_MMTIMER ? 1 : 0;
                                          return 0;
                                      });
    }
    ~TimerAllocationTest() override
    {
        timerPlatform().setWindowProc(window, defaultWindowProc);
        timerPlatform().postMessage(window, WM_CLOSE, 0, 0);
        QCoreApplication::processEvents();
    }

    static bool waitForTicks(int count)
    {
        const QDeadlineTimer deadline(20'000);
        while (ticks < count && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        return ticks >= count;
    }

    WindowHandle window = 0;
    inline static int ticks = 0;
};

} // namespace

TEST_F(TimerAllocationTest, allocationsAreCounted)
{
    void *volatile block = nullptr;
    EXPECT_EQ(allocationsOf([&] { block = std::malloc(10); }), 1);
    std::free(block);
    const QString text = QStringLiteral("12");
    EXPECT_GT(allocationsOf([&] { EXPECT_EQ(QString::number(12), text); }), 0);
}

TEST_F(TimerAllocationTest, callbackAllocatesNothing)
{
    const auto user = static_cast<quintptr>(window);
    EXPECT_EQ(allocationsOf([user] {
                  for (int i = 0; i < 100; ++i)
                      MTimerMM::TimerCallback(1, 0, user, 0, 0);
              }),
              0);
    EXPECT_TRUE(waitForTicks(100));
}

TEST_F(TimerAllocationTest, timersOwnThreadAllocatesNothingBetweenItsTicks)
{
    g_allocations = 0;
    const TimerProc counted = [](quint32 id, quint32 message, quintptr user, quintptr reserved1,
                                 quintptr reserved2) {
        t_counting = true; // from the first tick to the end of the thread
        MTimerMM::TimerCallback(id, message, user, reserved1, reserved2);
    };
    const quint32 id = timerPlatform().setEvent(1, 0, counted, window, TimerPlatform::Periodic);
    ASSERT_NE(id, 0U);
    EXPECT_TRUE(waitForTicks(20));
    timerPlatform().killEvent(id);
    EXPECT_EQ(g_allocations, 0);
}
