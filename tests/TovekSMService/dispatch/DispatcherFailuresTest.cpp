#include "TovekSMService/dispatch/DispatcherFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString dateOnDisk(const QString &date)
{
    return u"SELECT COUNT(*) FROM message WHERE delivery_date = '%1' AND due = "
           "delivery_date"_s.arg(date);
}

class DispatcherFailures : public DispatcherFixture
{};

/// With a device that may take too long.
class DispatcherLostAnswer : public DispatcherFixture
{
protected:
    DispatcherLostAnswer() : DispatcherFixture(shortTimings()) {}
};

TEST_F(DispatcherFailures, aPermanentFailureIsReportedAtOnceAndNotTriedAgain)
{
    m_submitAnswers = {cmsError(28), FakeModemLine::info("+CMGS: 1")};
    add(u"600"_s);
    add(u"601"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(eventsButQueue(), QStringList({u"status 1"_s, u"info Model 7"_s,
                                             u"failed 600 text -36"_s, u"sent 601 text 0"_s}));
    EXPECT_EQ(taken().count(u"600 text"_s), 1);
    EXPECT_EQ(m_line->openings, 1);
}

TEST_F(DispatcherFailures, aTemporaryFailureIsTriedFourTimesWithGrowingDelays)
{
    m_line->submitAnswer = cmsError(41);
    add(u"600"_s);
    done(m_dispatcher->start());
    const char *const attempts[] = {"12:00:30", "12:01:30", "12:03:30"};
    for (int made = 1; made <= 3; ++made) {
        const QString next = u"2024-05-01T"_s + QLatin1String(attempts[made - 1]);
        ASSERT_TRUE(until([&] { return onDisk(dateOnDisk(next)).toInt() == 1; })) << made;
        takeTurns();
        EXPECT_EQ(submissions(), made);
        EXPECT_FALSE(eventsButQueue().join(u' ').contains("failed"_L1));
        EXPECT_EQ(m_store->queue().size(), 1);
        m_clock.now = QDateTime(QDate(2024, 5, 1), QTime::fromString(next.mid(11)), Qt::UTC);
    }
    ASSERT_TRUE(until([this] { return has(u"failed 600 text -36"_s); }));
    EXPECT_EQ(submissions(), 4);
    EXPECT_EQ(m_store->queue().size(), 0);
    EXPECT_EQ(m_line->openings, 1);
}

TEST_F(DispatcherFailures, aMessageThatWaitsForItsRetryHoldsUpNobodyAndTellsOfItsNewPlace)
{
    m_random = 0.5;
    m_submitAnswers = {cmsError(41), FakeModemLine::info("+CMGS: 1")};
    add(u"600"_s);
    add(u"601"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return has(u"sent 601 text 1"_s); }));
    EXPECT_EQ(onDisk(dateOnDisk(u"2024-05-01T12:00:33"_s)).toInt(), 1);
    m_clock.now = m_clock.now.addSecs(33);
    ASSERT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
}

TEST_F(DispatcherFailures, anAttemptIsNotedWithItsPart)
{
    const QByteArray taken = FakeModemLine::info("+CMGS: 1");
    m_submitAnswers = {taken, taken, cmsError(41)};
    add(u"600"_s, longText(3));
    done(m_dispatcher->start());
    ASSERT_TRUE(
        until([this] { return onDisk(dateOnDisk(u"2024-05-01T12:00:30"_s)).toInt() == 1; }));
    EXPECT_EQ(onDisk(u"SELECT at || ' ' || part || ' ' || code FROM attempt"_s).toString(),
              u"2024-05-01T12:00:00 3 -36"_s);
}

TEST_F(DispatcherFailures, partsThatWereAcceptedAreNotRepeatedByARetry)
{
    m_submitAnswers = {FakeModemLine::info("+CMGS: 1"), cmsError(41),
                       FakeModemLine::info("+CMGS: 2")};
    add(u"600"_s, longText(2));
    done(m_dispatcher->start());
    ASSERT_TRUE(
        until([this] { return onDisk(dateOnDisk(u"2024-05-01T12:00:30"_s)).toInt() == 1; }));
    m_clock.now = m_clock.now.addSecs(30);
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    ASSERT_EQ(m_line->payloads.size(), 3);
    EXPECT_NE(m_line->payloads.at(0), m_line->payloads.at(1));
    EXPECT_EQ(m_line->payloads.at(1), m_line->payloads.at(2));
}

TEST_F(DispatcherFailures, aFailureOfTheDeviceCostsTheMessageNoAttemptAndIsToldOnce)
{
    m_submitAnswers = {cmsError(310), cmsError(310), cmsError(310),
                       cmsError(310), cmsError(310), FakeModemLine::info("+CMGS: 1")};
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(count(u"warning -29"_s), 1);
    EXPECT_TRUE(has(u"sent 600 text 0"_s));
    EXPECT_EQ(submissions(), 6);
    EXPECT_EQ(m_line->openings, 6);
    EXPECT_EQ(onDisk(u"SELECT delivery_date FROM outcome"_s).toString(), noon());
}

TEST_F(DispatcherFailures, aLineThatBreaksBeforeThePayloadLeavesTheMessageWaiting)
{
    m_onSubmission = [this] {
        m_onSubmission = nullptr;
        m_line->breakOff();
    };
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(m_line->payloads.size(), 1);
    EXPECT_EQ(m_line->openings, 2);
    EXPECT_EQ(eventsButQueue().filter(u"warning"_s), QStringList({u"warning -5"_s}));
    EXPECT_TRUE(has(u"sent 600 text 0"_s));
}

TEST_F(DispatcherFailures, aLineThatBreaksBehindThePayloadEndsTheMessage)
{
    m_line->submitAnswer.clear();
    done(m_dispatcher->start());
    add(u"600"_s);
    ASSERT_TRUE(until([this] { return m_line->payloads.size() == 1; }));
    m_line->breakOff();
    ASSERT_TRUE(until([this] { return has(u"failed 600 text -39"_s); }));
    ASSERT_TRUE(until([this] { return m_line->openings == 2; }));
    ASSERT_TRUE(until([this] { return m_modem->state() == Modem::State::Ready; }));
    takeTurns();
    EXPECT_EQ(m_line->payloads.size(), 1);
    EXPECT_EQ(count(u"warning -39"_s), 1);
    EXPECT_EQ(count(u"warning -5"_s), 1);
    EXPECT_EQ(m_store->queue().size(), 0);
}

TEST_F(DispatcherLostAnswer, endsTheMessageWhichIsNeverSentAgain)
{
    m_submitAnswers = {QByteArray(), FakeModemLine::info("+CMGS: 1")};
    add(u"600"_s, longText(2));
    add(u"601"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(eventsButQueue(), QStringList({u"status 1"_s, u"info Model 7"_s,
                                             u"failed 600 %1 -39"_s.arg(longText(2)),
                                             u"warning -39"_s, u"sent 601 text 0"_s}));
    EXPECT_EQ(m_line->payloads.size(), 2);
}

TEST_F(DispatcherLostAnswer, aPromptThatNeverComesLeavesTheMessageWaiting)
{
    m_line->prompt.clear();
    m_onSubmission = [this] {
        if (submissions() == 2)
            m_line->prompt = "\r\n> ";
    };
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(m_line->payloads.size(), 1);
    EXPECT_EQ(count(u"warning -39"_s), 0);
    EXPECT_TRUE(has(u"sent 600 text 0"_s));
}

TEST_F(DispatcherFailures, aFailureThatNobodyHearsIsKeptAndOneThatIsHandledIsNot)
{
    m_submitAnswers = {cmsError(28), cmsError(28)};
    m_dispatcher->setHasListeners(false);
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_FALSE(has(u"failed 600 text -36"_s));
    ASSERT_EQ(given(m_store->outcomes().unreportedFailures()).size(), 1);
    EXPECT_EQ(given(m_store->outcomes().unreportedFailures()).constFirst().code, -36);

    m_dispatcher->setHasListeners(true);
    add(u"601"_s);
    ASSERT_TRUE(until([this] { return has(u"failed 601 text -36"_s); }));
    EXPECT_TRUE(
        until([this] { return given(m_store->outcomes().unreportedFailures()).size() == 1; }));
    EXPECT_EQ(given(m_store->outcomes().unreportedFailures()).constFirst().phone, u"600"_s);
}

TEST_F(DispatcherFailures, aFailureThatIsRaisedStaysUnreportedUntilItIsHandled)
{
    m_handlesReports = false;
    m_submitAnswers = {cmsError(28)};
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return !m_reports.isEmpty(); }));
    EXPECT_TRUE(has(u"failed 600 text -36"_s));
    takeTurns();
    ASSERT_EQ(given(m_store->outcomes().unreportedFailures()).size(), 1);
    EXPECT_EQ(m_reports,
              QList<qint64>{given(m_store->outcomes().unreportedFailures()).constFirst().id});
    m_dispatcher->noteHandled(m_reports.constFirst());
    EXPECT_TRUE(
        until([this] { return given(m_store->outcomes().unreportedFailures()).isEmpty(); }));
}

TEST_F(DispatcherFailures, warningsAreKeptUntilTheyAreHandled)
{
    QStringList handled;
    QObject::connect(
        m_dispatcher.get(), &Dispatcher::warningHandled,
        [&](int code, const QString &text) { handled << u"%1 %2"_s.arg(code).arg(text); });
    m_handlesReports = false;
    m_dispatcher->setHasListeners(false);
    m_dispatcher->warn(-2, u"unheard"_s);
    EXPECT_FALSE(has(u"warning -2"_s));
    EXPECT_TRUE(m_reports.isEmpty());
    EXPECT_EQ(m_dispatcher->unacknowledgedWarnings().entries().size(), 1);

    m_dispatcher->setHasListeners(true);
    m_dispatcher->warn(-2, u"heard"_s);
    EXPECT_TRUE(has(u"warning -2"_s));
    ASSERT_EQ(m_reports.size(), 1);
    EXPECT_EQ(m_dispatcher->unacknowledgedWarnings().entries().size(), 2);
    m_dispatcher->noteHandled(m_reports.constFirst());
    EXPECT_EQ(handled, QStringList{u"-2 heard"_s});
    ASSERT_EQ(m_dispatcher->unacknowledgedWarnings().entries().size(), 1);
    EXPECT_EQ(m_dispatcher->unacknowledgedWarnings().entries().constFirst().warning.text,
              u"unheard"_s);
}

TEST_F(DispatcherFailures, aChangeThatCameTooLateIsToldAndTheQueueShownAgain)
{
    m_dispatcher->warnTooLate();
    EXPECT_EQ(m_events, QStringList({u"queue"_s, u"warning -9"_s}));
}

} // namespace

} // namespace norvane
