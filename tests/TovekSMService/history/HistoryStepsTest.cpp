#include "TovekSMService/history/HistorySteps.h"

#include "TovekSMService/history/HistoryFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class HistoryStepsTest : public HistoryFixture
{
protected:
    QList<HistoryEvent> steps(qint64 id) { return given(HistorySteps(m_store->database()).of(id)); }

    void sendPart(qint64 id, int number, int total, const QString &at)
    {
        done(m_store->sentParts().add({id, number, total, 100 + number, u"600"_s, u"sim"_s, at}));
    }

    void report(qint64 id, int number, DeliveryState state, int status, const QString &at)
    {
        const qint64 part =
            OtherConnection(file())
                .value(
                    u"SELECT id FROM sent_part WHERE message_id = %1 AND number = %2"_s.arg(id).arg(
                        number))
                .toLongLong();
        done(m_store->sentParts().setState(part, state, true, status, at));
    }
};

using Step = HistoryStep;

TEST_F(HistoryStepsTest, aMessageThatWaitsWasQueuedAndTried)
{
    const qint64 id = wait(u"2026-01-01T10:00:00"_s);
    done(m_store->queue().keepAttempt(id, {u"2026-01-01T10:01:00"_s, 1, -36}));
    done(m_store->queue().keepAttempt(id, {u"2026-01-01T10:02:00"_s, 2, -40}));
    done(m_store->queue().keepAttempt(id, {u"2026-01-01T10:02:00"_s, 2, -40}));
    EXPECT_EQ(steps(id),
              (QList<HistoryEvent>{{u"2026-01-01T10:00:00"_s, Step::Queued, 0, 0, {}},
                                   {u"2026-01-01T10:01:00"_s, Step::Attempt, 1, -36, {}},
                                   {u"2026-01-01T10:02:00"_s, Step::Attempt, 2, -40, {}}}));
}

TEST_F(HistoryStepsTest, theStepsOfAMessageOfTwoPartsAreInTheirOrder)
{
    const QString at = u"2026-01-01T10:00:00"_s;
    const qint64 id = wait(at);
    sendPart(id, 1, 2, at);
    sendPart(id, 2, 2, at);
    done(m_store->queue().finish(id, 1, 102, at, true));
    report(id, 2, DeliveryState::Delivered, 0, at);
    report(id, 1, DeliveryState::Refused, 70, u"2026-01-01T10:00:01"_s);
    EXPECT_EQ(steps(id),
              (QList<HistoryEvent>{{at, Step::Queued, 0, 0, {}},
                                   {at, Step::Part, 1, 1, u"101"_s},
                                   {at, Step::Part, 2, 1, u"102"_s},
                                   {at, Step::Sent, 0, 1, u"102"_s},
                                   {at, Step::Delivered, 2, 0, u"102"_s},
                                   {u"2026-01-01T10:00:01"_s, Step::Refused, 1, 70, u"101"_s}}));
}

TEST_F(HistoryStepsTest, whatTheNetworkSaysOfAPartIsAStep)
{
    const struct
    {
        const char *name;
        DeliveryState state;
        int status;
        HistoryStep step;
    } rows[] = {
        {"delivered", DeliveryState::Delivered, 0, Step::Delivered},
        {"refused", DeliveryState::Refused, 69, Step::Refused},
        {"still trying", DeliveryState::Pending, 48, Step::Pending},
        {"not known", DeliveryState::Unknown, 2, Step::Unknown},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const qint64 id = wait(u"2026-01-01T10:00:00"_s);
        sendPart(id, 1, 1, u"2026-01-01T10:00:01"_s);
        done(m_store->queue().finish(id, 1, 101, u"2026-01-01T10:00:01"_s, true));
        EXPECT_EQ(steps(id).size(), 3) << "nothing was said yet";
        report(id, 1, row.state, row.status, u"2026-01-01T10:00:02"_s);
        EXPECT_EQ(steps(id).constLast(),
                  (HistoryEvent{u"2026-01-01T10:00:02"_s, row.step, 1, row.status, u"101"_s}));
    }
}

TEST_F(HistoryStepsTest, aPartThatWasGivenUpHasNoStatus)
{
    const qint64 id = wait(u"2026-01-01T10:00:00"_s);
    sendPart(id, 1, 1, u"2026-01-01T10:00:01"_s);
    done(m_store->sentParts().giveUp(id, u"2026-01-04T10:00:00"_s));
    EXPECT_EQ(steps(id).constLast(),
              (HistoryEvent{u"2026-01-04T10:00:00"_s, Step::Unknown, 1, -1, u"101"_s}));
}

TEST_F(HistoryStepsTest, howAMessageEndedIsAStep)
{
    const QString at = u"2026-01-01T10:00:00"_s;
    const struct
    {
        qint32 code;
        HistoryEvent event;
    } rows[] = {{1, {at, Step::Sent, 0, 1, u"7"_s}},
                {-36, {at, Step::Failed, 0, -36, {}}},
                {-39, {at, Step::Failed, 0, -39, {}}}};
    for (const auto &row : rows)
        EXPECT_EQ(steps(leave(at, row.code)).constFirst(), row.event);
}

TEST_F(HistoryStepsTest, theMomentOfAMessageFromBeforeIsNotKnown)
{
    const qint64 id = wait({});
    EXPECT_EQ(steps(id), (QList<HistoryEvent>{{QString(), Step::Queued, 0, 0, {}}}));
}

TEST_F(HistoryStepsTest, aMessageThatIsNotKnownHasNoSteps)
{
    leave(u"2026-01-01"_s);
    for (const qint64 id : {qint64{0}, qint64{-1}, qint64{4711}})
        EXPECT_TRUE(steps(id).isEmpty());
}

TEST_F(HistoryStepsTest, attemptsAreForgottenWithTheirMessages)
{
    const qint64 waiting = wait(u"2025-01-01"_s);
    const qint64 gone = wait(u"2025-01-01"_s);
    const qint64 deleted = wait(u"2025-01-01"_s);
    for (const qint64 id : {waiting, gone, deleted})
        done(m_store->queue().keepAttempt(id, {u"2025-01-02T00:00:00"_s, 1, -36}));
    done(m_store->queue().finish(gone, 1, 7, u"2025-01-03"_s, true));
    given(m_store->queue().update({}, {deleted}));
    const QString before = u"2025-02-01"_s;
    EXPECT_EQ(given(m_store->queue().pruneAttempts(u"2025-01-01"_s, 10)), 0) << "too young";
    EXPECT_EQ(given(m_store->queue().pruneAttempts(before, 10)), 1);
    EXPECT_EQ(given(m_store->outcomes().prune(before, 10)), 1);
    EXPECT_EQ(given(m_store->queue().pruneAttempts(before, 10)), 1);
    EXPECT_EQ(given(m_store->queue().pruneAttempts(before, 10)), 0);
    EXPECT_EQ(steps(waiting).size(), 2);
}

TEST_F(HistoryStepsTest, ofAMessageThatNeverHadAnIdTheEndIsKnown)
{
    const qint64 one = leaveWithoutId(u"2026-01-02T00:00:00"_s);
    leaveWithoutId(u"2026-01-03T00:00:00"_s);
    EXPECT_EQ(steps(one),
              (QList<HistoryEvent>{{u"2025-12-31T00:00:00"_s, Step::Queued, 0, 0, {}},
                                   {u"2026-01-02T00:00:00"_s, Step::Failed, 0, -39, {}}}));
    EXPECT_TRUE(steps(std::numeric_limits<qint64>::min()).isEmpty());
}

} // namespace

} // namespace norvane
