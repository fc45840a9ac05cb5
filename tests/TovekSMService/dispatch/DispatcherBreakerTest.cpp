#include "TovekSMService/dispatch/DispatcherFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const QByteArray reset = "AT+CFUN=1,1";

class DispatcherBreaker : public DispatcherFixture
{
protected:
    DispatcherBreaker() { m_line->answers.insert(reset, FakeModemLine::answer("OK")); }

    void answerWith(const QList<int> &errors)
    {
        for (const int error : errors)
            m_submitAnswers.append(error == 0 ? FakeModemLine::info("+CMGS: 1") : cmsError(error));
    }

    void sendAll()
    {
        done(m_dispatcher->start());
        ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    }

    static QList<qint64> delaysBetween(const QList<qint64> &moments)
    {
        QList<qint64> delays;
        for (qsizetype i = 1; i < moments.size(); ++i)
            delays << moments.at(i) - moments.at(i - 1);
        return delays;
    }

    qsizetype resets() const { return m_line->commands.count(reset); }
    QStringList warnings() const { return m_events.filter(u"warning"_s); }
};

TEST_F(DispatcherBreaker, twoFailuresInARowAreNoTroubleYet)
{
    answerWith({310, 310, 0});
    add(u"600"_s);
    sendAll();
    EXPECT_TRUE(warnings().isEmpty());
    EXPECT_EQ(resets(), 0);
    EXPECT_EQ(m_line->openings, 3);
}

TEST_F(DispatcherBreaker, theThirdFailureInARowResetsTheDeviceAndIsToldOnce)
{
    answerWith({310, 310, 310, 0});
    add(u"600"_s);
    m_onSubmission = [this] {
        EXPECT_EQ(onDisk(u"SELECT attempts FROM message"_s).toInt(), 0);
        // Told when the third has failed, not before.
        EXPECT_EQ(warnings().size(), submissions() > 3 ? 1 : 0);
        EXPECT_EQ(resets(), submissions() > 3 ? 1 : 0);
    };
    sendAll();
    EXPECT_EQ(warnings(), QStringList({u"warning -29"_s}));
    const qsizetype told = m_events.indexOf(u"warning -29"_s);
    EXPECT_GT(m_events.lastIndexOf(u"info Model 7"_s), told);
    EXPECT_TRUE(has(u"sent 600 text 0"_s));
    EXPECT_EQ(m_line->openings, 4);
}

TEST_F(DispatcherBreaker, theTroubleStandsWhileTheDeviceAnswersAndTakesNoMessage)
{
    answerWith({310, 310, 310, 310, 0});
    add(u"600"_s);
    m_onSubmission = [this] {
        EXPECT_EQ(m_dispatcher->activeFaults().size(), submissions() > 3 ? 1 : 0);
    };
    sendAll();
    EXPECT_EQ(submissions(), 5);
    EXPECT_TRUE(m_dispatcher->activeFaults().isEmpty());
}

TEST_F(DispatcherBreaker, otherFailuresOfTheSameTroubleAreNotToldAgain)
{
    answerWith({310, 313, 310, 313, 330, 310, 0});
    add(u"600"_s);
    sendAll();
    EXPECT_EQ(warnings(), QStringList({u"warning -29"_s}));
    EXPECT_EQ(resets(), 1);
    EXPECT_EQ(submissions(), 7);
}

TEST_F(DispatcherBreaker, theDelayBetweenItsTriesGrows)
{
    m_settings.breakerFailures = 100; // a reset would take its own time
    makeDispatcher();
    answerWith({310, 310, 310, 310, 310, 0});
    add(u"600"_s);
    QList<qint64> openings;
    m_line->onOpen = [&] { openings << m_time.elapsed(); };
    sendAll();
    ASSERT_EQ(openings.size(), 6);
    // Between two openings lie the delay and what opening and sending take.
    const qint64 work = openings.at(1) - openings.at(0) - 20;
    EXPECT_GT(work, 0);
    EXPECT_EQ(delaysBetween(openings),
              QList<qint64>({20 + work, 40 + work, 80 + work, 80 + work, 80 + work}));
}

TEST_F(DispatcherBreaker, resetsAgainWhenTheIntervalIsOver)
{
    m_settings.resetInterval = 0;
    makeDispatcher();
    answerWith({310, 310, 310, 310, 310, 0});
    add(u"600"_s);
    sendAll();
    EXPECT_EQ(resets(), 3);
}

TEST_F(DispatcherBreaker, anEngineThatComesUpAgainKeepsTheInterval)
{
    for (const int minutes : {0, 59, 60, -1}) {
        m_clock.now = m_clock.now.addSecs(60 * minutes);
        makeDispatcher();
        m_line->commands.clear();
        answerWith({310, 310, 310, 0});
        add(u"600"_s);
        done(m_store->settings().setToRun(true));
        done(m_dispatcher->resume());
        ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
        // After 59 minutes not yet, after 60 more again; a clock set back doesn't put it off.
        EXPECT_EQ(resets(), minutes == 59 ? 0 : 1) << minutes;
    }
}

TEST_F(DispatcherBreaker, theNumberOfFailuresIsASetting)
{
    m_settings.breakerFailures = 5;
    makeDispatcher();
    answerWith({310, 310, 310, 310, 0});
    add(u"600"_s);
    sendAll();
    EXPECT_TRUE(warnings().isEmpty());
    EXPECT_EQ(resets(), 0);
}

TEST_F(DispatcherBreaker, aPartThatGoesOutEndsTheRow)
{
    answerWith({310, 310, 0, 310, 310, 0});
    add(u"600"_s);
    add(u"601"_s);
    sendAll();
    EXPECT_TRUE(warnings().isEmpty());
    EXPECT_EQ(resets(), 0);
}

TEST_F(DispatcherBreaker, aFailureOfAnotherKindShowsThatTheDeviceWorksAndEndsTheRow)
{
    answerWith({310, 310, 28, 310, 310, 0});
    add(u"600"_s);
    add(u"601"_s);
    sendAll();
    EXPECT_TRUE(warnings().isEmpty());
    EXPECT_TRUE(has(u"failed 600 text -36"_s));
}

TEST_F(DispatcherBreaker, afterARowHasEndedItIsToldAnew)
{
    answerWith({310, 310, 310, 0, 310, 310, 310, 0});
    add(u"600"_s);
    add(u"601"_s);
    sendAll();
    EXPECT_EQ(warnings(), QStringList({u"warning -29"_s, u"warning -29"_s}));
    // And the device was reset once, all the same.
    EXPECT_EQ(resets(), 1);
}

TEST_F(DispatcherBreaker, aDeviceThatIsOnlyAwayIsNotReset)
{
    m_line->openError = LineError::NoSuchDevice;
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_line->openings == 4; }));
    EXPECT_EQ(warnings(), QStringList({u"warning -2"_s}));
    m_line->openError.reset();
    m_line->answers.insert("AT+CPIN?", FakeModemLine::info("+CPIN: SIM PUK"));
    const int before = m_line->openings;
    ASSERT_TRUE(until([&] { return m_line->openings >= before + 4; }));
    // Nor is one whose SIM waits for the operator.
    EXPECT_EQ(resets(), 0);
    EXPECT_EQ(count(u"warning -31"_s), 1);
}

TEST_F(DispatcherBreaker, aMessageThatTheDeviceRefusesAloneHoldsUpNoOther)
{
    add(u"600"_s, u"odd"_s);
    add(u"601"_s);
    add(u"602"_s);
    m_onSubmission = [this] {
        // The fake line decides by the message that is in progress on disk.
        const bool isOdd =
            onDisk(u"SELECT phone FROM message WHERE state = 1"_s).toString() == "600"_L1;
        m_line->submitAnswer = isOdd ? cmsError(302) : FakeModemLine::info("+CMGS: 1");
    };
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return has(u"sent 601 text 2"_s) && has(u"sent 602 text 1"_s); }));
    EXPECT_EQ(onDisk(u"SELECT attempts FROM message"_s).toInt(), 0);
    // From now on it is known that the device takes others: its refusals use up attempts.
    for (int attempt = 1; attempt <= 4; ++attempt) {
        m_clock.now = m_clock.now.addSecs(7200);
        ASSERT_TRUE(until([&] {
            return m_store->queue().size() == 0 ||
                   onDisk(u"SELECT attempts FROM message"_s).toInt() == attempt;
        }));
    }
    ASSERT_TRUE(until([this] { return has(u"failed 600 odd -20"_s); }));
    EXPECT_EQ(m_store->queue().size(), 0);
}

TEST_F(DispatcherBreaker, aDeviceThatRefusesEveryMessageUsesUpNoAttempts)
{
    m_line->submitAnswer = cmsError(302);
    add(u"600"_s);
    add(u"601"_s);
    done(m_dispatcher->start());
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(until([this] {
            const std::optional<StoredMessage> first = given(m_store->queue().first());
            return !first || first->deliveryDate > m_clock.wallClockText();
        }));
        m_clock.now = m_clock.now.addSecs(60);
    }
    EXPECT_EQ(onDisk(u"SELECT SUM(attempts) FROM message"_s).toInt(), 0);
    EXPECT_EQ(warnings(), QStringList({u"warning -20"_s}));
    m_line->submitAnswer = FakeModemLine::info("+CMGS: 1");
    m_clock.now = m_clock.now.addSecs(7200);
    EXPECT_TRUE(until([this] { return m_store->queue().size() == 0; }));
}

/// With a device that may take too long.
class DispatcherLosses : public DispatcherFixture
{
protected:
    DispatcherLosses() : DispatcherFixture(shortTimings()) {}
};

TEST_F(DispatcherLosses, threeLostAnswersInARowPauseSendingToo)
{
    m_submitAnswers = {QByteArray(), QByteArray(), QByteArray(), FakeModemLine::info("+CMGS: 1")};
    for (const char *const phone : {"600", "601", "602", "603"})
        add(QLatin1String(phone));
    m_onSubmission = [this] { EXPECT_EQ(m_line->openings, submissions() > 3 ? 2 : 1); };
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(m_line->payloads.size(), 4);
    EXPECT_EQ(eventsButQueue().filter(u"failed"_s).size(), 3);
    EXPECT_TRUE(has(u"sent 603 text 0"_s));
    // One for each message, and one for the device.
    EXPECT_EQ(count(u"warning -39"_s), 4);
    EXPECT_EQ(m_line->commands.count(reset), 1);
}

} // namespace

} // namespace norvane
