#include "TovekSMService/store/StoreFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class PartCounterTest : public StoreFixture
{
protected:
    QPair<qint64, qint64> counts(const char *at) const
    {
        const PartCounts counts = given(m_store->parts().counts(QLatin1String(at)));
        return {counts.inMinute, counts.inDay};
    }

    void count(const char *at) { done(m_store->parts().count(QLatin1String(at))); }
};

using Counts = QPair<qint64, qint64>;

TEST_F(PartCounterTest, partsAreCountedByMinuteAndDayAcrossReopening)
{
    EXPECT_EQ(counts("2024-05-01T12:00:00"), Counts(0, 0));
    count("2024-05-01T12:00:00");
    count("2024-05-01T12:00:59");
    EXPECT_EQ(counts("2024-05-01T12:00:30"), Counts(2, 2));
    EXPECT_EQ(counts("2024-05-01T12:01:00"), Counts(0, 2));
    EXPECT_EQ(counts("2024-05-02T12:00:00"), Counts(0, 0));
    reopen();
    count("2024-05-01T12:01:00");
    EXPECT_EQ(counts("2024-05-01T12:01:00"), Counts(1, 3));
    count("2024-05-02T00:00:00");
    EXPECT_EQ(counts("2024-05-02T00:00:00"), Counts(1, 1));
}

TEST_F(PartCounterTest, aPartThatDidNotLeaveIsTakenBackWhereItWasCounted)
{
    count("2024-05-01T23:59:59");
    count("2024-05-01T23:59:59");
    done(m_store->parts().uncount(u"2024-05-01T23:59:59"_s));
    EXPECT_EQ(counts("2024-05-01T23:59:00"), Counts(1, 1));
    done(m_store->parts().uncount(u"2024-05-01T23:59:59"_s));
    done(m_store->parts().uncount(u"2024-05-01T23:59:59"_s));
    EXPECT_EQ(counts("2024-05-01T23:59:00"), Counts(0, 0));
}

TEST_F(PartCounterTest, aClockSetBackFindsItsDayCountedAndItsMinutesFree)
{
    count("2024-05-01T12:00:00");
    count("2024-05-02T12:00:00");
    EXPECT_EQ(counts("2024-05-01T12:00:00"), Counts(0, 1));
}

TEST_F(PartCounterTest, countsOfLongAgoAreForgotten)
{
    for (int day = 1; day <= 28; ++day)
        done(m_store->parts().count(u"2024-05-%1T12:00:00"_s.arg(day, 2, 10, QChar(u'0'))));
    EXPECT_EQ(OtherConnection(file()).value(u"SELECT COUNT(*) FROM part_count"_s), 9);
    EXPECT_EQ(counts("2024-05-20T12:00:00").second, 0);
    EXPECT_EQ(counts("2024-05-21T12:00:00").second, 1);
}

} // namespace

} // namespace norvane
