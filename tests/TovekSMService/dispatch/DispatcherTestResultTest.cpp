#include "TovekSMService/dispatch/DispatcherFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const QByteArray pinCommand = "AT+CPIN=\"4711\"";
constexpr int anHourMs = 3'600'000;

/// What a console can read of a device test, and for how long.
class DispatcherTestResult : public DispatcherFixture
{
protected:
    DispatcherTestResult()
    {
        m_timings.keepTestedMs = anHourMs;
        makeDispatcher();
    }

    void test()
    {
        m_dispatcher->testDevice([this](qint32 result) { m_events << u"tested %1"_s.arg(result); });
    }

    /// Tests, and waits for the answer, which is the last event.
    void testUntilAnswered()
    {
        m_events.clear();
        test();
        ASSERT_TRUE(until([this] { return !m_events.filter(u"tested"_s).isEmpty(); }));
    }

    /// What a console does with an engine that runs: stop, test, start.
    void testRunningEngine()
    {
        done(m_dispatcher->stop());
        testUntilAnswered();
        done(m_dispatcher->start());
    }

    bool isClosed() const { return m_modem->state() == Modem::State::Closed; }
    bool isReady() const { return m_modem->state() == Modem::State::Ready; }
};

TEST_F(DispatcherTestResult, aFailureOfAStoppedEngineIsExplainedBeforeTheAnswer)
{
    m_line->silent = true;
    testUntilAnswered();
    EXPECT_EQ(m_events, QStringList({u"warning -39"_s, u"tested -39"_s}));
}

TEST_F(DispatcherTestResult, aFailureOfARunningEngineIsExplainedBeforeTheAnswerAndOnce)
{
    startReady();
    m_line->silent = true;
    testUntilAnswered();
    EXPECT_EQ(m_events.mid(0, 2), QStringList({u"warning -39"_s, u"tested -39"_s}));
    ASSERT_TRUE(until([this] { return m_line->openings == 3; }));
    EXPECT_EQ(count(u"warning -39"_s), 1);
}

TEST_F(DispatcherTestResult, aFailureThatIsKnownAlreadyIsExplainedInEveryTest)
{
    m_line->openError = LineError::NoSuchDevice;
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return has(u"warning -2"_s); }));
    for (int times = 0; times < 2; ++times) {
        testUntilAnswered();
        EXPECT_EQ(m_events, QStringList({u"warning -2"_s, u"tested -2"_s}));
    }
}

TEST_F(DispatcherTestResult, aSimThatStandsInTheWayIsExplainedAlthoughTheDeviceAnswers)
{
    startReady();
    m_line->answers.insert("AT+CPIN?", FakeModemLine::info("+CPIN: SIM PUK"));
    testUntilAnswered();
    EXPECT_EQ(m_events, QStringList({u"warning -31"_s, u"tested -31"_s}));
}

TEST_F(DispatcherTestResult, aTestThatTakesTooLongIsExplained)
{
    m_timings.testAnswerMs = 20;
    makeDispatcher();
    m_line->submitAnswer.clear();
    add(u"600"_s);
    startReady();
    ASSERT_TRUE(until([this] { return m_line->payloads.size() == 1; }));
    testUntilAnswered();
    EXPECT_EQ(m_events, QStringList({u"warning -39"_s, u"tested -39"_s}));
}

TEST_F(DispatcherTestResult, aDeviceThatIsTooLateForItsTestIsClosedAndNotReported)
{
    m_timings.testAnswerMs = 20;
    makeDispatcher();
    m_line->silent = true;
    testUntilAnswered();
    EXPECT_EQ(m_events, QStringList({u"warning -39"_s, u"tested -39"_s}));
    EXPECT_TRUE(isClosed());
}

TEST_F(DispatcherTestResult, aTroubleOfADeviceThatIsReadyAgainStandsNoLonger)
{
    m_line->openError = LineError::NoSuchDevice;
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return has(u"warning -2"_s); }));
    EXPECT_EQ(m_dispatcher->activeFaults().size(), 1);
    m_line->openError.reset();
    ASSERT_TRUE(until([this] { return isReady(); }));
    EXPECT_TRUE(m_dispatcher->activeFaults().isEmpty());
}

TEST_F(DispatcherTestResult, aTroubleThatStandsKeepsTheWordsInWhichItWasTold)
{
    m_line->openError = LineError::NoSuchDevice;
    m_line->detail = u"gone"_s;
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return has(u"warning -2"_s); }));
    const QList<Dispatcher::Warning> told = m_dispatcher->activeFaults();
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told.constFirst().text.contains(u"gone"_s));
    m_line->detail = u"away"_s;
    ASSERT_TRUE(until([this] { return m_line->openings == 3; }));
    EXPECT_EQ(m_dispatcher->activeFaults(), told);
}

TEST_F(DispatcherTestResult, ofTroublesThatWereToldTheOneThatWasMetLastStands)
{
    const auto standing = [this] {
        const QList<Dispatcher::Warning> faults = m_dispatcher->activeFaults();
        return faults.isEmpty() ? 0 : faults.constFirst().code;
    };
    m_line->openError = LineError::NoSuchDevice;
    done(m_dispatcher->start());
    ASSERT_TRUE(until([&] { return standing() == -2; }));
    m_line->openError = LineError::HeldByAnother;
    ASSERT_TRUE(until([&] { return standing() != -2; }));
    m_line->openError = LineError::NoSuchDevice;
    EXPECT_TRUE(until([&] { return standing() == -2; }));
    EXPECT_EQ(count(u"warning -2"_s), 1);
}

TEST_F(DispatcherTestResult, aPinThatIsSpentOnATestIsToldWithinItAndNotTriedAgain)
{
    done(m_store->settings().setDeviceSettings({0, u"4711"_s, 1, 1, u"/dev/fake, 9600"_s}));
    m_line->answers.insert("AT+CPIN?", FakeModemLine::info("+CPIN: SIM PIN"));
    m_line->answers.insert(pinCommand, FakeModemLine::answer("+CME ERROR: 16"));
    testUntilAnswered();
    EXPECT_EQ(m_events, QStringList({u"warning -27"_s, u"tested -27"_s}));
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return count(u"warning -27"_s) == 2; }));
    EXPECT_EQ(m_line->commands.count(pinCommand), 1);
}

TEST_F(DispatcherTestResult, theDeviceStaysOpenForTheStartBehindTheTest)
{
    startReady();
    testRunningEngine();
    add(u"600"_s);
    ASSERT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
    EXPECT_EQ(m_line->openings, 2) << "for the first start and for the test";
    EXPECT_EQ(eventsButQueue(),
              QStringList({u"info Model 7"_s, u"tested 1"_s, u"status 1"_s, u"sent 600 text 0"_s}));
}

TEST_F(DispatcherTestResult, nothingIsSentThroughADeviceThatIsKeptOpen)
{
    add(u"600"_s);
    testUntilAnswered();
    takeTurns();
    EXPECT_TRUE(isReady());
    EXPECT_EQ(submissions(), 0);
}

TEST_F(DispatcherTestResult, theSameDeviceIsNotReportedAgainWhenItHadToBeOpenedAnew)
{
    startReady();
    done(m_dispatcher->stop());
    testUntilAnswered();
    m_line->breakOff();
    ASSERT_TRUE(until([this] { return isClosed(); }));
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return isReady(); }));
    EXPECT_EQ(count(u"info Model 7"_s), 1) << "the test's own";
}

TEST_F(DispatcherTestResult, anotherDeviceIsReported)
{
    testUntilAnswered();
    m_line->breakOff();
    ASSERT_TRUE(until([this] { return isClosed(); }));
    m_line->answers.insert("AT+CGSN", FakeModemLine::info("490154203237519"));
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return count(u"info Model 7"_s) == 2; }));
}

TEST_F(DispatcherTestResult, eachTestReportsTheDevice)
{
    for (int times = 0; times < 2; ++times) {
        testUntilAnswered();
        EXPECT_EQ(m_events, QStringList({u"info Model 7"_s, u"tested 1"_s}));
    }
}

TEST_F(DispatcherTestResult, aDeviceThatNobodyStartsIsClosedAfterAWhile)
{
    m_timings.keepTestedMs = 20;
    makeDispatcher();
    testUntilAnswered();
    EXPECT_TRUE(until([this] { return isClosed(); }));
}

TEST_F(DispatcherTestResult, aStopClosesTheDeviceThatWasKept)
{
    testUntilAnswered();
    done(m_dispatcher->start());
    done(m_dispatcher->stop());
    // What is being read from its memories is read to the end.
    EXPECT_TRUE(until([this] { return isClosed(); }));
    done(m_dispatcher->start());
    EXPECT_TRUE(until([this] { return count(u"info Model 7"_s) == 2; }));
}

TEST_F(DispatcherTestResult, theEndOfTheEngineClosesTheDeviceThatWasKept)
{
    testUntilAnswered();
    m_dispatcher->finish();
    EXPECT_TRUE(isClosed());
    EXPECT_TRUE(has(u"finished"_s));
}

} // namespace

} // namespace norvane
