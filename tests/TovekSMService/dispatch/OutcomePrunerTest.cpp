#include "TovekSMService/dispatch/DispatcherFixture.h"

#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class OutcomePruning : public DispatcherFixture
{
protected:
    OutcomePruning()
    {
        m_timings.pruning = {2, 1, 20};
        m_settings.keepDays = 10;
    }

    void finished(int daysAgo)
    {
        done(m_store->queue().add({{u"600"_s, {}}}, noon()));
        done(m_store->queue().finish(given(m_store->queue().first())->id, 1, 1,
                                     m_clock.wallClockText(-daysAgo * 86'400 - 1), true));
    }

    int outcomes() const { return onDisk(u"SELECT COUNT(*) FROM outcome"_s).toInt(); }
};

TEST_F(OutcomePruning, outcomesAreForgottenAfterTheirDaysAndNotBefore)
{
    for (const int daysAgo : {9, 10, 11, 12, 13, 14})
        finished(daysAgo);
    makeDispatcher();
    ASSERT_TRUE(until([this] { return outcomes() == 1; }));
    takeTurns();
    EXPECT_EQ(outcomes(), 1);
    // It looks again.
    m_clock.now = m_clock.now.addDays(1);
    EXPECT_TRUE(until([this] { return outcomes() == 0; }));
}

TEST_F(OutcomePruning, aStoreThatIsLockedIsTriedAgainLater)
{
    finished(11);
    m_timings.pruning.restMs = std::numeric_limits<int>::max();
    const NotedLog log;
    OtherConnection other(file());
    other.lock();
    makeDispatcher();
    ASSERT_TRUE(until([&] { return log.count(u"old outcomes stay"_s) >= 2; }));
    other.unlock();
    EXPECT_TRUE(until([this] { return outcomes() == 0; }));
}

} // namespace

} // namespace norvane
