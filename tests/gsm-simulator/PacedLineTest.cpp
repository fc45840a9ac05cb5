#include "gsm-simulator/PacedLine.h"

#include <gtest/gtest.h>

namespace norvane {

namespace simulator {

using namespace std::chrono_literals;

TEST(PacedLine, aByteTakesTenBits)
{
    PacedLine line(1000); // a byte in 10 ms
    line.push("abc", 5ms);
    EXPECT_EQ(line.nextArrival(), 15ms);
    EXPECT_EQ(line.pop(14'999'999ns), "");
    EXPECT_EQ(line.pop(15ms), "a");
    EXPECT_EQ(line.nextArrival(), 25ms);
    EXPECT_EQ(line.pop(34ms), "b");
    EXPECT_EQ(line.pop(35ms), "c");
    EXPECT_EQ(line.nextArrival(), std::nullopt);
    EXPECT_EQ(line.pop(1s), "");
}

TEST(PacedLine, lateLookingDeliversWhatHasArrived)
{
    PacedLine line(1000);
    line.push("abcdef", 0ms);
    EXPECT_EQ(line.pop(45ms), "abcd");
    EXPECT_EQ(line.size(), 2);
    EXPECT_EQ(line.pop(60ms), "ef");
}

TEST(PacedLine, bytesQueueBehindOthers)
{
    PacedLine line(1000);
    line.push("a", 0ms);
    line.push("b", 5ms);
    EXPECT_EQ(line.pop(19ms), "a");
    EXPECT_EQ(line.pop(20ms), "b");
}

TEST(PacedLine, anIdleLineStartsAnewWithTheNextByte)
{
    PacedLine line(1000);
    line.push("a", 0ms);
    EXPECT_EQ(line.pop(10ms), "a");
    line.push("b", 100ms);
    EXPECT_EQ(line.nextArrival(), 110ms);
}

TEST(PacedLine, neverOvertakesTheByteBefore)
{
    PacedLine line(1000);
    line.push("a", 10ms);
    EXPECT_EQ(line.pop(20ms), "a");
    line.push("b", 15ms);
    EXPECT_EQ(line.nextArrival(), 30ms);
}

TEST(PacedLine, longTransfersKeepTheRateExactly)
{
    PacedLine line(115200);
    line.push(QByteArray(11520 * 60, 'x'), 0ms);
    EXPECT_EQ(line.pop(60s - 1ns).size(), 11520 * 60 - 1);
    EXPECT_EQ(line.pop(60s).size(), 1);
}

TEST(PacedLine, forgetsWhatWasUnderway)
{
    PacedLine line(1000);
    line.push("abc", 0ms);
    line.clear();
    EXPECT_EQ(line.pop(1s), "");
    EXPECT_EQ(line.nextArrival(), std::nullopt);
}

} // namespace simulator

} // namespace norvane
