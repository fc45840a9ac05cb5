#include "TovekSMService/bus/QueueChangePacer.h"

#include "support/TurnedTime.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class QueueChangePacerTest : public testing::Test
{
protected:
    static constexpr qint64 min = QueueChangePacer::minInterval;
    static constexpr qint64 max = QueueChangePacer::maxWait;

    /// After how many milliseconds the next report comes.
    qint64 waitForReport()
    {
        const qint64 before = m_time.elapsed();
        const qsizetype reports = m_reports.count();
        EXPECT_TRUE(m_time.until([&] { return m_reports.count() > reports; }));
        return m_time.elapsed() - before;
    }

    QString m_one = u":1.1"_s;
    QString m_two = u":1.2"_s;
    TurnedTime m_time;
    QueueChangePacer m_pacer{m_time};
    QSignalSpy m_reports{&m_pacer, &QueueChangePacer::report};
};

TEST_F(QueueChangePacerTest, theFirstChangeIsReportedAtOnce)
{
    m_pacer.queueChanged();
    EXPECT_EQ(m_reports.count(), 1);
}

TEST_F(QueueChangePacerTest, changesInARowAreReportedTogetherAndTheLastAlways)
{
    for (int i = 0; i < 1000; ++i)
        m_pacer.queueChanged();
    EXPECT_EQ(m_reports.count(), 1);
    EXPECT_EQ(waitForReport(), min);
    m_time.pass(10 * max);
    EXPECT_EQ(m_reports.count(), 2);
}

TEST_F(QueueChangePacerTest, withoutAChangeNothingIsReported)
{
    m_pacer.listenerCame(m_one);
    m_pacer.queueChanged();
    m_pacer.listenerFetched(m_one);
    m_pacer.listenerLeft(m_one);
    m_time.pass(10 * max);
    EXPECT_EQ(m_reports.count(), 1);
}

TEST_F(QueueChangePacerTest, aListenerThatFetchedIsToldAfterTheShortestInterval)
{
    m_pacer.listenerCame(m_one);
    m_pacer.queueChanged();
    m_pacer.queueChanged();
    m_pacer.listenerFetched(m_one);
    EXPECT_EQ(waitForReport(), min);
}

TEST_F(QueueChangePacerTest, theNextReportWaitsForEveryListener)
{
    m_pacer.listenerCame(m_one);
    m_pacer.listenerCame(m_two);
    m_pacer.queueChanged();
    m_pacer.queueChanged();
    m_pacer.listenerFetched(m_one);
    m_pacer.listenerFetched(u":1.3"_s);
    EXPECT_EQ(waitForReport(), max);
}

TEST_F(QueueChangePacerTest, aListenerThatLeftIsNotWaitedFor)
{
    m_pacer.listenerCame(m_one);
    m_pacer.listenerCame(m_two);
    m_pacer.queueChanged();
    m_pacer.queueChanged();
    m_pacer.listenerFetched(m_one);
    m_pacer.listenerLeft(m_two);
    EXPECT_EQ(waitForReport(), min);
}

TEST_F(QueueChangePacerTest, aFetchAfterTheShortestIntervalBringsTheReportAtOnce)
{
    m_pacer.listenerCame(m_one);
    m_pacer.queueChanged();
    m_pacer.queueChanged();
    m_time.pass(2 * min);
    EXPECT_EQ(m_reports.count(), 1);
    m_pacer.listenerFetched(m_one);
    EXPECT_EQ(m_reports.count(), 2);
}

TEST_F(QueueChangePacerTest, eachReportIsWaitedForAnew)
{
    m_pacer.listenerCame(m_one);
    m_pacer.queueChanged();
    m_pacer.listenerFetched(m_one);
    m_pacer.queueChanged();
    waitForReport();
    m_pacer.queueChanged();
    EXPECT_EQ(waitForReport(), max);
}

} // namespace

} // namespace norvane
