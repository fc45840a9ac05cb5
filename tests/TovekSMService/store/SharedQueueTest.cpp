#include "TovekSMService/store/SharedQueue.h"

#include "TovekSMService/Noon.h"
#include "TovekSMService/store/OtherConnection.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/StoreResults.h"
#include "TovekSMService/store/TestStoreShared.h"
#include "contract/ErrorCodes.h"
#include "support/PostgresProxy.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A wall clock that stands still until it is set.
class StandingClock : public Clock
{
public:
    QDateTime wallClock() const override { return now; }
    TimeSource &time() const override { return TimeSource::system(); }

    QDateTime now = {QDate(2024, 5, 1), QTime(12, 0), Qt::UTC};
};

/// Two engines with one queue.
class SharedQueueTest : public testing::Test
{
protected:
    SharedQueueTest()
    {
        m_one = open(u"one"_s);
        m_two = open(u"two"_s);
    }

    QString file() const { return m_folder.filePath(u"queue.sqlite"_s); }
    std::unique_ptr<Store> open(const QString &engine, int sameSenderSeconds = 0)
    {
        return openStoreOf(engine, file(), m_clock, sameSenderSeconds);
    }
    QVariant value(const QString &query) { return OtherConnection(file()).value(query); }
    void run(const QString &statement) { OtherConnection(file()).run(statement); }

    void add(Store &store, const QString &phone, const QString &date = noon())
    {
        done(store.queue().add({{phone, u"text"_s}}, date));
    }
    /// Begins what goes first, as the dispatcher does.
    /// @return the phones
    QStringList begin(Store &store, int max)
    {
        m_begun = given(store.database().together([&]() -> StoreResult<QList<StoredMessage>> {
            return store.queue().first(max).and_then(
                [&](const QList<StoredMessage> &messages) -> StoreResult<QList<StoredMessage>> {
                    QList<BegunPart> parts;
                    for (const StoredMessage &message : messages)
                        parts.append({message.id, std::nullopt, "hash"});
                    return store.queue().begin(parts).map([&] { return messages; });
                });
        }));
        QStringList phones;
        for (const StoredMessage &message : m_begun)
            phones.append(message.phone);
        return phones;
    }
    QString engineOf(const QString &phone)
    {
        return value(u"SELECT engine.name FROM message JOIN engine ON engine.id = message.engine "
                     "WHERE phone = '%1'"_s.arg(phone))
            .toString();
    }
    /// Makes an engine look as if it had been silent for so many seconds.
    void silence(const QString &engine, int seconds)
    {
        run(u"UPDATE engine SET seen = seen - interval '%2 s' WHERE name = '%1'"_s.arg(engine).arg(
            seconds));
    }

    StandingClock m_clock;
    QTemporaryDir m_folder;
    std::unique_ptr<Store> m_one;
    std::unique_ptr<Store> m_two;
    QList<StoredMessage> m_begun;
};

TEST_F(SharedQueueTest, whatOneEngineBeginsNoOtherBegins)
{
    for (const QString &phone : {u"1"_s, u"2"_s, u"3"_s})
        add(*m_one, phone);
    EXPECT_EQ(begin(*m_two, 2), (QStringList{u"1"_s, u"2"_s}));
    EXPECT_EQ(begin(*m_one, 9), QStringList{u"3"_s});
    EXPECT_EQ(engineOf(u"1"_s), u"two"_s);
    EXPECT_EQ(engineOf(u"3"_s), u"one"_s);
    EXPECT_TRUE(begin(*m_two, 9).isEmpty());
}

TEST_F(SharedQueueTest, whatAnotherEngineIsAboutToBeginIsPassedOver)
{
    add(*m_one, u"1"_s);
    add(*m_one, u"2"_s);
    done(m_one->database().together([&] {
        return m_one->queue().first(1).map([&](const QList<StoredMessage> &locked) {
            EXPECT_EQ(locked.size(), 1);
            EXPECT_EQ(begin(*m_two, 9), QStringList{u"2"_s});
        });
    }));
}

TEST_F(SharedQueueTest, aPartReturnedIsForAllAgain)
{
    add(*m_one, u"1"_s);
    begin(*m_one, 1);
    done(m_one->queue().cancel({m_begun.constFirst().id}));
    EXPECT_EQ(begin(*m_two, 1), QStringList{u"1"_s});
}

TEST_F(SharedQueueTest, aMessageBetweenTwoPartsStaysWithItsEngine)
{
    add(*m_one, u"1"_s);
    begin(*m_one, 1);
    const qint64 id = m_begun.constFirst().id;
    done(m_one->queue().endPart(id, 1));
    EXPECT_TRUE(begin(*m_two, 1).isEmpty());
    EXPECT_EQ(begin(*m_one, 1), QStringList{u"1"_s});
    // A stopped engine's can be edited, and are still its own.
    done(m_one->queue().cancel({id}));
    done(m_one->queue().releaseBetweenParts());
    EXPECT_TRUE(begin(*m_two, 1).isEmpty());
    done(m_two->queue().update({{noon(), u"1"_s, u"other"_s, id}}, {}));
    EXPECT_EQ(begin(*m_two, 1), QStringList{u"1"_s}) << "with another text it begins anew";
}

TEST_F(SharedQueueTest, theSizeIsThatOfAllEnginesTogether)
{
    add(*m_one, u"1"_s);
    add(*m_two, u"2"_s);
    EXPECT_EQ(m_one->queue().size(), 1) << "nobody told it";
    m_one->sharedQueue()->takeNews({u"*"_s});
    done(m_one->sharedQueue()->refreshSize());
    EXPECT_EQ(m_one->queue().size(), 2);
    begin(*m_two, 2);
    for (const StoredMessage &message : m_begun)
        done(m_two->queue().finishSent({{message.id, 7, noon()}}));
    EXPECT_EQ(m_two->queue().size(), 0) << "it had not heard of one of them";
    m_one->sharedQueue()->takeNews({u"*"_s});
    done(m_one->sharedQueue()->refreshSize());
    EXPECT_EQ(m_one->queue().size(), 0);
    EXPECT_EQ(value(u"SELECT sum(queued)::bigint FROM engine"_s), 0);
}

TEST_F(SharedQueueTest, aSizeThatIsNotWaitedForCountsWhatChangesMeanwhile)
{
    for (const QString &phone : {u"1"_s, u"2"_s, u"3"_s})
        add(*m_two, phone);
    bool isDone = false;
    m_one->sharedQueue()->refreshSize(
        [&isDone](const StoreResult<> &known) { isDone = known.has_value(); });
    add(*m_one, u"4"_s);
    EXPECT_FALSE(m_one->database().together([this]() -> StoreResult<> {
        add(*m_one, u"5"_s);
        return failed(StoreFailure(StoreFailure::Kind::Other, u"taken back"_s));
    }));
    ASSERT_TRUE(waitUntil([&isDone] { return isDone; }));
    EXPECT_EQ(m_one->queue().size(), 4);
}

TEST_F(SharedQueueTest, aSizeThatIsOlderThanALaterLookIsDropped)
{
    add(*m_two, u"1"_s);
    bool isDone = false;
    m_one->sharedQueue()->refreshSize([&isDone](const StoreResult<> &) { isDone = true; });
    done(m_one->database().probe()); // the answer is there, and not taken yet
    add(*m_two, u"2"_s);
    done(m_one->sharedQueue()->refreshSize());
    ASSERT_TRUE(waitUntil([&isDone] { return isDone; }));
    EXPECT_EQ(m_one->queue().size(), 2);
}

TEST_F(SharedQueueTest, newsThatCannotBeToldStaysNews)
{
    ASSERT_TRUE(m_one->sharedQueue()->hasNews());
    m_one->sharedDatabase()->close();
    bool hasFailed = false;
    m_one->sharedQueue()->announceNews(
        [&hasFailed](const StoreResult<> &told) { hasFailed = !told; });
    EXPECT_FALSE(m_one->sharedQueue()->hasNews());
    ASSERT_TRUE(waitUntil([&hasFailed] { return hasFailed; }));
    EXPECT_TRUE(m_one->sharedQueue()->hasNews());
    done(m_one->sharedDatabase()->open());
    done(m_one->queue().load());
    bool isTold = false;
    m_one->sharedQueue()->announceNews(
        [&isTold](const StoreResult<> &told) { isTold = told.has_value(); });
    ASSERT_TRUE(waitUntil([&isTold] { return isTold; }));
    EXPECT_FALSE(m_one->sharedQueue()->hasNews());
}

TEST_F(SharedQueueTest, whatIsBeingSentCannotBeEditedFromAnyConsole)
{
    add(*m_one, u"1"_s);
    begin(*m_one, 1);
    const qint64 id = m_begun.constFirst().id;
    EXPECT_FALSE(given(m_two->queue().update({{noon(), u"9"_s, u"other"_s, id}}, {})));
    EXPECT_FALSE(given(m_two->queue().update({}, {id})));
    done(m_two->queue().clear());
    EXPECT_EQ(given(m_two->queue().rows()).size(), 1);
}

TEST_F(SharedQueueTest, editsOfManyRowsTakeOneTurnOverTheNetwork)
{
    const PostgresProxy proxy(testServer().socketPath());
    Store distant(file(),
                  {proxy.address() + u' ' + PostgresServer::login(databaseOf(file())),
                   {u"distant"_s, u"test"_s, u"test:distant"_s},
                   0,
                   [this](qint64 seconds) { return m_clock.wallClockText(seconds); }},
                  m_clock.time());
    done(distant.open());
    done(distant.sharedDatabase()->open());
    done(distant.queue().load());
    done(m_one->queue().add(QList<SMSList::Entry>(40, {u"600"_s, u"text"_s}), noon()));
    QList<QueueRow> rows = given(m_one->queue().rows());
    for (QueueRow &row : rows)
        row.phone = u"700"_s;

    const int before = proxy.answers();
    EXPECT_TRUE(given(distant.queue().update(rows, {})));
    EXPECT_LT(proxy.answers() - before, 4);
    EXPECT_EQ(value(u"SELECT count(*) FROM message WHERE phone = '700'"_s), rows.size());

    ASSERT_EQ(begin(*m_one, 1).size(), 1);
    EXPECT_FALSE(given(distant.queue().update(rows, {}))) << "the first of them is leaving";
    distant.close();
}

TEST_F(SharedQueueTest, aQueueOfAnyLengthIsClearedAsAWhole)
{
    constexpr int rows = 100'001;
    add(*m_one, u"600"_s);
    ASSERT_EQ(begin(*m_one, 1), QStringList{u"600"_s});
    run(u"INSERT INTO message (delivery_date, original_date, due, phone, text) "
        "SELECT '%1', '%1', '%1', '700', 'text' FROM generate_series(1, %2)"_s.arg(noon())
            .arg(rows));
    run(u"UPDATE engine SET queued = queued + %1 WHERE name = 'two'"_s.arg(rows));
    const QString waiting = u"SELECT count(*) FROM message WHERE phone = '700'"_s;

    OtherConnection(file()).refuse(u"DELETE"_s, u"message"_s,
                                   u"OLD.id > %1"_s.arg(m_begun.constFirst().id + rows - 1));
    EXPECT_FALSE(m_two->queue().clear());
    EXPECT_EQ(value(waiting), rows);
    OtherConnection(file()).allow(u"message"_s);
    done(m_two->queue().clear());
    EXPECT_EQ(value(waiting), 0);
    EXPECT_EQ(value(u"SELECT phone FROM message"_s), u"600"_s) << "which is leaving";
    EXPECT_EQ(value(u"SELECT sum(queued)::int FROM engine"_s), 1);
}

TEST_F(SharedQueueTest, aSilentEngineIsTakenOver)
{
    add(*m_one, u"1"_s);
    begin(*m_one, 1);
    EXPECT_TRUE(given(m_two->engines()->takeOver(ErrorCode::noRespond, noon())).isEmpty())
        << "it lives";
    silence(u"one"_s, 31);
    const QList<TakenOver> taken = given(m_two->engines()->takeOver(ErrorCode::noRespond, noon()));
    ASSERT_EQ(taken.size(), 1);
    EXPECT_EQ(taken.constFirst().phone, u"1"_s);
    EXPECT_EQ(taken.constFirst().engine, u"one"_s);
    EXPECT_EQ(value(u"SELECT code FROM outcome"_s), ErrorCode::noRespond);
    EXPECT_EQ(value(u"SELECT sum(queued)::bigint FROM engine"_s), 0);
    EXPECT_TRUE(given(m_two->queue().rows()).isEmpty());
    // The one that took over tells it.
    EXPECT_EQ(given(m_two->outcomes().unreportedFailures()).size(), 1);
    EXPECT_TRUE(given(m_one->outcomes().unreportedFailures()).isEmpty());
}

TEST_F(SharedQueueTest, anEngineWhoseEpochIsOverBeginsNothingUntilItHasAnother)
{
    add(*m_one, u"1"_s);
    add(*m_one, u"2"_s);
    begin(*m_one, 1);
    silence(u"one"_s, 31);
    done(m_two->engines()->takeOver(ErrorCode::noRespond, noon()));
    EXPECT_TRUE(begin(*m_one, 1).isEmpty());
    EXPECT_TRUE(m_one->queue().needsRecovery());
    EXPECT_FALSE(given(m_one->engines()->showLife(u"COM1"_s, u"running"_s)));
    done(m_one->queue().recover());
    EXPECT_FALSE(m_one->queue().needsRecovery());
    EXPECT_EQ(begin(*m_one, 1), QStringList{u"2"_s});
}

TEST_F(SharedQueueTest, whatWasTakenOverAndWasSentIsSentAfterAll)
{
    add(*m_one, u"1"_s);
    begin(*m_one, 1);
    silence(u"one"_s, 31);
    done(m_two->engines()->takeOver(ErrorCode::noRespond, noon()));
    done(m_one->queue().finishSent({{m_begun.constFirst().id, 77, noon()}}));
    EXPECT_EQ(value(u"SELECT code FROM outcome"_s), 1);
    EXPECT_EQ(value(u"SELECT network_reference FROM outcome"_s), 77);
    EXPECT_EQ(value(u"SELECT count(*) FROM outcome"_s), 1);
    EXPECT_EQ(value(u"SELECT sum(queued)::bigint FROM engine"_s), 0);
}

TEST_F(SharedQueueTest, whatIsBeingTakenOverWhileItIsSettledIsSentAllTheSame)
{
    add(*m_one, u"1"_s);
    begin(*m_one, 1);
    PostgresClient taker(connectionOf(file()));
    ASSERT_TRUE(taker.run(
        u"BEGIN; UPDATE engine SET epoch = epoch + 1 WHERE name = 'one'; "
        "INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, reported, engine, "
        "epoch) SELECT id, original_date, phone, text, -39, '', 0, engine, epoch FROM message; "
        "DELETE FROM message"_s));
    std::thread commit([&] {
        PostgresClient watch(connectionOf(file()));
        while (watch
                   .query(u"SELECT 1 FROM pg_stat_activity WHERE wait_event_type = 'Lock' AND "
                          "datname = current_database()"_s)
                   .isEmpty())
            std::this_thread::yield();
        taker.run(u"COMMIT"_s);
    });
    done(m_one->queue().finishSent({{m_begun.constFirst().id, 77, noon()}}));
    commit.join();
    EXPECT_EQ(value(u"SELECT code FROM outcome"_s), 1);
}

TEST_F(SharedQueueTest, nothingElseOfAnEpochThatIsOverChangesAnything)
{
    add(*m_one, u"1"_s);
    begin(*m_one, 1);
    const qint64 id = m_begun.constFirst().id;
    silence(u"one"_s, 31);
    done(m_two->engines()->takeOver(ErrorCode::noRespond, noon()));
    done(m_one->queue().cancel({id}));
    done(m_one->queue().endPart(id, 1));
    done(m_one->queue().postpone(id, 1, noon()));
    done(m_one->queue().makeWay(id, 1, noon()));
    done(m_one->queue().finish(id, ErrorCode::networkRp, std::nullopt, noon(), false));
    EXPECT_EQ(value(u"SELECT code FROM outcome"_s), ErrorCode::noRespond);
    EXPECT_EQ(value(u"SELECT count(*) FROM outcome"_s), 1);
    EXPECT_EQ(value(u"SELECT count(*) FROM message"_s), 0);
}

TEST_F(SharedQueueTest, whatWasSettledBeforeIsSettledAgainWithoutATrace)
{
    for (const QString &phone : {u"1"_s, u"2"_s, u"3"_s})
        add(*m_one, phone);
    begin(*m_one, 3);
    const QList<StoredMessage> begun = m_begun;
    qint64 failure = 0;
    for (int time = 0; time < 2; ++time) {
        done(m_one->queue().finishSent({{begun.at(0).id, 7, noon()}}));
        failure = given(m_one->queue().finish(begun.at(1).id, ErrorCode::networkRp, std::nullopt,
                                              noon(), false));
        EXPECT_EQ(failure, value(u"SELECT id FROM outcome WHERE code < 0"_s).toLongLong());
        done(m_one->queue().cancel({begun.at(2).id}));
        EXPECT_EQ(begin(*m_two, 1), time == 0 ? QStringList{u"3"_s} : QStringList());
    }
    EXPECT_EQ(engineOf(u"3"_s), u"two"_s) << "what another engine begun since is its own";
    EXPECT_EQ(value(u"SELECT count(*) FROM outcome"_s), 2);
    EXPECT_EQ(value(u"SELECT sum(queued)::bigint FROM engine"_s), 1);
}

TEST_F(SharedQueueTest, behindALostConnectionWhatDidNotLeaveWaitsAgain)
{
    add(*m_one, u"1"_s);
    begin(*m_one, 1);
    done(m_one->queue().load()); // as behind a new connection
    EXPECT_TRUE(m_one->queue().needsRecovery());
    done(m_one->queue().recover());
    EXPECT_EQ(begin(*m_two, 1), QStringList{u"1"_s});
}

TEST_F(SharedQueueTest, whatWasLeavingWhenAnEngineEndedIsInterruptedForItAlone)
{
    add(*m_one, u"1"_s);
    begin(*m_one, 1);
    m_one = open(u"one"_s);
    ASSERT_EQ(given(m_one->queue().interrupted()).size(), 1);
    EXPECT_TRUE(given(m_two->queue().interrupted()).isEmpty());
    done(m_one->queue().recover());
    EXPECT_EQ(given(m_one->queue().interrupted()).size(), 1) << "it may have left";
    EXPECT_TRUE(begin(*m_two, 1).isEmpty());
    const qint64 outcome = given(m_one->queue().finish(
        m_begun.isEmpty() ? given(m_one->queue().interrupted()).constFirst().id : 0,
        ErrorCode::noRespond, std::nullopt, noon(), false));
    EXPECT_NE(outcome, 0);
}

TEST_F(SharedQueueTest, whatIsHeldBetweenTwoPartsIsGivenUpAfterAnHourOfSilence)
{
    add(*m_one, u"1"_s);
    begin(*m_one, 1);
    done(m_one->queue().endPart(m_begun.constFirst().id, 1));
    silence(u"one"_s, 3000);
    EXPECT_TRUE(given(m_two->engines()->takeOver(ErrorCode::noRespond, noon())).isEmpty());
    silence(u"one"_s, 601);
    EXPECT_EQ(given(m_two->engines()->takeOver(ErrorCode::noRespond, noon())).size(), 1);
    EXPECT_EQ(value(u"SELECT code FROM outcome"_s), ErrorCode::noRespond);
}

TEST_F(SharedQueueTest, aRetiredEngineIsGivenUpAtOnceWithWhatItCouldNotTell)
{
    add(*m_one, u"1"_s);
    add(*m_one, u"2"_s);
    begin(*m_one, 2);
    done(
        m_one->queue().finish(m_begun.at(1).id, ErrorCode::networkRp, std::nullopt, noon(), false));
    const auto retired = given(m_two->engines()->retire(u"one"_s, ErrorCode::noRespond, noon()));
    ASSERT_TRUE(retired);
    EXPECT_EQ(retired->size(), 1);
    EXPECT_EQ(given(m_two->outcomes().unreportedFailures()).size(), 2);
    EXPECT_EQ(given(m_two->engines()->all()).constFirst().state, u"retired"_s);
    EXPECT_FALSE(given(m_two->engines()->retire(u"nobody"_s, ErrorCode::noRespond, noon())));
    EXPECT_EQ(value(u"SELECT sum(queued)::bigint FROM engine"_s), 0);
    // One that comes back all the same goes on.
    add(*m_two, u"3"_s);
    EXPECT_TRUE(begin(*m_one, 1).isEmpty());
    done(m_one->queue().recover());
    EXPECT_EQ(begin(*m_one, 1), QStringList{u"3"_s});
}

TEST_F(SharedQueueTest, twoEnginesOfOneNameAreNotLetInTogether)
{
    EngineRegister other(m_two->database(), {u"one"_s, u"host"_s, u"elsewhere"_s});
    const StoreResult<> refused = other.enroll();
    ASSERT_FALSE(refused);
    EXPECT_TRUE(refused.error().text().contains(u"one"_s));
    silence(u"one"_s, 31);
    done(other.enroll());
}

TEST_F(SharedQueueTest, aDeviceThatRefusesAMessageLeavesItToTheOthers)
{
    add(*m_one, u"1"_s);
    begin(*m_one, 1);
    done(m_one->queue().makeWay(m_begun.constFirst().id, 0, u"2024-05-01T12:00:30"_s));
    EXPECT_TRUE(begin(*m_one, 1).isEmpty());
    EXPECT_EQ(given(m_one->queue().rows()).constFirst().deliveryDate, noon());
    m_clock.now = m_clock.now.addSecs(30);
    EXPECT_EQ(begin(*m_one, 1), QStringList{u"1"_s}) << "nobody else took it";
    done(m_one->queue().makeWay(m_begun.constFirst().id, 0, u"2024-05-01T12:01:00"_s));
    EXPECT_EQ(begin(*m_two, 1), QStringList{u"1"_s});
}

TEST_F(SharedQueueTest, aRecipientIsServedByTheEngineThatServedItLast)
{
    m_one = open(u"one"_s, 60);
    m_two = open(u"two"_s, 60);
    add(*m_one, u"1"_s);
    begin(*m_one, 1);
    done(m_one->queue().finishSent({{m_begun.constFirst().id, 1, noon()}}));
    done(m_one->engines()->showLife(u"COM1"_s, u"running"_s));
    add(*m_one, u"1"_s);
    add(*m_one, u"2"_s);
    EXPECT_EQ(begin(*m_two, 9), QStringList{u"2"_s});
    m_clock.now = m_clock.now.addSecs(60);
    EXPECT_EQ(begin(*m_two, 9), QStringList{u"1"_s}) << "for so long at most";
    add(*m_one, u"1"_s, u"2024-05-01T12:01:00"_s);
    EXPECT_TRUE(begin(*m_two, 9).isEmpty());
    silence(u"one"_s, 31);
    EXPECT_EQ(begin(*m_two, 9), QStringList{u"1"_s}) << "while that engine lives";
}

TEST_F(SharedQueueTest, othersHearOfEachChange)
{
    QStringList heard;
    done(m_one->sharedQueue()->announceNews());
    done(m_two->sharedQueue()->announceNews());
    QCoreApplication::processEvents();
    m_two->sharedDatabase()->onNotified([&](const QStringList &news) { heard += news; });
    const auto listen = [&] {
        done(m_two->sharedDatabase()->probe());
        QCoreApplication::processEvents();
        return std::exchange(heard, {});
    };
    add(*m_one, u"1"_s);
    EXPECT_EQ(listen(), QStringList{u"1"_s});
    add(*m_two, u"2"_s);
    EXPECT_TRUE(listen().isEmpty()) << "its own";
    begin(*m_one, 2);
    done(m_one->queue().finishSent({{1, 1, noon()}, {2, 1, noon()}}));
    EXPECT_TRUE(m_one->sharedQueue()->hasNews());
    done(m_one->sharedQueue()->announceNews());
    EXPECT_FALSE(m_one->sharedQueue()->hasNews());
    EXPECT_EQ(listen(), QStringList{u"1-2"_s});
    done(m_one->queue().clear());
    done(m_one->sharedQueue()->announceNews());
    EXPECT_EQ(listen(), QStringList{u"*"_s});
}

} // namespace

} // namespace norvane
