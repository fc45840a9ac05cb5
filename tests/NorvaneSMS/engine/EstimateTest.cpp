#include "NorvaneSMS/engine/Estimate.h"

#include "support/RaisedFailure.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QDateTime at(const char *moment)
{
    QDateTime result = QDateTime::fromString(QLatin1String(moment), Qt::ISODateWithMs);
    result.setTimeSpec(Qt::UTC);
    return result;
}

TEST(EstimateTest, onlyTheSecondsFieldOfTheIntervalCounts)
{
    const struct
    {
        const char *last;
        const char *now;
        qint32 seconds;
    } rows[] = {
        {"2024-05-06T10:00:00", "2024-05-06T10:00:00", 0},
        {"2024-05-06T10:00:00", "2024-05-06T10:00:01", 1},
        {"2024-05-06T10:00:00", "2024-05-06T10:00:59", 59},
        {"2024-05-06T10:00:00", "2024-05-06T10:01:00", 0},
        {"2024-05-06T10:00:00", "2024-05-06T10:01:01", 1},
        {"2024-05-06T10:00:00", "2024-05-06T10:01:15", 15},
        {"2024-05-06T10:00:00", "2024-05-06T11:00:00", 0},
        {"2024-05-06T10:00:00", "2024-05-06T12:59:59", 59},
        {"2024-05-06T10:00:50", "2024-05-06T10:01:05", 15},
        {"2024-05-06T23:59:58", "2024-05-07T00:00:03", 5},
        {"2024-02-28T10:00:00", "2024-03-01T10:00:07", 7},
    };
    for (const auto &row : rows)
        EXPECT_EQ(Estimate::secondsField(at(row.last), at(row.now)), row.seconds)
            << row.last << ' ' << row.now;
}

TEST(EstimateTest, momentsAreCutToWholeSecondsOnBothSides)
{
    EXPECT_EQ(Estimate::secondsField(at("2024-05-06T10:00:00.999"), at("2024-05-06T10:00:01.000")),
              1);
    EXPECT_EQ(Estimate::secondsField(at("2024-05-06T10:00:00.000"), at("2024-05-06T10:00:00.999")),
              0);
}

TEST(EstimateTest, zeroDateMeasuresTheSecondsOfTheClock)
{
    EXPECT_EQ(Estimate::zeroDate(), QDateTime(QDate(1899, 12, 30), QTime(0, 0), Qt::UTC));
    EXPECT_EQ(Estimate::secondsField(Estimate::zeroDate(), at("2024-05-06T10:31:47")), 47);
    EXPECT_EQ(Estimate::secondsField(Estimate::zeroDate(), at("2024-05-06T10:31:00")), 0);
    EXPECT_EQ(Estimate::secondsField(Estimate::zeroDate(), at("2199-12-31T23:59:59")), 59);
}

TEST(EstimateTest, clockThatWasSetBackGivesTheFieldWithoutSign)
{
    EXPECT_EQ(Estimate::secondsField(at("2024-05-06T10:01:15"), at("2024-05-06T10:00:00")), 15);
    EXPECT_EQ(Estimate::secondsField(at("2024-05-07T00:00:00"), at("2024-05-06T23:59:20")), 40);
}

TEST(EstimateTest, productBecomesATimeOfDay)
{
    const struct
    {
        qint32 seconds;
        qint32 waiting;
        QTime time;
    } rows[] = {
        {59, 0, QTime(0, 0, 0)},     {0, 10, QTime(0, 0, 0)},        {1, 10, QTime(0, 0, 10)},
        {15, 4, QTime(0, 1, 0)},     {15, 5, QTime(0, 1, 15)},       {59, 61, QTime(0, 59, 59)},
        {60, 60, QTime(1, 0, 0)},    {59, 555, QTime(9, 5, 45)},     {1, 32766, QTime(9, 6, 6)},
        {1, 32767, QTime(9, 6, 7)},  {7, 32767 / 7, QTime(9, 6, 7)}, {5, -10, QTime(0, 0, 50)},
        {1, -32768, QTime(9, 6, 8)},
    };
    for (const auto &row : rows)
        EXPECT_EQ(Estimate::remaining(row.seconds, row.waiting), row.time)
            << row.seconds << " x " << row.waiting;
}

TEST(EstimateTest, sixtySecondsApartWithTenWaitingGiveNothingAndSixtyOneGiveTenSeconds)
{
    const QDateTime last = at("2024-05-06T10:00:00");
    EXPECT_EQ(Estimate::remaining(Estimate::secondsField(last, last.addSecs(60)), 10),
              QTime(0, 0, 0));
    EXPECT_EQ(Estimate::remaining(Estimate::secondsField(last, last.addSecs(61)), 10),
              QTime(0, 0, 10));
}

TEST(EstimateTest, productBeyondSixteenBitsOverflows)
{
    const std::pair<qint32, qint32> rows[] = {
        {59, 600}, {59, 556}, {1, 32768}, {2, 16384}, {1, -32769}};
    for (const auto &[seconds, waiting] : rows) {
        const auto failure = raisedFailure([&] { Estimate::remaining(seconds, waiting); });
        ASSERT_TRUE(failure) << seconds << " x " << waiting;
        EXPECT_EQ(failure->number(), 6);
        EXPECT_EQ(failure->source(), u"moSMSManager_SMSSent"_s);
        EXPECT_EQ(failure->description(), u"Overflow"_s);
    }
}

TEST(EstimateTest, productBeyondThirtyTwoBitsOverflowsAndNeverWrapsAround)
{
    // Cut to 32 bits, the first product would be 0 and the second 4: both would fit again.
    EXPECT_EQ(raisedNumber([] { Estimate::remaining(32, 134'217'728); }), 6);
    EXPECT_EQ(raisedNumber([] { Estimate::remaining(4, 1'073'741'825); }), 6);
    EXPECT_EQ(raisedNumber([] { Estimate::remaining(59, 2'147'483'647); }), 6);
}

} // namespace

} // namespace norvane
