#include "TovekSMService/dispatch/RetryPolicy.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

TEST(RetryPolicy, aMessageIsTriedFourTimes)
{
    const RetryPolicy policy([] { return 0.0; });
    EXPECT_TRUE(policy.mayRetry(0));
    EXPECT_TRUE(policy.mayRetry(3));
    EXPECT_FALSE(policy.mayRetry(4));
    EXPECT_FALSE(policy.mayRetry(5));
}

TEST(RetryPolicy, delaysOfAMessageDoubleFromHalfAMinuteToAnHour)
{
    const RetryPolicy policy([] { return 0.0; });
    const qint64 expected[] = {30, 60, 120, 240, 480, 960, 1920, 3600, 3600};
    for (int attempts = 1; attempts <= 9; ++attempts)
        EXPECT_EQ(policy.messageDelay(attempts), expected[attempts - 1]) << attempts;
    EXPECT_EQ(policy.messageDelay(0), 30);
    EXPECT_EQ(policy.messageDelay(1'000'000), 3600);
}

TEST(RetryPolicy, upToAQuarterIsAddedAtRandom)
{
    double random = 0.5;
    const RetryPolicy policy([&random] { return random; });
    EXPECT_EQ(policy.messageDelay(3), 135);
    EXPECT_EQ(policy.messageDelay(1), 33);
    random = 0.999;
    EXPECT_EQ(policy.messageDelay(1), 37);
    EXPECT_EQ(policy.messageDelay(20), 4499);
}

TEST(RetryPolicy, delaysOfTheDeviceDoubleFromASecondToAMinute)
{
    const RetryPolicy policy([] { return 0.9; });
    const int expected[] = {1000, 2000, 4000, 8000, 16'000, 32'000, 60'000, 60'000};
    for (int failures = 1; failures <= 8; ++failures)
        EXPECT_EQ(policy.reopenDelay(failures), expected[failures - 1]) << failures;
    EXPECT_EQ(policy.reopenDelay(0), 1000);
    EXPECT_EQ(policy.reopenDelay(1'000'000), 60'000);
}

TEST(RetryPolicy, otherNumbersAreTakenAsGiven)
{
    const RetryPolicy policy([] { return 0.0; }, {2, 5, 7, 10, 15});
    EXPECT_TRUE(policy.mayRetry(1));
    EXPECT_FALSE(policy.mayRetry(2));
    EXPECT_EQ(policy.messageDelay(1), 5);
    EXPECT_EQ(policy.messageDelay(2), 7);
    EXPECT_EQ(policy.reopenDelay(1), 10);
    EXPECT_EQ(policy.reopenDelay(2), 15);
}

} // namespace

} // namespace norvane
