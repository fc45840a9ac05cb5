#include "TovekSMService/history/HistorySummary.h"

#include "TovekSMService/history/HistoryFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class HistorySummaryTest : public HistoryFixture
{
protected:
    HistoryNumbers summary(const QString &from = {}, const QString &to = {})
    {
        const QueryLimit limit(TimeSource::system());
        return given(HistorySummary(m_store->database(), limit).of(from, to));
    }

    void deliver(const QString &deliveredAt)
    {
        leave(u"2026-01-01T10:00:00"_s, 1, DeliveryState::Delivered, u"600"_s, u"text"_s,
              deliveredAt);
    }
};

TEST_F(HistorySummaryTest, outcomesAreCountedByTheirDays)
{
    leave(u"2026-01-01T00:00:00"_s);
    leave(u"2026-01-01T23:59:59"_s, 1, DeliveryState::Pending);
    leave(u"2026-01-03T00:00:00"_s, 1, DeliveryState::Refused);
    leave(u"2026-01-03T00:00:01"_s, -36);
    leave(u"2026-01-03T00:00:02"_s, -39);
    leave(u"2026-01-03T00:00:03"_s, 1, DeliveryState::Delivered);
    leave(u"2026-01-04T00:00:00"_s);
    wait(u"2026-01-03T00:00:00"_s);
    EXPECT_EQ(
        summary(u"2026-01-01"_s, u"2026-01-04"_s).days,
        (QList<HistoryDay>{{u"2026-01-01"_s, 2, 0, 0, 0, 0}, {u"2026-01-03"_s, 0, 1, 1, 1, 1}}));
    EXPECT_EQ(summary().days.size(), 3);
    EXPECT_TRUE(summary(u"2027"_s).days.isEmpty());
}

TEST_F(HistorySummaryTest, aMonthAndAYearAreBoundsToo)
{
    deliver(u"2026-01-01T10:00:05"_s); // at 10:00
    leave(u"2025-12-31T23:59:59"_s, -36);
    leave(u"2026-06-30T23:59:59"_s, -36);
    leave(u"2026-07-01T00:00:00"_s, -36);
    leave(u"2026-12-31T23:59:59"_s, -36);
    leave(u"2027-01-01T00:00:00"_s, -36);
    const auto daysOf = [this](const QString &from, const QString &to) {
        QStringList days;
        for (const HistoryDay &day : summary(from, to).days)
            days.append(day.day);
        return days;
    };
    const QStringList year = {u"2026-01-01"_s, u"2026-06-30"_s, u"2026-07-01"_s, u"2026-12-31"_s};
    EXPECT_EQ(daysOf(u"2026"_s, u"2027"_s), year);
    EXPECT_EQ(daysOf(u"2026-"_s, u"2026-7"_s), year);
    EXPECT_EQ(daysOf(u"2026-07"_s, u"2026-08"_s), QStringList{u"2026-07-01"_s});
    EXPECT_EQ(daysOf({}, u"2026-07"_s),
              (QStringList{u"2025-12-31"_s, u"2026-01-01"_s, u"2026-06-30"_s}));
    EXPECT_EQ(daysOf(u"2026-07"_s, {}),
              (QStringList{u"2026-07-01"_s, u"2026-12-31"_s, u"2027-01-01"_s}));
    EXPECT_EQ(summary(u"2026"_s, u"2026-02"_s).delays.constFirst().count, 1U);
    EXPECT_EQ(summary(u"2026"_s, u"2027"_s).reasons,
              (QList<FailureReason>{{MessageState::Failed, -36, 3}}));
}

TEST_F(HistorySummaryTest, aDelayBelongsToTheFirstClassThatIsLongEnough)
{
    const struct
    {
        const char *deliveredAt;
        quint32 upTo;
    } rows[] = {
        {"2026-01-01T10:00:00", 10},     {"2026-01-01T10:00:01", 10},
        {"2026-01-01T10:00:10", 10},     {"2026-01-01T10:00:11", 30},
        {"2026-01-01T10:00:30", 30},     {"2026-01-01T10:00:31", 60},
        {"2026-01-01T10:01:00", 60},     {"2026-01-01T10:01:01", 300},
        {"2026-01-01T10:05:00", 300},    {"2026-01-01T10:05:01", 900},
        {"2026-01-01T10:15:00", 900},    {"2026-01-01T10:15:01", 3600},
        {"2026-01-01T11:00:00", 3600},   {"2026-01-01T11:00:01", 21'600},
        {"2026-01-01T16:00:00", 21'600}, {"2026-01-01T16:00:01", 86'400},
        {"2026-01-02T10:00:00", 86'400}, {"2026-01-02T10:00:01", 0},
        {"2026-03-01T00:00:00", 0},
    };
    QMap<quint32, quint32> expected;
    for (const auto &row : rows) {
        deliver(QLatin1String(row.deliveredAt));
        ++expected[row.upTo];
        for (const DeliveryDelay &delay : summary().delays)
            EXPECT_EQ(delay.count, expected.value(delay.upTo)) << row.deliveredAt << delay.upTo;
    }
    const QList<DeliveryDelay> delays = summary().delays;
    ASSERT_EQ(delays.size(), 9);
    EXPECT_EQ(delays.constFirst().upTo, 10U);
    EXPECT_EQ(delays.constLast().upTo, 0U);
}

TEST_F(HistorySummaryTest, onlyWhatWasDeliveredHasADelay)
{
    leave(u"2026-01-01"_s);
    leave(u"2026-01-01"_s, -36);
    leave(u"2026-01-01"_s, 1, DeliveryState::Refused, u"600"_s, u"t"_s, u"2026-01-01T00:00:09"_s);
    deliver(u"2026-01-01T09:59:59"_s); // by a clock that was put back meanwhile
    deliver(u"2025-12-31T00:00:00"_s);
    for (const DeliveryDelay &delay : summary().delays)
        EXPECT_EQ(delay.count, 0U);
}

TEST_F(HistorySummaryTest, theMostFrequentReasonComesFirst)
{
    const QString at = u"2026-01-01T10:00:00"_s;
    for (const qint32 code : {-36, -36, -36, -39, -40, -40, 1})
        leave(at, code);
    const qint64 refused = leave(at, 1, DeliveryState::Refused);
    leave(at, 1, DeliveryState::Refused);
    done(m_store->sentParts().add({refused, 1, 1, 5, u"600"_s, u"sim"_s, at}));
    done(m_store->sentParts().setState(
        OtherConnection(file()).value(u"SELECT id FROM sent_part"_s).toLongLong(),
        DeliveryState::Refused, true, 70, at));
    using State = MessageState;
    EXPECT_EQ(summary().reasons, (QList<FailureReason>{{State::Failed, -36, 3},
                                                       {State::Failed, -40, 2},
                                                       {State::Refused, -1, 1},
                                                       {State::Refused, 70, 1},
                                                       {State::InDoubt, -39, 1}}));
    EXPECT_TRUE(summary(u"2026-01-02"_s).reasons.isEmpty());
}

} // namespace

} // namespace norvane
