#include "TovekSMService/history/CountedReads.h"
#include "TovekSMService/history/HistoryFixture.h"
#include "TovekSMService/history/HistorySummary.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Time of which a tenth of a second passes with each look at it.
class SlowTime : public TimeSource
{
public:
    qint64 nanoseconds() const override { return m_now += 100'000'000; }
    std::unique_ptr<Alarm> makeAlarm(std::function<void()> due) override
    {
        return system().makeAlarm(std::move(due));
    }

private:
    mutable qint64 m_now = 0;
};

/// How often a database is asked until it has answered: each time costs a way to the server and
/// back.
class HistoryCostTest : public HistoryFixture
{
protected:
    HistoryPage countedPage(const HistoryFilter &filter, const HistoryCursor &after, int maxRows)
    {
        m_reads.takeCount();
        return given(HistoryPages(m_reads, m_limit).page(filter, after, {}, maxRows));
    }

    CountedReads m_reads{m_store->database()};
    const QueryLimit m_limit{TimeSource::system()};
};

TEST_F(HistoryCostTest, manyIdsAreReadInAFewStatements)
{
    QList<qint64> ids;
    for (int number = 0; number < 5; ++number)
        ids << leave(u"2026-01-01"_s) << wait(u"2026-01-02"_s);
    while (ids.size() < 1000)
        ids << 100'000 + ids.size() << -ids.size();
    EXPECT_EQ(given(HistoryPages(m_reads, m_limit).of(ids)).size(), 10);
    EXPECT_LE(m_reads.takeCount(), 3);
}

TEST_F(HistoryCostTest, whatIsFoundByItsTextIsReadInOneStatement)
{
    for (int number = 0; number < 20; ++number) {
        leave(u"2026-01-01"_s);
        wait(u"2026-01-02"_s);
    }
    HistoryFilter none;
    none.text = u"xyzzy"_s;
    EXPECT_TRUE(countedPage(none, {}, 100).rows.isEmpty());
    const int ofNone = m_reads.takeCount();
    HistoryFilter all;
    all.text = u"TEXT"_s;
    EXPECT_EQ(countedPage(all, {}, 100).rows.size(), 40);
    EXPECT_EQ(m_reads.takeCount(), ofNone + 2) << "one for the queue, and one for the outcomes";
}

TEST_F(HistoryCostTest, aPageWithinARangeCostsWhatOneWithoutARangeDoes)
{
    leave(u"2025-12-31"_s);
    for (int number = 0; number < 30; ++number)
        leave(u"2026-01-01T10:00:00"_s);
    leave(u"2026-01-02"_s);
    HistoryFilter day;
    day.from = u"2026-01-01"_s;
    day.to = u"2026-01-02"_s;
    const HistoryPage first = countedPage(day, {}, 10);
    ASSERT_TRUE(first.next);
    EXPECT_EQ(countedPage(day, *first.next, 10).rows.size(), 10);
    const int within = m_reads.takeCount();
    EXPECT_EQ(countedPage({}, *first.next, 10).rows.size(), 10);
    EXPECT_EQ(m_reads.takeCount(), within);
}

TEST_F(HistoryCostTest, aDayWithoutMessagesCostsTheNumbersNothing)
{
    leave(u"1970-01-01T00:00:00"_s);
    leave(u"2026-01-01T10:00:00"_s);
    leave(u"9999-12-31T10:00:00"_s);
    const SlowTime time;
    const QueryLimit limit(time);
    const auto numbers = HistorySummary(m_reads, limit).of({}, u"2027"_s);
    ASSERT_TRUE(numbers) << numbers.error().text().toStdString();
    EXPECT_EQ(numbers->days.size(), 2);
    EXPECT_LE(m_reads.takeCount(), 10);
}

TEST_F(HistoryCostTest, aLookAtManyIdsEndsWithItsTime)
{
    QList<qint64> ids;
    for (int number = 0; number < 60; ++number)
        ids << leave(u"2026-01-01"_s);
    const SlowTime time;
    const QueryLimit limit(time);
    const auto ended = HistoryPages(m_reads, limit).of(ids);
    ASSERT_FALSE(ended);
    EXPECT_EQ(ended.error().kind(), StoreFailure::Kind::Busy);
}

TEST_F(HistoryCostTest, aLookAtIdsThatNobodyWantsEnds)
{
    const qint64 id = leave(u"2026-01-01"_s);
    const std::atomic<bool> isCancelled = true;
    const QueryLimit limit(TimeSource::system(), &isCancelled);
    EXPECT_FALSE(HistoryPages(m_reads, limit).of({id}));
    EXPECT_EQ(m_reads.takeCount(), 0);
}

} // namespace

} // namespace norvane
