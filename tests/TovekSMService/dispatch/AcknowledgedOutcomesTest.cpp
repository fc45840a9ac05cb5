#include "TovekSMService/dispatch/AcknowledgedOutcomes.h"

#include "TovekSMService/store/OtherConnection.h"
#include "TovekSMService/store/StoreFixture.h"
#include "support/TurnedTime.h"

namespace norvane {

namespace {

class HeardOutcomesTest : public StoreFixture
{
protected:
    qint64 failedMessage()
    {
        return given(m_store->queue().finish(add(noon()), -36, std::nullopt, noon(), false));
    }

    bool allNoted()
    {
        return m_time.until(
            [this] { return given(m_store->outcomes().unreportedFailures()).isEmpty(); });
    }

    TurnedTime m_time;
};

TEST_F(HeardOutcomesTest, whatWasToldIsNotedAfterwards)
{
    AcknowledgedOutcomes heard(m_store->outcomes(), 20, m_time);
    const qint64 first = failedMessage();
    const qint64 second = failedMessage();
    heard.add(first);
    heard.add(second);
    EXPECT_EQ(given(m_store->outcomes().unreportedFailures()).size(), 2);
    EXPECT_TRUE(heard.contains(first));
    EXPECT_TRUE(allNoted());
    EXPECT_FALSE(heard.contains(first));
}

TEST_F(HeardOutcomesTest, onADiskThatCannotBeWrittenItIsKnownAllTheSame)
{
    AcknowledgedOutcomes heard(m_store->outcomes(), 20, m_time);
    const qint64 outcome = failedMessage();
    OtherConnection other(file());
    other.lock();
    heard.add(outcome);
    m_time.pass(100);
    EXPECT_EQ(m_time.rung(), 1 + 100 / 20);
    EXPECT_TRUE(heard.contains(outcome));
    EXPECT_EQ(given(m_store->outcomes().unreportedFailures()).size(), 1);
    other.unlock();
    EXPECT_TRUE(allNoted());
}

} // namespace

} // namespace norvane
