#include "TovekSMService/dispatch/PacedRun.h"

#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "support/TurnedTime.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class PacedRunTest : public testing::Test
{
protected:
    static DispatcherTimings timings()
    {
        DispatcherTimings timings;
        timings.runLateMs = 20;
        timings.run = {5, 8};
        return timings;
    }

    static QList<LeavingMessage> messages(int count)
    {
        QList<LeavingMessage> messages;
        for (qint64 id = 1; id <= count; ++id) {
            LeavingMessage leaving;
            leaving.message.id = id;
            messages.append(leaving);
        }
        return messages;
    }
    /// Hands one message to the device, which takes it at once.
    void takeOne() { m_run.recordTaken({m_run.takeNext().message, 1, u"at"_s, {}}); }
    /// A whole run that the device takes at once.
    void runOf(int count)
    {
        m_run.start(messages(count));
        while (m_run.hasNext())
            takeOne();
        m_run.end();
    }
    static QList<qint64> ids(const SendingRun &run)
    {
        QList<qint64> ids;
        for (const SendingRun::Taken &taken : run.taken())
            ids.append(taken.message.id);
        return ids;
    }

    TurnedTime m_time;
    PacedRun m_run{timings(), m_time};
    QSignalSpy m_late{&m_run, &PacedRun::late};
};

TEST_F(PacedRunTest, growsWhileTheDeviceIsQuick)
{
    for (const int length : {1, 2, 4, 8, 8}) {
        EXPECT_EQ(m_run.maxLength(), length);
        runOf(length);
    }
}

TEST_F(PacedRunTest, staysAtOneMessageForADeviceThatNeedsTheMoment)
{
    m_run.start(messages(1));
    m_time.pass(3);
    takeOne();
    EXPECT_EQ(m_run.maxLength(), 1);
}

TEST_F(PacedRunTest, isLateWhenItsRestHasWaitedForTooLong)
{
    runOf(1);
    m_run.start(messages(2));
    takeOne();
    m_time.pass(19);
    EXPECT_EQ(m_late.count(), 0);
    m_time.pass(1);
    EXPECT_EQ(m_late.count(), 1);
    EXPECT_EQ(m_run.maxLength(), 1) << "the pace is forgotten before that is reported";
    m_time.pass(1000);
    EXPECT_EQ(m_late.count(), 1);
}

TEST_F(PacedRunTest, aSingleMessageIsNeverLate)
{
    m_run.start(messages(1));
    m_time.pass(60'000);
    EXPECT_EQ(m_late.count(), 0);
    EXPECT_EQ(m_time.alarms(), 0);
}

TEST_F(PacedRunTest, aRunThatHasEndedIsNotLate)
{
    m_run.start(messages(2));
    m_run.end();
    m_time.pass(60'000);
    EXPECT_EQ(m_late.count(), 0);
}

TEST_F(PacedRunTest, givesWhatWasTakenAndWhatIsLeft)
{
    m_run.start(messages(3));
    takeOne();
    takeOne();
    const SendingRun ended = m_run.end();
    EXPECT_EQ(ids(ended), (QList<qint64>{1, 2}));
    EXPECT_TRUE(ended.hasNext());
    EXPECT_FALSE(m_run.hasNext());
    EXPECT_TRUE(m_run.end().isEmpty());
}

TEST_F(PacedRunTest, aRunThatIsCutShortSaysNothingOfThePace)
{
    runOf(1);
    m_run.start(messages(2));
    takeOne();
    m_run.end();
    EXPECT_EQ(m_run.maxLength(), 2);
}

TEST_F(PacedRunTest, thePaceIsThatOfTheWholeRun)
{
    runOf(1);
    runOf(2);
    ASSERT_EQ(m_run.maxLength(), 4);
    m_run.start(messages(4));
    for (int message = 0; message < 4; ++message) {
        m_time.pass(2);
        takeOne();
    }
    EXPECT_EQ(m_run.maxLength(), 2) << "2 ms a message are 2 in a moment of 5";
}

TEST_F(PacedRunTest, isLongerWhereItsCommitTakesLonger)
{
    runOf(1);
    runOf(2);
    m_time.pass(16); // until that is committed with what follows
    m_run.start(messages(4));
    for (int message = 0; message < 4; ++message) {
        m_time.pass(2);
        takeOne();
    }
    EXPECT_EQ(m_run.maxLength(), 8) << "2 ms a message are 8 in 16";
}

TEST_F(PacedRunTest, anIdleTimeIsNoCommit)
{
    runOf(1);
    runOf(2);
    m_run.noteCommitted();
    m_time.pass(16);
    m_run.start(messages(4));
    for (int message = 0; message < 4; ++message) {
        m_time.pass(2);
        takeOne();
    }
    EXPECT_EQ(m_run.maxLength(), 2);
}

TEST_F(PacedRunTest, isLateLaterWhereItsCommitTakesLonger)
{
    runOf(1);
    m_time.pass(16);
    m_run.start(messages(2));
    takeOne();
    m_time.pass(63);
    EXPECT_EQ(m_late.count(), 0);
    m_time.pass(1);
    EXPECT_EQ(m_late.count(), 1);
}

TEST_F(PacedRunTest, forgetsThePace)
{
    runOf(1);
    m_run.forgetPace();
    EXPECT_EQ(m_run.maxLength(), 1);
}

} // namespace

} // namespace norvane
