#include "NorvaneSMS/console/PollingTimer.h"

#include "common/FailureNumbers.h"
#include "common/NumberedFailure.h"
#include "foundation/CTimerMM.h"
#include "foundation/MTimerMM.h"
#include "support/ManualTimers.h"
#include "support/WindowMessages.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

class PollingTimerTest : public testing::Test
{
protected:
    ~PollingTimerTest() override
    {
        const MTimerMM::Registry running =
            MTimerMM::mcolTimers ? *MTimerMM::mcolTimers : MTimerMM::Registry();
        for (const MTimerMM::CObjData &entry : running)
            entry.Owner->setEnabled(false);
    }

    void tick()
    {
        m_timers.tick();
        processWindowMessages();
        QCoreApplication::sendPostedEvents();
    }
    static qsizetype registered()
    {
        return MTimerMM::mcolTimers ? MTimerMM::mcolTimers->size() : 0;
    }

    ManualTimers m_timers;
    QList<qint32> m_ticks;
    std::function<void()> m_inTick;
    PollingTimer m_timer{[this](qint32 milliseconds) {
        m_ticks.append(milliseconds);
        if (m_inTick)
            m_inTick();
    }};
};

TEST_F(PollingTimerTest, ticksEveryTenSecondsOnceItIsStarted)
{
    EXPECT_TRUE(m_timers.calls.isEmpty());
    m_timer.start();
    EXPECT_EQ(m_timers.calls, (QStringList{u"begin 1"_s, u"set 10000 1 1"_s}));
    EXPECT_TRUE(m_ticks.isEmpty());
    m_timers.now = 10'007;
    tick();
    m_timers.now = 20'010;
    tick();
    EXPECT_EQ(m_ticks, (QList<qint32>{10'007, 10'003}));
}

TEST_F(PollingTimerTest, whatATickThrowsEndsThatTickAlone)
{
    m_timer.start();
    m_inTick = [] { Failure::raise(Failure::Overflow, u"tick"_s); };
    EXPECT_NO_THROW(tick());
    m_inTick = nullptr;
    tick();
    EXPECT_EQ(m_ticks.size(), 2);
}

TEST_F(PollingTimerTest, aTickThatIsOnItsWayWhenItIsStoppedIsLost)
{
    m_timer.start();
    m_timers.tick();
    m_timer.stop();
    processWindowMessages();
    EXPECT_TRUE(m_ticks.isEmpty());
    EXPECT_EQ(registered(), 0);
    EXPECT_TRUE(m_timers.events.isEmpty());
}

TEST_F(PollingTimerTest, canBeStoppedWhetherItRunsOrNot)
{
    m_timer.stop();
    m_timer.start();
    m_timer.stop();
    m_timer.stop();
    EXPECT_EQ(m_timers.calls.filter(u"kill"_s).size(), 1);
    m_timer.start();
    tick();
    EXPECT_EQ(m_ticks.size(), 1);
}

TEST_F(PollingTimerTest, aTickMayStopIt)
{
    m_timer.start();
    m_inTick = [this] { m_timer.stop(); };
    tick();
    tick();
    EXPECT_EQ(m_ticks.size(), 1);
}

TEST_F(PollingTimerTest, startedAgainItTicksOnceWhileTheTimerBeforeRunsOnForNobody)
{
    m_timer.start();
    m_timer.start();
    EXPECT_EQ(registered(), 2);
    EXPECT_EQ(m_timers.events.size(), 2);
    tick();
    EXPECT_EQ(m_ticks.size(), 1);
}

} // namespace

} // namespace norvane
