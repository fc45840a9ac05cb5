#include "TovekSMService/dispatch/DispatcherFixture.h"

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
        return until([this] { return m_log.count(QStringLiteral("outcome waits")) >= 2; });
    }

    NotedLog m_log;
    OtherConnection m_other{file()};
};

TEST_F(DispatcherStoreTrouble, itStandsFromTheWarningUntilItIsOver)
{
    m_dispatcher->warnOfStore(QStringLiteral("refused"));
    const QList<Dispatcher::Warning> troubles = m_dispatcher->standingTroubles();
    ASSERT_EQ(troubles.size(), 1);
    EXPECT_EQ(troubles.constFirst().code, -57);
    EXPECT_TRUE(troubles.constFirst().text.contains(QStringLiteral("refused")));
    m_dispatcher->endStoreTrouble();
    EXPECT_TRUE(m_dispatcher->standingTroubles().isEmpty());
}

TEST_F(DispatcherStoreTrouble, withoutItsCommitNoPartLeaves)
{
    for (const int parts : {1, 2}) {
        SCOPED_TRACE(parts);
        m_clock.now = m_clock.now.addSecs(-60);
        const qsizetype before = m_log.count(QStringLiteral("can't be used"));
        m_line->commands.clear();
        m_line->payloads.clear();
        startReady();
        add(QStringLiteral("600"), longText(parts));
        m_other.lock();
        m_clock.now = m_clock.now.addSecs(60);
        ASSERT_TRUE(
            until([&] { return m_log.count(QStringLiteral("can't be used")) >= before + 2; }));
        EXPECT_EQ(submissions(), 0);
        m_other.unlock();
        ASSERT_TRUE(until([this] { return m_store->size() == 0; }));
        EXPECT_EQ(m_line->payloads.size(), parts);
    }
}

TEST_F(DispatcherStoreTrouble, whereWritingIsForbiddenNoPartLeaves)
{
    m_clock.now = m_clock.now.addSecs(-60);
    startReady();
    add(QStringLiteral("600"));
    runOnStoreConnection(file(), QStringLiteral("PRAGMA query_only = ON"));
    m_clock.now = m_clock.now.addSecs(60);
    ASSERT_TRUE(until([this] { return m_log.count(QStringLiteral("can't be used")) >= 2; }));
    EXPECT_EQ(submissions(), 0);
    runOnStoreConnection(file(), QStringLiteral("PRAGMA query_only = OFF"));
    ASSERT_TRUE(until([this] { return has(QStringLiteral("sent 600 text 0")); }));
    EXPECT_EQ(m_line->payloads.size(), 1);
}

TEST_F(DispatcherStoreTrouble, anAcceptedPartIsNotForgottenAndNothingIsSentBeforeItIsOnDisk)
{
    lockAtSubmission();
    add(QStringLiteral("600"));
    add(QStringLiteral("601"));
    m_dispatcher->start();
    ASSERT_TRUE(outcomeWaits());
    EXPECT_EQ(submissions(), 1);
    EXPECT_FALSE(has(QStringLiteral("sent 600 text 1")));
    EXPECT_EQ(onDisk(QStringLiteral("SELECT state FROM message")).toInt(), 1);
    m_other.unlock();
    ASSERT_TRUE(until([this] { return m_store->size() == 0; }));
    EXPECT_EQ(taken(), QStringList({QStringLiteral("600 text"), QStringLiteral("601 text")}));
    EXPECT_EQ(count(QStringLiteral("sent 600 text 1")), 1);
    EXPECT_EQ(count(QStringLiteral("sent 601 text 0")), 1);
}

TEST_F(DispatcherStoreTrouble, aMessageIsNotSentAgainWhileItsOutcomeIsOnTheWayToDisk)
{
    m_timings.storeAgainMs = 200;
    makeDispatcher();
    lockAtSubmission();
    add(QStringLiteral("600"));
    m_dispatcher->start();
    ASSERT_TRUE(until([this] { return m_log.count(QStringLiteral("outcome waits")) == 1; }));
    // The store is back, and something else happens before the outcome's next try.
    m_other.unlock();
    m_dispatcher->work();
    takeTurns();
    EXPECT_EQ(submissions(), 1);
    ASSERT_TRUE(until([this] { return m_store->size() == 0; }));
    EXPECT_EQ(m_line->payloads.size(), 1);
}

TEST_F(DispatcherStoreTrouble, aPartBetweenOthersIsNotRepeatedWhenItsNoteComesLate)
{
    lockAtSubmission();
    add(QStringLiteral("600"), longText(2));
    m_dispatcher->start();
    ASSERT_TRUE(outcomeWaits());
    m_other.unlock();
    ASSERT_TRUE(until([this] { return m_store->size() == 0; }));
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
    add(QStringLiteral("600"));
    m_dispatcher->start();
    ASSERT_TRUE(outcomeWaits());
    const QString event = QLatin1String(GetParam().event);
    EXPECT_FALSE(has(event));
    EXPECT_EQ(submissions(), 1);
    m_other.unlock();
    ASSERT_TRUE(until([&] {
        m_clock.now = m_clock.now.addSecs(60);
        return has(event);
    }));
    EXPECT_EQ(m_store->size(), 0);
}

INSTANTIATE_TEST_SUITE_P(Outcomes, DispatcherLateFailure,
                         testing::Values(LateOutcome{"permanent", 28, "failed 600 text -36"},
                                         LateOutcome{"temporary", 41, "sent 600 text 0"},
                                         LateOutcome{"ofTheDevice", 310, "sent 600 text 0"}),
                         [](const auto &outcome) { return std::string(outcome.param.name); });

TEST_F(DispatcherStoreTrouble, theDeviceIsTestedWhileAnOutcomeWaitsForTheStore)
{
    lockAtSubmission();
    add(QStringLiteral("600"));
    add(QStringLiteral("601"));
    m_dispatcher->start();
    ASSERT_TRUE(outcomeWaits());
    qint32 answer = 0;
    m_dispatcher->testDevice([&](qint32 result) { answer = result; });
    EXPECT_TRUE(until([&] { return answer == 1; }));
    EXPECT_EQ(submissions(), 1);
    m_other.unlock();
    EXPECT_TRUE(until([this] { return m_store->size() == 0; }));
}

TEST_F(DispatcherStoreTrouble, aStartOrStopThatCannotBeStoredIsNone)
{
    m_other.lock();
    EXPECT_THROW(m_dispatcher->start(), StoreFailure);
    EXPECT_EQ(m_dispatcher->status(), 0);
    m_other.unlock();
    m_dispatcher->start();
    m_other.lock();
    EXPECT_THROW(m_dispatcher->stop(), StoreFailure);
    EXPECT_EQ(m_dispatcher->status(), 1);
    EXPECT_EQ(eventsButQueue(), QStringList({QStringLiteral("status 1")}));
    m_other.unlock();
}

TEST_F(DispatcherStoreTrouble, anEngineComesUpAndReportsWhatWasInterruptedWhenTheStoreIsBack)
{
    m_store->setToRun(true);
    m_store->add({{QStringLiteral("600"), QStringLiteral("text")},
                  {QStringLiteral("601"), QStringLiteral("text")}},
                 noon());
    m_store->beginPart(m_store->first()->id, std::nullopt, {});
    m_other.lock();
    m_dispatcher->resume();
    EXPECT_EQ(m_dispatcher->status(), 1);
    ASSERT_TRUE(outcomeWaits());
    EXPECT_EQ(submissions(), 0);
    EXPECT_FALSE(has(QStringLiteral("warning -39")));
    m_other.unlock();
    ASSERT_TRUE(until([this] { return has(QStringLiteral("sent 601 text 0")); }));
    EXPECT_EQ(count(QStringLiteral("warning -39")), 1);
    EXPECT_EQ(taken(), QStringList({QStringLiteral("601 text")}));
    // A console listens by then: it hears of it at once, and nothing is kept for the next one.
    EXPECT_EQ(m_events.filter(QStringLiteral(" -39")).filter(QStringLiteral("failed ")).size(), 1);
    EXPECT_TRUE(until([this] { return m_store->unreportedFailures().isEmpty(); }));
}

TEST_F(DispatcherStoreTrouble, troubleThatLastsIsToldOnceAndEndsByItself)
{
    m_timings.storeTroubleMs = 200;
    makeDispatcher();
    const QSignalSpy lost(m_dispatcher.get(), &Dispatcher::storeLost);
    for (int round = 1; round <= 2; ++round) {
        startReady();
        m_clock.now = m_clock.now.addSecs(-60);
        add(QStringLiteral("600"));
        m_other.lock();
        m_clock.now = m_clock.now.addSecs(60);
        m_dispatcher->work();
        ASSERT_TRUE(until([this] { return !m_dispatcher->storeTrouble().isEmpty(); }));
        EXPECT_EQ(count(QStringLiteral("warning -57")), round - 1);
        ASSERT_TRUE(until([&] { return count(QStringLiteral("warning -57")) == round; }));
        const qsizetype logged = m_log.count(QStringLiteral("can't be used"));
        ASSERT_TRUE(
            until([&] { return m_log.count(QStringLiteral("can't be used")) >= logged + 20; }));
        m_other.unlock();
        ASSERT_TRUE(until([this] { return m_dispatcher->storeTrouble().isEmpty(); }));
        ASSERT_TRUE(until([this] { return m_store->size() == 0; }));
        EXPECT_EQ(count(QStringLiteral("warning -57")), round);
    }
    // Another program's lock is no reason to open the file anew.
    EXPECT_TRUE(lost.isEmpty());
}

TEST_F(DispatcherStoreTrouble, aStoreThatGoesOnFailingIsAskedForAnew)
{
    m_timings.storeTroubleMs = 100;
    makeDispatcher();
    const QSignalSpy lost(m_dispatcher.get(), &Dispatcher::storeLost);
    startReady();
    runOnStoreConnection(file(), QStringLiteral("PRAGMA query_only = ON"));
    m_store->first();
    try {
        m_store->setToRun(false);
        ADD_FAILURE() << "the store can be written";
    } catch (const StoreFailure &failure) {
        m_dispatcher->noticeStoreFailure(failure);
    }
    ASSERT_TRUE(until([&] { return lost.size() == 2; }));
    EXPECT_FALSE(lost.constFirst().constFirst().toBool());
    runOnStoreConnection(file(), QStringLiteral("PRAGMA query_only = OFF"));
    ASSERT_TRUE(until([this] { return m_dispatcher->storeTrouble().isEmpty(); }));
}

TEST_F(DispatcherStoreTrouble, aReplacedStoreStopsTheEngineAndForgetsItsDevice)
{
    startReady();
    m_events.clear();
    m_dispatcher->storeReplaced();
    EXPECT_TRUE(until([this] { return m_modem->state() == Modem::State::Closed; }));
    EXPECT_EQ(m_dispatcher->status(), 0);
    EXPECT_FALSE(m_dispatcher->knownDevice());
    EXPECT_EQ(m_events, QStringList({QStringLiteral("status 0"), QStringLiteral("queue")}));
}

TEST_F(DispatcherStoreTrouble, aStoppedMessageIsLetGoWhenTheStoreIsBack)
{
    m_onSubmission = [this] {
        m_onSubmission = nullptr;
        m_dispatcher->stop();
        m_other.lock();
    };
    add(QStringLiteral("600"), longText(2));
    m_dispatcher->start();
    ASSERT_TRUE(outcomeWaits());
    m_other.unlock();
    const QString state = QStringLiteral("SELECT state || ' ' || parts_sent FROM message");
    EXPECT_TRUE(until([&] { return onDisk(state).toString() == QStringLiteral("0 1"); }));
    EXPECT_EQ(m_line->payloads.size(), 1);
}

TEST_F(DispatcherStoreTrouble, messagesOfAnEngineThatComesUpStoppedAreLetGoWhenTheStoreIsBack)
{
    m_store->add({{QStringLiteral("600"), longText(2)}}, noon());
    const qint64 id = m_store->first()->id;
    m_store->beginPart(id, 1, {});
    m_store->endPart(id, 1);
    m_other.lock();
    m_dispatcher->resume();
    ASSERT_TRUE(
        until([this] { return m_log.count(QStringLiteral("could not be released")) >= 2; }));
    m_other.unlock();
    const QString state = QStringLiteral("SELECT state FROM message");
    EXPECT_TRUE(until([&] { return onDisk(state).toInt() == 0; }));
}

TEST_F(DispatcherStoreTrouble, theEngineEndsWhenTheOutcomeIsOnDisk)
{
    lockAtSubmission();
    add(QStringLiteral("600"));
    m_dispatcher->start();
    ASSERT_TRUE(outcomeWaits());
    m_dispatcher->finish();
    takeTurns();
    EXPECT_FALSE(has(QStringLiteral("finished")));
    m_other.unlock();
    ASSERT_TRUE(until([this] { return has(QStringLiteral("finished")); }));
    EXPECT_EQ(m_store->size(), 0);
}

} // namespace
