#include "TovekSMService/time/Clock.h"

#include <gtest/gtest.h>

#include <ctime>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class GivenClock : public Clock
{
public:
    explicit GivenClock(const QDateTime &moment) : m_moment(moment) {}
    QDateTime wallClock() const override { return m_moment; }

private:
    QDateTime m_moment;
};

TEST(Clock, writesItsMomentAsTheQueueWritesDates)
{
    const GivenClock clock({QDate(2024, 2, 28), QTime(3, 4, 5), Qt::UTC});
    EXPECT_EQ(clock.wallClockText(), u"2024-02-28T03:04:05"_s);
    EXPECT_EQ(clock.wallClockText(86'400), u"2024-02-29T03:04:05"_s);
    EXPECT_EQ(clock.wallClockText(-6), u"2024-02-28T03:03:59"_s);
}

TEST(Clock, countsThroughAnHourThatTheZoneSkips)
{
    const GivenClock clock({QDate(2024, 3, 31), QTime(1, 59, 59), Qt::UTC});
    EXPECT_EQ(clock.wallClockText(1), u"2024-03-31T02:00:00"_s);
}

TEST(Clock, theSystemsOneTellsLocalTimeInWholeSecondsWithoutAZone)
{
    qputenv("TZ", "NST-05:45"); // far from any whole hour
    ::tzset();
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(5 * 3600 + 45 * 60);
    const QDateTime told = SystemClock().wallClock();
    const QDateTime after = QDateTime::currentDateTimeUtc().addSecs(5 * 3600 + 45 * 60);
    EXPECT_EQ(told.timeSpec(), Qt::UTC);
    EXPECT_EQ(told.time().msec(), 0);
    EXPECT_GE(told, before.addMSecs(-before.time().msec()));
    EXPECT_LE(told, after);
}

} // namespace

} // namespace norvane
