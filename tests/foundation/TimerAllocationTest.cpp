#include "foundation/MTimerMM.h"

#include "support/Allocations.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <cstdlib>

namespace norvane {

using namespace Qt::StringLiterals;

// A program of its own, as it counts what is allocated: nothing of the timer's thread may be.

namespace {

Allocations g_counted;

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
        return waitUntil([count] { return ticks >= count; });
    }

    WindowHandle window = 0;
    inline static int ticks = 0;
};

} // namespace

TEST_F(TimerAllocationTest, allocationsAreCounted)
{
    void *volatile block = nullptr;
    EXPECT_EQ(allocationsOf([&] { block = std::malloc(10); }).count, 1);
    std::free(block);
    const QString text = u"12"_s;
    EXPECT_GT(allocationsOf([&] { EXPECT_EQ(QString::number(12), text); }).count, 0);
}

TEST_F(TimerAllocationTest, callbackAllocatesNothing)
{
    const auto user = static_cast<quintptr>(window);
    EXPECT_EQ(allocationsOf([user] {
                  for (int i = 0; i < 100; ++i)
                      MTimerMM::TimerCallback(1, 0, user, 0, 0);
              }).count,
              0);
    EXPECT_TRUE(waitForTicks(100));
}

TEST_F(TimerAllocationTest, timersOwnThreadAllocatesNothingBetweenItsTicks)
{
    g_counted = {};
    const TimerProc counted = [](quint32 id, quint32 message, quintptr user, quintptr reserved1,
                                 quintptr reserved2) {
        countAllocations(&g_counted); // from the first tick to the end of the thread
        MTimerMM::TimerCallback(id, message, user, reserved1, reserved2);
    };
    const quint32 id = timerPlatform().setEvent(1, 0, counted, window, TimerPlatform::Periodic);
    ASSERT_NE(id, 0U);
    EXPECT_TRUE(waitForTicks(20));
    timerPlatform().killEvent(id);
    EXPECT_EQ(g_counted.count, 0);
}

} // namespace norvane
