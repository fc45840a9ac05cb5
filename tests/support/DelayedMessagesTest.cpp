#include "support/DelayedMessages.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace std::chrono_literals;

TEST(DelayedMessages, oneIsDueWhenItHasBeenOnItsWayForTheDelay)
{
    constexpr DelayedMessages::Clock::time_point start(1h);
    DelayedMessages messages;
    messages.add({'Q', "first"}, start);
    EXPECT_FALSE(messages.isFirstDue(start + 99ms - 100ms));
    EXPECT_TRUE(messages.isFirstDue(start + 100ms - 100ms));
}

TEST(DelayedMessages, oneIsNotLateBecauseOfThoseBeforeIt)
{
    constexpr DelayedMessages::Clock::time_point start(1h);
    DelayedMessages messages;
    messages.add({'P', "first"}, start);
    messages.add({'B', "second"}, start);
    messages.add({'E', "third"}, start + 1ms);
    ASSERT_TRUE(messages.isFirstDue(start));
    EXPECT_EQ(messages.takeFirst().bytes, "first");
    ASSERT_TRUE(messages.isFirstDue(start));
    EXPECT_EQ(messages.takeFirst().bytes, "second");
    EXPECT_FALSE(messages.isFirstDue(start));
    ASSERT_TRUE(messages.isFirstDue(start + 1ms));
    EXPECT_EQ(messages.takeFirst().bytes, "third");
    EXPECT_FALSE(messages.isFirstDue(DelayedMessages::Clock::time_point::max()));
    EXPECT_EQ(messages.firstArrival(), DelayedMessages::Clock::time_point::max());
}

} // namespace norvane
