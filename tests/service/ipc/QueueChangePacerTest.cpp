#include "service/ipc/QueueChangePacer.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

class QueueChangePacerTest : public testing::Test
{
protected:
    /// A timer may be 5 % early.
    static constexpr int s_shortest = QueueChangePacer::ShortestInterval * 95 / 100;
    static constexpr int s_longest = QueueChangePacer::LongestWait * 95 / 100;

    QueueChangePacerTest() { m_clock.start(); }

    qint64 waitForReport()
    {
        m_clock.restart();
        EXPECT_TRUE(m_reports.wait(5000));
        return m_clock.elapsed();
    }

    QString m_one = QStringLiteral(":1.1");
    QString m_two = QStringLiteral(":1.2");
    QueueChangePacer m_pacer;
    QSignalSpy m_reports{&m_pacer, &QueueChangePacer::report};
    QElapsedTimer m_clock;
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
    EXPECT_GE(waitForReport(), s_shortest);
    EXPECT_EQ(m_reports.count(), 2);
}

TEST_F(QueueChangePacerTest, withoutAChangeNothingIsReported)
{
    m_pacer.listenerCame(m_one);
    m_pacer.queueChanged();
    m_pacer.listenerFetched(m_one);
    m_pacer.listenerLeft(m_one);
    EXPECT_FALSE(m_reports.wait(3 * QueueChangePacer::ShortestInterval));
    EXPECT_EQ(m_reports.count(), 1);
}

TEST_F(QueueChangePacerTest, aListenerThatFetchedIsToldAfterTheShortestInterval)
{
    m_pacer.listenerCame(m_one);
    m_pacer.queueChanged();
    m_pacer.queueChanged();
    m_pacer.listenerFetched(m_one);
    const qint64 waited = waitForReport();
    EXPECT_GE(waited, s_shortest);
    EXPECT_LT(waited, s_longest);
}

TEST_F(QueueChangePacerTest, theNextReportWaitsForEveryListener)
{
    m_pacer.listenerCame(m_one);
    m_pacer.listenerCame(m_two);
    m_pacer.queueChanged();
    m_pacer.queueChanged();
    m_pacer.listenerFetched(m_one);
    m_pacer.listenerFetched(QStringLiteral(":1.3"));
    EXPECT_GE(waitForReport(), s_longest);
}

TEST_F(QueueChangePacerTest, aListenerThatLeftIsNotWaitedFor)
{
    m_pacer.listenerCame(m_one);
    m_pacer.listenerCame(m_two);
    m_pacer.queueChanged();
    m_pacer.queueChanged();
    m_pacer.listenerFetched(m_one);
    m_pacer.listenerLeft(m_two);
    EXPECT_LT(waitForReport(), s_longest);
}

TEST_F(QueueChangePacerTest, aFetchAfterTheShortestIntervalBringsTheReportAtOnce)
{
    m_pacer.listenerCame(m_one);
    m_pacer.queueChanged();
    m_pacer.queueChanged();
    EXPECT_FALSE(m_reports.wait(2 * QueueChangePacer::ShortestInterval));
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
    EXPECT_GE(waitForReport(), s_longest);
}

} // namespace
