#include "TovekSMService/dispatch/ValidityPeriod.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

constexpr int hour = 60;
constexpr int day = 24 * hour;
constexpr int week = 7 * day;

/// The minutes of a value, by the table of 3GPP TS 23.040, 9.2.3.12.1.
int minutesOf(int value)
{
    if (value <= 143)
        return (value + 1) * 5;
    if (value <= 167)
        return 12 * hour + (value - 143) * 30;
    if (value <= 196)
        return (value - 166) * day;
    return (value - 192) * week;
}

TEST(ValidityPeriod, eachValueStandsForTheMinutesOfTheTable)
{
    for (int value = 0; value <= 255; ++value) {
        EXPECT_EQ(validityMinutes(static_cast<quint8>(value)), minutesOf(value)) << value;
        EXPECT_EQ(relativeValidity(minutesOf(value)), value) << value;
    }
}

TEST(ValidityPeriod, nothingIsAskedForZero)
{
    EXPECT_FALSE(relativeValidity(0));
    EXPECT_FALSE(relativeValidity(-1));
}

TEST(ValidityPeriod, everyValueIsReachedByItsOwnMinutesAndHoldsUpToTheNext)
{
    for (int value = 0; value <= 255; ++value) {
        EXPECT_EQ(relativeValidity(minutesOf(value)), quint8(value)) << value;
        if (value < 255) {
            EXPECT_EQ(relativeValidity(minutesOf(value + 1) - 1), quint8(value)) << value;
        }
    }
}

TEST(ValidityPeriod, theEndsOfTheRangesAreTheStandards)
{
    EXPECT_EQ(relativeValidity(1), quint8{0});
    EXPECT_EQ(relativeValidity(12 * hour), quint8{143});
    EXPECT_EQ(relativeValidity(day), quint8{167});
    EXPECT_EQ(relativeValidity(2 * day), quint8{168});
    EXPECT_EQ(relativeValidity(30 * day), quint8{196});
    EXPECT_EQ(relativeValidity(5 * week), quint8{197});
    EXPECT_EQ(relativeValidity(63 * week), quint8{255});
    EXPECT_EQ(relativeValidity(64 * week), quint8{255});
}

} // namespace

} // namespace norvane
