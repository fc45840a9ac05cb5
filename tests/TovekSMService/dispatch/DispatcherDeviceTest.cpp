#include "TovekSMService/dispatch/DispatcherFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class DispatcherDevice : public DispatcherFixture
{
protected:
    void test()
    {
        m_dispatcher->testDevice([this](qint32 result) { m_events << u"tested %1"_s.arg(result); });
    }

    bool isTested(int result, int times = 1)
    {
        return until([&] { return count(u"tested %1"_s.arg(result)) == times; });
    }

    bool isClosed()
    {
        return until([this] { return m_modem->state() == Modem::State::Closed; });
    }
};

TEST_F(DispatcherDevice, aStoppedEngineOpensTestsAndClosesTheDevice)
{
    add(u"600"_s);
    test();
    ASSERT_TRUE(isTested(1));
    EXPECT_EQ(eventsButQueue(), QStringList({u"info Model 7"_s, u"tested 1"_s}));
    EXPECT_TRUE(isClosed());
    EXPECT_EQ(m_line->openings, 1);
    EXPECT_EQ(submissions(), 0);
    EXPECT_EQ(m_dispatcher->knownDevice()->model, u"Model 7"_s);
}

TEST_F(DispatcherDevice, aRunningEngineAsksTheDeviceThatItHas)
{
    startReady();
    m_events.clear();
    m_line->answers.insert("AT+CSQ", FakeModemLine::info("+CSQ: 31,0"));
    test();
    ASSERT_TRUE(isTested(1));
    EXPECT_EQ(m_events, QStringList({u"info Model 7"_s, u"tested 1"_s}));
    EXPECT_EQ(m_dispatcher->knownDevice()->signal, 100);
    EXPECT_EQ(m_line->openings, 1);
    add(u"600"_s);
    EXPECT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
}

TEST_F(DispatcherDevice, aTestWaitsBehindThePartInProgressAndGoesBeforeTheNextOne)
{
    m_line->submitAnswer.clear();
    add(u"600"_s);
    add(u"601"_s);
    startReady();
    ASSERT_TRUE(until([this] { return m_line->payloads.size() == 1; }));
    m_events.clear();
    done(m_dispatcher->stop());
    test();
    takeTurns();
    EXPECT_EQ(eventsButQueue(), QStringList({u"status 0"_s}));
    m_line->say(FakeModemLine::info("+CMGS: 9"));
    ASSERT_TRUE(isTested(1));
    EXPECT_EQ(eventsButQueue(),
              QStringList({u"status 0"_s, u"sent 600 text 1"_s, u"info Model 7"_s, u"tested 1"_s}));
    EXPECT_EQ(submissions(), 1);
    EXPECT_TRUE(isClosed());
}

TEST_F(DispatcherDevice, aTestGoesBeforeTheMessagesOfARunningEngine)
{
    m_onSubmission = [this] {
        m_onSubmission = nullptr;
        test();
    };
    add(u"600"_s);
    add(u"601"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(eventsButQueue(),
              QStringList({u"status 1"_s, u"info Model 7"_s, u"sent 600 text 1"_s,
                           u"info Model 7"_s, u"tested 1"_s, u"sent 601 text 0"_s}));
}

TEST_F(DispatcherDevice, testsOfSeveralAreAnsweredTogether)
{
    test();
    test();
    EXPECT_TRUE(isTested(1, 2));
    EXPECT_EQ(m_line->openings, 1);
}

TEST_F(DispatcherDevice, aTestIsAnsweredInTimeWhateverTheDeviceDoes)
{
    m_timings.testAnswerMs = 100;
    makeDispatcher();
    m_line->submitAnswer.clear();
    add(u"600"_s);
    startReady();
    ASSERT_TRUE(until([this] { return m_line->payloads.size() == 1; }));
    test();
    ASSERT_TRUE(isTested(-39));
    // The part goes on, and so does the next test.
    m_line->say(FakeModemLine::info("+CMGS: 9"));
    ASSERT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
    test();
    EXPECT_TRUE(isTested(1));
}

TEST_F(DispatcherDevice, aTestOfASilentDeviceSaysSo)
{
    m_timings.testAnswerMs = 5000;
    makeDispatcher();
    m_line->silent = true;
    test();
    EXPECT_TRUE(isTested(-39));
    EXPECT_TRUE(isClosed());

    m_line->silent = false;
    startReady();
    m_line->silent = true;
    test();
    EXPECT_TRUE(isTested(-39, 2));
}

TEST_F(DispatcherDevice, aTestThatTheSimFailsGivesItsCode)
{
    startReady();
    m_line->answers.insert("AT+CPIN?", FakeModemLine::info("+CPIN: SIM PUK"));
    m_events.clear();
    test();
    EXPECT_TRUE(isTested(-31));
    EXPECT_FALSE(has(u"info Model 7"_s));
}

struct WrongSettings
{
    const char *name;
    const char *parameter;
    qint32 protocol;
    std::optional<LineError> lineError;
    int code;
};

class DispatcherWrongSettings : public DispatcherDevice,
                                public testing::WithParamInterface<WrongSettings>
{
protected:
    DispatcherWrongSettings()
    {
        configure(QLatin1String(GetParam().parameter), GetParam().protocol);
        m_line->openError = GetParam().lineError;
    }
};

TEST_P(DispatcherWrongSettings, failATestWithTheirCode)
{
    test();
    EXPECT_TRUE(isTested(GetParam().code));
    EXPECT_EQ(eventsButQueue(), QStringList({u"warning %1"_s.arg(GetParam().code),
                                             u"tested %1"_s.arg(GetParam().code)}));
    EXPECT_TRUE(isClosed());
}

TEST_P(DispatcherWrongSettings, areToldOnceWhileTheQueueIsKeptAndTheEngineGoesOnTrying)
{
    NotedLog log;
    add(u"600"_s);
    done(m_dispatcher->start());
    const QString warning = u"warning %1"_s.arg(GetParam().code);
    ASSERT_TRUE(until([&] { return has(warning); }));

    // A device that is there now is found without being told; settings have to be applied.
    m_line->openError.reset();
    if (!GetParam().lineError) {
        configure(u"/dev/fake, 115200"_s);
        done(m_dispatcher->applySettings());
    }
    ASSERT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
    EXPECT_EQ(count(warning), 1);
    EXPECT_EQ(eventsButQueue().filter(u"warning"_s).size(), 1);
    if (GetParam().lineError)
        return;
    EXPECT_EQ(m_line->openedDevice, u"/dev/fake"_s);
    EXPECT_EQ(m_line->openedBaud, 115200);
}

INSTANTIATE_TEST_SUITE_P(
    Settings, DispatcherWrongSettings,
    testing::Values(WrongSettings{"noDevice", "COM1, 9600", 1, LineError::NoSuchDevice, -2},
                    WrongSettings{"heldByAnother", "COM1, 9600", 1, LineError::HeldByAnother, -4},
                    WrongSettings{"wrongParameter", "somewhere", 1, std::nullopt, -3},
                    WrongSettings{"emptyParameter", "", 1, std::nullopt, -3},
                    WrongSettings{"wrongSpeed", "COM1, fast", 1, std::nullopt, -3},
                    WrongSettings{"secondProtocol", "COM1, 9600", 2, std::nullopt, -40},
                    WrongSettings{"thirdProtocol", "COM1, 9600", 3, std::nullopt, -40},
                    WrongSettings{"noProtocol", "COM1, 9600", 0, std::nullopt, -3},
                    WrongSettings{"protocolBelow", "COM1, 9600", -1, std::nullopt, -3},
                    WrongSettings{"protocolAbove", "COM1, 9600", 4, std::nullopt, -3}),
    [](const auto &settings) { return std::string(settings.param.name); });

TEST_F(DispatcherDevice, aDeviceThatStaysAwayIsTriedAgainWithGrowingDelaysAndToldOnce)
{
    m_line->openError = LineError::NoSuchDevice;
    QList<qint64> openings;
    m_line->onOpen = [&] { openings << m_time.elapsed(); };
    done(m_dispatcher->start());
    ASSERT_TRUE(until([&] { return openings.size() == 5; }));
    EXPECT_EQ(openings, QList<qint64>({0, 20, 20 + 40, 20 + 40 + 80, 20 + 40 + 80 + 80}));
    EXPECT_EQ(count(u"warning -2"_s), 1);
    m_line->openError.reset();
    EXPECT_TRUE(until([this] { return has(u"info Model 7"_s); }));
}

TEST_F(DispatcherDevice, startAndNewSettingsTryAtOnceAndTellTheTroubleAnew)
{
    m_retryTimes.minReopenMs = 3'600'000;
    m_retryTimes.maxReopenMs = 3'600'000;
    makeDispatcher();
    m_line->openError = LineError::NoSuchDevice;
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return count(u"warning -2"_s) == 1; }));
    done(m_dispatcher->applySettings());
    ASSERT_TRUE(until([this] { return count(u"warning -2"_s) == 2; }));
    done(m_dispatcher->stop());
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return count(u"warning -2"_s) == 3; }));
    m_line->openError.reset();
    test();
    EXPECT_TRUE(isTested(1));
    EXPECT_EQ(m_line->openings, 4);
}

TEST_F(DispatcherDevice, aTroubleIsForgottenWhenTheDeviceHasBeenReadyForAWhile)
{
    m_timings.steadyMs = 30;
    makeDispatcher();
    startReady();
    for (int times = 1; times <= 3; ++times) {
        m_line->breakOff();
        ASSERT_TRUE(until([&] { return count(u"warning -5"_s) == times; })) << times;
        ASSERT_TRUE(until([&] { return m_line->openings == times + 1; }));
        ASSERT_TRUE(until([this] { return m_modem->state() == Modem::State::Ready; }));
        m_time.pass(m_timings.steadyMs);
    }
    // A moment less, and it is the same trouble still.
    m_line->breakOff();
    ASSERT_TRUE(until([this] { return count(u"warning -5"_s) == 4; }));
    ASSERT_TRUE(until([this] { return m_modem->state() == Modem::State::Ready; }));
    m_time.pass(m_timings.steadyMs - 1);
    m_line->breakOff();
    ASSERT_TRUE(until([this] { return m_line->openings == 6; }));
    EXPECT_EQ(count(u"warning -5"_s), 4);
}

TEST_F(DispatcherDevice, aDeviceThatComesAndGoesIsToldOnce)
{
    startReady();
    for (int times = 1; times <= 3; ++times) {
        m_line->breakOff();
        ASSERT_TRUE(until([&] { return m_line->openings == times + 1; }));
        ASSERT_TRUE(until([this] { return m_modem->state() == Modem::State::Ready; }));
    }
    EXPECT_EQ(count(u"warning -5"_s), 1);
    EXPECT_EQ(count(u"info Model 7"_s), 4);
}

TEST_F(DispatcherDevice, newSettingsWaitForThePartInProgressAndThenComeIntoForce)
{
    m_line->submitAnswer.clear();
    add(u"600"_s);
    add(u"601"_s);
    startReady();
    ASSERT_TRUE(until([this] { return m_line->payloads.size() == 1; }));
    configure(u"/dev/other, 300"_s);
    done(m_dispatcher->applySettings());
    takeTurns();
    EXPECT_EQ(m_line->openings, 1);
    m_line->submitAnswer = FakeModemLine::info("+CMGS: 9");
    m_line->say(m_line->submitAnswer);
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(m_line->openings, 2);
    EXPECT_EQ(m_line->openedDevice, u"/dev/other"_s);
    EXPECT_EQ(taken(), QStringList({u"600 text"_s, u"601 text"_s}));
}

TEST_F(DispatcherDevice, aStartPutsNewSettingsInForce)
{
    startReady();
    configure(u"/dev/other, 300"_s);
    done(m_dispatcher->start());
    EXPECT_TRUE(until([this] { return m_line->openedDevice == u"/dev/other"_s; }));
    EXPECT_EQ(m_line->openings, 2);
}

TEST_F(DispatcherDevice, aStartWithTheSameSettingsLeavesTheDeviceOpen)
{
    startReady();
    done(m_dispatcher->start());
    takeTurns();
    EXPECT_EQ(m_line->openings, 1);
}

TEST_F(DispatcherDevice, settingsThatWereOnlyStoredAreNotInForce)
{
    startReady();
    done(m_dispatcher->stop());
    configure(u"/dev/other, 300"_s);
    test();
    EXPECT_TRUE(isTested(1));
    EXPECT_NE(m_line->openedDevice, u"/dev/other"_s);
}

TEST_F(DispatcherDevice, aDeviceThatWasLostIsNoLongerKnown)
{
    startReady();
    ASSERT_TRUE(m_dispatcher->knownDevice().has_value());
    configure(u"/dev/other, 300"_s);
    m_line->openError = LineError::NoSuchDevice;
    done(m_dispatcher->applySettings());
    ASSERT_TRUE(until([this] { return has(u"warning -2"_s); }));
    EXPECT_FALSE(m_dispatcher->knownDevice().has_value());
}

TEST_F(DispatcherDevice, newSettingsDoNotCutOffATest)
{
    startReady();
    m_events.clear();
    test();
    ASSERT_EQ(m_modem->state(), Modem::State::Busy);
    done(m_dispatcher->applySettings());
    ASSERT_TRUE(isTested(1));
    EXPECT_TRUE(until([this] { return m_line->openings == 2; }));
}

TEST_F(DispatcherDevice, newSettingsOfAStoppedEngineOpenNothing)
{
    done(m_dispatcher->applySettings());
    takeTurns();
    EXPECT_EQ(m_line->openings, 0);
}

TEST_F(DispatcherDevice, newSettingsWhileTheDeviceIsOpenedBeginAnew)
{
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_modem->state() == Modem::State::Initialising; }));
    configure(u"/dev/other, 300"_s);
    done(m_dispatcher->applySettings());
    ASSERT_TRUE(until([this] { return has(u"info Model 7"_s); }));
    EXPECT_EQ(m_line->openedDevice, u"/dev/other"_s);
    EXPECT_EQ(count(u"info Model 7"_s), 1);
}

TEST_F(DispatcherDevice, aStopClosesTheDevice)
{
    startReady();
    done(m_dispatcher->stop());
    EXPECT_TRUE(isClosed());
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_modem->state() == Modem::State::Initialising; }));
    done(m_dispatcher->stop());
    EXPECT_EQ(m_modem->state(), Modem::State::Closed);
}

TEST_F(DispatcherDevice, thePinOfTheSettingsIsTried)
{
    done(m_store->settings().setDeviceSettings({0, u"4711"_s, 1, 1, u"/dev/fake, 9600"_s}));
    m_line->answers.insert("AT+CPIN?", FakeModemLine::info("+CPIN: SIM PIN"));
    done(m_dispatcher->start());
    EXPECT_TRUE(until([this] { return m_line->commands.contains("AT+CPIN=\"4711\""); }));
}

TEST_F(DispatcherDevice, theEngineEndsBehindThePartInProgress)
{
    m_line->submitAnswer.clear();
    add(u"600"_s);
    add(u"601"_s);
    startReady();
    ASSERT_TRUE(until([this] { return m_line->payloads.size() == 1; }));
    m_dispatcher->finish();
    takeTurns();
    EXPECT_FALSE(has(u"finished"_s));
    m_line->say(FakeModemLine::info("+CMGS: 9"));
    ASSERT_TRUE(until([this] { return has(u"finished"_s); }));
    EXPECT_TRUE(has(u"sent 600 text 1"_s));
    EXPECT_EQ(submissions(), 1);
    EXPECT_EQ(m_modem->state(), Modem::State::Closed);
    EXPECT_TRUE(given(m_store->settings().isToRun()));
}

TEST_F(DispatcherDevice, anIdleEngineEndsAtOnce)
{
    m_dispatcher->finish();
    EXPECT_TRUE(has(u"finished"_s));
}

TEST_F(DispatcherDevice, testsThatWaitAreAnsweredWhenTheEngineEnds)
{
    test();
    m_dispatcher->finish();
    EXPECT_TRUE(has(u"tested -5"_s));
    EXPECT_EQ(m_events.constLast(), u"finished"_s);

    makeDispatcher();
    startReady();
    m_events.clear();
    test();
    m_dispatcher->finish();
    EXPECT_TRUE(has(u"tested -5"_s));
    EXPECT_TRUE(has(u"finished"_s));
}

} // namespace

} // namespace norvane
