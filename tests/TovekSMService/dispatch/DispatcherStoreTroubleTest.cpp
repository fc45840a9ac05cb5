#include "TovekSMService/dispatch/DispatcherFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A store that another program locks at the wrong moment.
class DispatcherStoreTrouble : public DispatcherFixture
{
protected:
    void lockAtSubmission()
    {
        m_onSubmission = [this] {
            m_onSubmission = nullptr;
            m_other.lock();
        };
    }

    bool outcomeWaits()
    {
        return until([this] { return m_log.count(u"outcome waits"_s) >= 2; });
    }

    NotedLog m_log;
    OtherConnection m_other{file()};
};

TEST_F(DispatcherStoreTrouble, itStandsFromTheWarningUntilItIsOver)
{
    m_dispatcher->warnOfStore(u"refused"_s);
    const QList<Dispatcher::Warning> faults = m_dispatcher->activeFaults();
    ASSERT_EQ(faults.size(), 1);
    EXPECT_EQ(faults.constFirst().code, -57);
    EXPECT_TRUE(faults.constFirst().text.contains(u"refused"_s));
    m_dispatcher->clearStoreFault();
    EXPECT_TRUE(m_dispatcher->activeFaults().isEmpty());
}

TEST_F(DispatcherStoreTrouble, withoutItsCommitNoPartLeaves)
{
    for (const int parts : {1, 2}) {
        SCOPED_TRACE(parts);
        m_clock.now = m_clock.now.addSecs(-60);
        const qsizetype before = m_log.count(u"can't be used"_s);
        m_line->commands.clear();
        m_line->payloads.clear();
        startReady();
        add(u"600"_s, longText(parts));
        m_other.lock();
        m_clock.now = m_clock.now.addSecs(60);
        ASSERT_TRUE(until([&] { return m_log.count(u"can't be used"_s) >= before + 2; }));
        EXPECT_EQ(submissions(), 0);
        m_other.unlock();
        ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
        EXPECT_EQ(m_line->payloads.size(), parts);
    }
}

TEST_F(DispatcherStoreTrouble, whereWritingIsForbiddenNoPartLeaves)
{
    m_clock.now = m_clock.now.addSecs(-60);
    startReady();
    add(u"600"_s);
    runOnStoreConnection(file(), u"PRAGMA query_only = ON"_s);
    m_clock.now = m_clock.now.addSecs(60);
    ASSERT_TRUE(until([this] { return m_log.count(u"can't be used"_s) >= 2; }));
    EXPECT_EQ(submissions(), 0);
    runOnStoreConnection(file(), u"PRAGMA query_only = OFF"_s);
    ASSERT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
    EXPECT_EQ(m_line->payloads.size(), 1);
}

TEST_F(DispatcherStoreTrouble, anAcceptedPartIsNotForgottenAndNothingIsSentBeforeItIsOnDisk)
{
    lockAtSubmission();
    add(u"600"_s);
    add(u"601"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(outcomeWaits());
    EXPECT_EQ(submissions(), 1);
    EXPECT_FALSE(has(u"sent 600 text 1"_s));
    EXPECT_EQ(onDisk(u"SELECT state FROM message"_s).toInt(), 1);
    m_other.unlock();
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(taken(), QStringList({u"600 text"_s, u"601 text"_s}));
    EXPECT_EQ(count(u"sent 600 text 1"_s), 1);
    EXPECT_EQ(count(u"sent 601 text 0"_s), 1);
}

TEST_F(DispatcherStoreTrouble, aMessageIsNotSentAgainWhileItsOutcomeIsOnTheWayToDisk)
{
    m_timings.storeRetryMs = 200;
    makeDispatcher();
    lockAtSubmission();
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_log.count(u"outcome waits"_s) == 1; }));
    // The store is back, and something else happens before the outcome's next try.
    m_other.unlock();
    m_dispatcher->work();
    takeTurns();
    EXPECT_EQ(submissions(), 1);
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(m_line->payloads.size(), 1);
}

TEST_F(DispatcherStoreTrouble, aPartBetweenOthersIsNotRepeatedWhenItsNoteComesLate)
{
    lockAtSubmission();
    add(u"600"_s, longText(2));
    done(m_dispatcher->start());
    ASSERT_TRUE(outcomeWaits());
    m_other.unlock();
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    ASSERT_EQ(m_line->payloads.size(), 2);
    EXPECT_NE(m_line->payloads.at(0), m_line->payloads.at(1));
}

struct LateOutcome
{
    const char *name;
    int error;
    const char *event; ///< that comes when the outcome is on disk
};

class DispatcherLateFailure : public DispatcherStoreTrouble,
                              public testing::WithParamInterface<LateOutcome>
{};

TEST_P(DispatcherLateFailure, isKeptUntilItIsOnDisk)
{
    lockAtSubmission();
    m_submitAnswers = {"\r\n+CMS ERROR: " + QByteArray::number(GetParam().error) + "\r\n",
                       FakeModemLine::info("+CMGS: 1")};
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(outcomeWaits());
    const QString event = QLatin1String(GetParam().event);
    EXPECT_FALSE(has(event));
    EXPECT_EQ(submissions(), 1);
    m_other.unlock();
    ASSERT_TRUE(until([&] {
        m_clock.now = m_clock.now.addSecs(60);
        return has(event);
    }));
    EXPECT_EQ(m_store->queue().size(), 0);
}

INSTANTIATE_TEST_SUITE_P(Outcomes, DispatcherLateFailure,
                         testing::Values(LateOutcome{"permanent", 28, "failed 600 text -36"},
                                         LateOutcome{"temporary", 41, "sent 600 text 0"},
                                         LateOutcome{"ofTheDevice", 310, "sent 600 text 0"}),
                         [](const auto &outcome) { return std::string(outcome.param.name); });

TEST_F(DispatcherStoreTrouble, theDeviceIsTestedWhileAnOutcomeWaitsForTheStore)
{
    lockAtSubmission();
    add(u"600"_s);
    add(u"601"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(outcomeWaits());
    qint32 answer = 0;
    m_dispatcher->testDevice([&](qint32 result) { answer = result; });
    EXPECT_TRUE(until([&] { return answer == 1; }));
    EXPECT_EQ(submissions(), 1);
    m_other.unlock();
    EXPECT_TRUE(until([this] { return m_store->queue().size() == 0; }));
}

TEST_F(DispatcherStoreTrouble, aStartOrStopThatCannotBeStoredIsNone)
{
    m_other.lock();
    EXPECT_FALSE(m_dispatcher->start());
    EXPECT_EQ(m_dispatcher->status(), 0);
    m_other.unlock();
    done(m_dispatcher->start());
    m_other.lock();
    EXPECT_FALSE(m_dispatcher->stop());
    EXPECT_EQ(m_dispatcher->status(), 1);
    EXPECT_EQ(eventsButQueue(), QStringList({u"status 1"_s}));
    m_other.unlock();
}

TEST_F(DispatcherStoreTrouble, anEngineComesUpAndReportsWhatWasInterruptedWhenTheStoreIsBack)
{
    done(m_store->settings().setToRun(true));
    done(m_store->queue().add({{u"600"_s, u"text"_s}, {u"601"_s, u"text"_s}}, noon()));
    done(m_store->queue().begin({{given(m_store->queue().first())->id, std::nullopt, {}}}));
    m_other.lock();
    done(m_dispatcher->resume());
    EXPECT_EQ(m_dispatcher->status(), 1);
    ASSERT_TRUE(outcomeWaits());
    EXPECT_EQ(submissions(), 0);
    EXPECT_FALSE(has(u"warning -39"_s));
    m_other.unlock();
    ASSERT_TRUE(until([this] { return has(u"sent 601 text 0"_s); }));
    EXPECT_EQ(count(u"warning -39"_s), 1);
    EXPECT_EQ(taken(), QStringList({u"601 text"_s}));
    // A console listens by then: it hears of it at once, and nothing is kept for the next one.
    EXPECT_EQ(m_events.filter(u" -39"_s).filter(u"failed "_s).size(), 1);
    EXPECT_TRUE(
        until([this] { return given(m_store->outcomes().unreportedFailures()).isEmpty(); }));
}

TEST_F(DispatcherStoreTrouble, troubleThatLastsIsToldOnceAndEndsByItself)
{
    m_timings.storeFaultMs = 200;
    makeDispatcher();
    const QSignalSpy lost(m_dispatcher.get(), &Dispatcher::storeLost);
    for (int round = 1; round <= 2; ++round) {
        startReady();
        m_clock.now = m_clock.now.addSecs(-60);
        add(u"600"_s);
        m_other.lock();
        m_clock.now = m_clock.now.addSecs(60);
        m_dispatcher->work();
        ASSERT_TRUE(until([this] { return !m_dispatcher->storeFault().isEmpty(); }));
        EXPECT_EQ(count(u"warning -57"_s), round - 1);
        ASSERT_TRUE(until([&] { return count(u"warning -57"_s) == round; }));
        const qsizetype logged = m_log.count(u"can't be used"_s);
        ASSERT_TRUE(until([&] { return m_log.count(u"can't be used"_s) >= logged + 20; }));
        m_other.unlock();
        ASSERT_TRUE(until([this] { return m_dispatcher->storeFault().isEmpty(); }));
        ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
        EXPECT_EQ(count(u"warning -57"_s), round);
    }
    // Another program's lock is no reason to open the file anew.
    EXPECT_TRUE(lost.isEmpty());
}

TEST_F(DispatcherStoreTrouble, aStoreThatGoesOnFailingIsAskedForAnew)
{
    m_timings.storeFaultMs = 100;
    makeDispatcher();
    const QSignalSpy lost(m_dispatcher.get(), &Dispatcher::storeLost);
    startReady();
    runOnStoreConnection(file(), u"PRAGMA query_only = ON"_s);
    done(m_store->queue().first());
    const StoreResult<> written = m_store->settings().setToRun(false);
    ASSERT_FALSE(written) << "the store can be written";
    m_dispatcher->noticeStoreFailure(written.error());
    ASSERT_TRUE(until([&] { return lost.size() == 2; }));
    EXPECT_FALSE(lost.constFirst().constFirst().toBool());
    runOnStoreConnection(file(), u"PRAGMA query_only = OFF"_s);
    ASSERT_TRUE(until([this] { return m_dispatcher->storeFault().isEmpty(); }));
}

TEST_F(DispatcherStoreTrouble, aReplacedStoreStopsTheEngineAndForgetsItsDevice)
{
    startReady();
    m_events.clear();
    m_dispatcher->storeReplaced();
    EXPECT_TRUE(until([this] { return m_modem->state() == Modem::State::Closed; }));
    EXPECT_EQ(m_dispatcher->status(), 0);
    EXPECT_FALSE(m_dispatcher->knownDevice());
    EXPECT_EQ(m_events, QStringList({u"status 0"_s, u"queue"_s}));
}

TEST_F(DispatcherStoreTrouble, aStoppedMessageIsLetGoWhenTheStoreIsBack)
{
    m_onSubmission = [this] {
        m_onSubmission = nullptr;
        done(m_dispatcher->stop());
        m_other.lock();
    };
    add(u"600"_s, longText(2));
    done(m_dispatcher->start());
    ASSERT_TRUE(outcomeWaits());
    m_other.unlock();
    const QString state = u"SELECT state || ' ' || parts_sent FROM message"_s;
    EXPECT_TRUE(until([&] { return onDisk(state).toString() == u"0 1"_s; }));
    EXPECT_EQ(m_line->payloads.size(), 1);
}

TEST_F(DispatcherStoreTrouble, messagesOfAnEngineThatComesUpStoppedAreLetGoWhenTheStoreIsBack)
{
    done(m_store->queue().add({{u"600"_s, longText(2)}}, noon()));
    const qint64 id = given(m_store->queue().first())->id;
    done(m_store->queue().begin({{id, 1, {}}}));
    done(m_store->queue().endPart(id, 1));
    m_other.lock();
    done(m_dispatcher->resume());
    ASSERT_TRUE(until([this] { return m_log.count(u"could not be released"_s) >= 2; }));
    m_other.unlock();
    const QString state = u"SELECT state FROM message"_s;
    EXPECT_TRUE(until([&] { return onDisk(state).toInt() == 0; }));
}

TEST_F(DispatcherStoreTrouble, theEngineEndsWhenTheOutcomeIsOnDisk)
{
    lockAtSubmission();
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(outcomeWaits());
    m_dispatcher->finish();
    takeTurns();
    EXPECT_FALSE(has(u"finished"_s));
    m_other.unlock();
    ASSERT_TRUE(until([this] { return has(u"finished"_s); }));
    EXPECT_EQ(m_store->queue().size(), 0);
}

} // namespace

} // namespace norvane
