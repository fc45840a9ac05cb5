#include "TovekSMService/bus/HistoryChangePacer.h"

#include "support/TurnedTime.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

class HistoryChangePacerTest : public testing::Test
{
protected:
    HistoryChangePacerTest()
    {
        QObject::connect(&m_pacer, &HistoryChangePacer::report, &m_pacer, [this] { ++m_reports; });
    }

    TurnedTime m_time;
    HistoryChangePacer m_pacer{m_time};
    int m_reports = 0;
};

TEST_F(HistoryChangePacerTest, theFirstChangeIsReportedAtOnce)
{
    EXPECT_EQ(m_reports, 0);
    m_pacer.historyChanged();
    EXPECT_EQ(m_reports, 1);
}

TEST_F(HistoryChangePacerTest, furtherChangesAreReportedTogether)
{
    m_pacer.historyChanged();
    m_pacer.historyChanged();
    m_time.pass(100);
    m_pacer.historyChanged();
    m_time.pass(149);
    EXPECT_EQ(m_reports, 1);
    m_time.pass(1);
    EXPECT_EQ(m_reports, 2);
    m_time.pass(10'000);
    EXPECT_EQ(m_reports, 2) << "nothing has changed since";
}

TEST_F(HistoryChangePacerTest, changesWithoutAnEndAreReportedFourTimesASecond)
{
    for (int change = 0; change < 100; ++change) {
        m_pacer.historyChanged();
        m_time.pass(10);
    }
    EXPECT_EQ(m_reports, 5);
}

TEST_F(HistoryChangePacerTest, aChangeAfterAWhileIsReportedAtOnce)
{
    m_pacer.historyChanged();
    m_time.pass(250);
    m_pacer.historyChanged();
    EXPECT_EQ(m_reports, 2);
}

} // namespace

} // namespace norvane
