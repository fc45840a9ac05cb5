#include "TovekSMService/dispatch/RunPace.h"

#include <gtest/gtest.h>

#include <utility>

namespace norvane {

namespace {

constexpr qint64 ms = 1'000'000;

TEST(RunPace, beginsWithOneMessage)
{
    EXPECT_EQ(RunPace({5, 32}).length(), 1);
}

TEST(RunPace, doublesUpToItsMostWhileTheDeviceKeepsUp)
{
    RunPace pace({5, 32});
    for (const int expected : {2, 4, 8, 16, 32, 32}) {
        pace.recordTaken(pace.length(), pace.length() * ms / 10);
        EXPECT_EQ(pace.length(), expected);
    }
}

TEST(RunPace, neverGoesBeyondWhatTheDeviceTakesInAMoment)
{
    RunPace pace({5, 32});
    for (int run = 0; run < 6; ++run)
        pace.recordTaken(pace.length(), pace.length() * ms);
    EXPECT_EQ(pace.length(), 5);
    pace.recordTaken(1, ms + 1); // a nanosecond more, and the fifth one is over the moment
    EXPECT_EQ(pace.length(), 4);
}

TEST(RunPace, aMomentIsAsLongAsACommitTakes)
{
    RunPace pace({5, 32, 50});
    for (const auto &[commit, messages] : {std::pair(3, 2), {12, 6}, {4000, 25}, {1, 2}}) {
        pace.recordCommit(commit * ms);
        for (int run = 0; run < 6; ++run)
            pace.recordTaken(pace.length(), pace.length() * 2 * ms);
        EXPECT_EQ(pace.length(), messages) << commit;
    }
}

TEST(RunPace, stretchesTimesByTheCommit)
{
    RunPace pace({5, 32, 50});
    for (const auto &[commit, stretched] : {std::pair(3, 20), {15, 60}, {4000, 200}}) {
        pace.recordCommit(commit * ms);
        EXPECT_EQ(pace.stretched(20), stretched) << commit;
    }
}

TEST(RunPace, isOneMessageForADeviceThatNeedsTheMomentForOne)
{
    RunPace pace({5, 32});
    for (const qint64 each : {3 * ms, 5 * ms, 200 * ms, 60'000 * ms}) {
        pace.recordTaken(1, each);
        EXPECT_EQ(pace.length(), 1) << each;
    }
}

TEST(RunPace, fallsAtOnceWhenTheDeviceBecomesSlow)
{
    RunPace pace({5, 32});
    for (int run = 0; run < 6; ++run)
        pace.recordTaken(pace.length(), pace.length() * ms / 10);
    pace.recordTaken(32, 32 * 4 * ms);
    EXPECT_EQ(pace.length(), 1);
}

TEST(RunPace, forgetsWhatItKnew)
{
    RunPace pace({5, 32});
    pace.recordTaken(1, 1);
    ASSERT_EQ(pace.length(), 2);
    pace.forget();
    EXPECT_EQ(pace.length(), 1);
}

TEST(RunPace, takesAnyFigure)
{
    RunPace pace({5, 0});
    pace.recordTaken(0, 0);
    EXPECT_EQ(pace.length(), 1);
    pace.recordTaken(1, -1);
    EXPECT_EQ(pace.length(), 1);
}

TEST(RunPace, takesAMessageThatNeededNoTimeForOneOfANanosecond)
{
    RunPace pace({1, 4'000'000});
    for (int run = 0; run < 25; ++run)
        pace.recordTaken(pace.length(), 0);
    EXPECT_EQ(pace.length(), 1'000'000);
}

} // namespace

} // namespace norvane
