#include "TovekSMService/dispatch/ResetLimit.h"

#include "TovekSMService/dispatch/DispatcherFixture.h"
#include "TovekSMService/dispatch/OpenStore.h"
#include "TovekSMService/store/StoreResults.h"

namespace norvane {

namespace {

constexpr int interval = 60; // s

class ResetLimitTest : public testing::Test
{
protected:
    /// Passes time on both clocks.
    void pass(qint64 seconds)
    {
        m_time.pass(seconds * 1000);
        m_clock.now = m_clock.now.addSecs(seconds);
    }
    /// What an engine knows that is started now.
    bool allowsResetAfterRestart()
    {
        ResetLimit limit(m_store->settings(), m_clock, interval);
        done(limit.recall());
        return limit.allowsReset();
    }

    QTemporaryDir m_folder;
    TurnedTime m_time;
    SetClock m_clock{m_time};
    std::unique_ptr<Store> m_store = openStore(m_folder);
    ResetLimit m_limit{m_store->settings(), m_clock, interval};
};

TEST_F(ResetLimitTest, aDeviceThatWasNeverResetMayBe)
{
    EXPECT_TRUE(m_limit.allowsReset());
    EXPECT_TRUE(allowsResetAfterRestart());
}

TEST_F(ResetLimitTest, betweenTwoResetsTheIntervalPasses)
{
    m_limit.noteReset();
    EXPECT_FALSE(m_limit.allowsReset());
    pass(interval - 1);
    EXPECT_FALSE(m_limit.allowsReset());
    pass(1);
    EXPECT_TRUE(m_limit.allowsReset());
}

TEST_F(ResetLimitTest, aWallClockThatIsSetMakesNoDifferenceWhileTheEngineRuns)
{
    m_limit.noteReset();
    m_clock.now = m_clock.now.addDays(1);
    EXPECT_FALSE(m_limit.allowsReset());
}

TEST_F(ResetLimitTest, aRestartedEngineWaitsForTheRestOfTheInterval)
{
    m_limit.noteReset();
    pass(interval - 10);
    ResetLimit restarted(m_store->settings(), m_clock, interval);
    done(restarted.recall());
    EXPECT_FALSE(restarted.allowsReset());
    pass(9);
    EXPECT_FALSE(restarted.allowsReset());
    pass(1);
    EXPECT_TRUE(restarted.allowsReset());
}

TEST_F(ResetLimitTest, anEngineThatIsStartedBehindTheIntervalMayResetAtOnce)
{
    m_limit.noteReset();
    pass(interval);
    EXPECT_TRUE(allowsResetAfterRestart());
}

TEST_F(ResetLimitTest, aResetInTheFutureOfTheWallClockIsNoReason)
{
    m_limit.noteReset();
    m_clock.now = m_clock.now.addSecs(-1);
    EXPECT_TRUE(allowsResetAfterRestart());
}

TEST_F(ResetLimitTest, aResetThatCannotBeNotedCountsAllTheSame)
{
    const NotedLog log;
    OtherConnection other(m_store->file().file());
    other.lock();
    m_limit.noteReset();
    EXPECT_FALSE(m_limit.allowsReset());
    EXPECT_EQ(log.count(u"could not be noted"_s), 1);
    other.unlock();
    EXPECT_TRUE(allowsResetAfterRestart()) << "the next engine knows nothing of it";
}

} // namespace

} // namespace norvane
