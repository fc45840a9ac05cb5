#include "TovekSMService/store/QueueMove.h"

#include "TovekSMService/history/HistoryPages.h"
#include "TovekSMService/history/HistorySteps.h"
#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/store/FileConnection.h"
#include "TovekSMService/store/OtherConnection.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/StoreResults.h"
#include "TovekSMService/store/TestStoreShared.h"
#include "contract/ErrorCodes.h"

#include <QMap>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <tuple>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Step = HistoryStep;

/// What the history tells of a message, and what is sent of it.
struct Told
{
    HistoryRow row; ///< without its id, which is another one in each queue
    QList<HistoryEvent> steps;
    StoredMessage message;

    bool operator==(const Told &other) const
    {
        const auto sent = [](const StoredMessage &one) {
            return std::tie(one.deliveryDate, one.originalDate, one.attempts, one.partsSent,
                            one.reference);
        };
        return row == other.row && steps == other.steps && sent(message) == sent(other.message);
    }
};

/// An engine that waits with its queue in its own file or in a database, and goes to the other.
class QueueMoveTest : public testing::Test
{
protected:
    QueueMoveTest()
    {
        inDatabase(); // makes its tables
        inFile();
    }

    QString file() const { return m_folder.filePath(u"queue.sqlite"_s); }
    void inFile()
    {
        m_store.reset();
        m_store = std::make_unique<Store>(file());
        done(m_store->open());
    }
    void inDatabase()
    {
        m_store.reset();
        m_store = openStoreOf(u"engine"_s, file(), m_clock);
    }
    StoreResult<int> move(bool isIntoFile)
    {
        inDatabase();
        QueueMove move(*m_store);
        return isIntoFile ? move.intoFile() : move.intoDatabase();
    }
    int moveIntoFile()
    {
        const int moved = given(move(true));
        inFile();
        return moved;
    }

    qint64 add(const QString &phone, const QString &queuedAt)
    {
        done(m_store->queue().add({{phone, u"text of "_s + phone}}, u"2024-05-01T12:00:00"_s));
        const qint64 id = idOf(phone);
        done(m_store->database().write("UPDATE message SET queued_at = ? WHERE id = ?",
                                       {queuedAt, id}));
        return id;
    }
    qint64 idOf(const QString &phone)
    {
        return given(m_store->database().row(
                         "SELECT id FROM message WHERE phone = ?", {phone},
                         [](const StoreRow &row) { return row.value(0).toLongLong(); }))
            .value_or(0);
    }
    void fail(qint64 id, int attempts, int part, const QString &at, qint32 code)
    {
        done(m_store->queue().keepAttempt(id, {at, part, code}));
        done(m_store->queue().postpone(id, attempts, u"2024-05-01T13:00:00"_s));
    }
    void begin(qint64 id)
    {
        done(m_store->database().together([&] {
            return m_store->queue().begin({{id, quint16{77}, "hash"}});
        }));
    }
    void sendPart(qint64 id, int number, const QString &at)
    {
        begin(id);
        done(m_store->sentParts().add({id, number, 3, 100 + number, u"3"_s, u"sim"_s, at}));
        done(m_store->queue().endPart(id, number));
    }
    void report(const QString &phone, int reference, DeliveryState state, int status,
                const QString &at)
    {
        const auto part = given(m_store->sentParts().latestOpen(u"sim"_s, reference, phone));
        ASSERT_TRUE(part);
        done(m_store->sentParts().setState(part->id, state, true, status, at));
    }

    /// Messages that the history tells different things of.
    void fill()
    {
        add(u"1"_s, u"2024-05-01T10:00:01"_s);
        add(u"from before"_s, {});
        const qint64 tried = add(u"2"_s, u"2024-05-01T10:00:02"_s);
        begin(tried);
        fail(tried, 1, 1, u"2024-05-01T10:10:00"_s, ErrorCode::networkRp);
        begin(tried);
        fail(tried, 2, 1, u"2024-05-01T10:20:00"_s, ErrorCode::noRespond);
        const qint64 inParts = add(u"3"_s, u"2024-05-01T10:00:03"_s);
        sendPart(inParts, 1, u"2024-05-01T10:30:00"_s);
        sendPart(inParts, 2, u"2024-05-01T10:30:05"_s);
        report(u"3"_s, 101, DeliveryState::Delivered, 0, u"2024-05-01T10:31:00"_s);
        begin(inParts);
        fail(inParts, 1, 3, u"2024-05-01T10:32:00"_s, ErrorCode::networkRp);
    }
    /// More than go together.
    void fillUp()
    {
        done(m_store->queue().add(
            QList<SMSList::Entry>(QueueMove::batchRows + 10, {u"many"_s, u"text"_s}),
            u"2999-01-01T00:00:00"_s));
    }

    QList<HistoryEvent> steps(qint64 id) { return given(HistorySteps(m_store->database()).of(id)); }
    QMap<QString, Told> told()
    {
        const QueryLimit limit(TimeSource::system());
        QMap<QString, Told> all;
        const HistoryPage page =
            given(HistoryPages(m_store->database(), limit).page({}, {}, {}, 10'000));
        for (const HistoryRow &row : page.rows) {
            all[row.phone] = {row, steps(row.id), {}};
            all[row.phone].row.id = 0;
        }
        for (const StoredMessage &message : given(m_store->queue().first(10'000)))
            all[message.phone].message = message;
        return all;
    }
    int count(const QString &phone)
    {
        return given(m_store->database().row(
                         "SELECT count(*) FROM message WHERE phone = ?", {phone},
                         [](const StoreRow &row) { return row.value(0).toInt(); }))
            .value_or(-1);
    }
    /// Rows that are left of messages that went away.
    int left()
    {
        int rows = FileConnection(file())
                       .rows(u"SELECT (SELECT count(*) FROM outgoing) + (SELECT count(*) FROM "
                             "sent_part) + (SELECT count(*) FROM attempt)"_s)
                       .constFirst()
                       .constFirst()
                       .toInt();
        for (const QString &table : {u"moved_out"_s, u"sent_part"_s, u"attempt"_s})
            rows += testServer()
                        .sql(u"SELECT count(*) FROM "_s + table, databaseOf(file()))
                        .constFirst()
                        .constFirst()
                        .toInt();
        return rows;
    }

    SystemClock m_clock;
    QTemporaryDir m_folder;
    std::unique_ptr<Store> m_store;
};

TEST_F(QueueMoveTest, whatTheHistoryTellsArrivesUnchangedBothWays)
{
    fill();
    const QMap<QString, Told> before = told();
    ASSERT_EQ(before.size(), 4);
    ASSERT_EQ(before[u"2"_s].steps.size(), 3);
    ASSERT_EQ(before[u"3"_s].steps,
              (QList<HistoryEvent>{
                  {u"2024-05-01T10:00:03"_s, Step::Queued, 0, 0, {}},
                  {u"2024-05-01T10:30:00"_s, Step::Part, 1, 1, u"101"_s},
                  {u"2024-05-01T10:30:05"_s, Step::Part, 2, 1, u"102"_s},
                  {u"2024-05-01T10:31:00"_s, Step::Delivered, 1, 0, u"101"_s},
                  {u"2024-05-01T10:32:00"_s, Step::Attempt, 3, ErrorCode::networkRp, {}}}));
    const int rows = left();
    EXPECT_EQ(given(move(false)), 4);
    EXPECT_EQ(told(), before);
    EXPECT_EQ(left(), rows) << "each of them is in one place";
    EXPECT_EQ(moveIntoFile(), 4);
    EXPECT_EQ(told(), before);
    EXPECT_EQ(left(), rows);
}

TEST_F(QueueMoveTest, theNetworksLaterWordFindsThePartWhereItIsNow)
{
    fill();
    for (const bool isIntoFile : {false, true}) {
        SCOPED_TRACE(isIntoFile);
        given(move(isIntoFile));
        if (isIntoFile)
            inFile();
        const auto part = given(m_store->sentParts().latestOpen(u"sim"_s, 102, u"3"_s));
        ASSERT_TRUE(part);
        EXPECT_EQ(part->message, idOf(u"3"_s));
        EXPECT_EQ(part->total, 3);
        EXPECT_FALSE(given(m_store->sentParts().latestOpen(u"sim"_s, 101, u"3"_s)))
            << "it has been told";
    }
}

TEST_F(QueueMoveTest, whenItWasQueuedIsKnownOfAnOutcomeBehindAMove)
{
    fill();
    for (const bool isIntoFile : {false, true}) {
        SCOPED_TRACE(isIntoFile);
        given(move(isIntoFile));
        if (isIntoFile)
            inFile();
        const QString phone = isIntoFile ? u"2"_s : u"1"_s;
        const qint64 id = idOf(phone);
        const QList<HistoryEvent> waiting = steps(id);
        begin(id);
        done(m_store->queue().finishSent({{id, 7, u"2024-05-01T14:00:00"_s}}));
        EXPECT_EQ(steps(id), waiting + QList<HistoryEvent>(
                                           {{u"2024-05-01T14:00:00"_s, Step::Sent, 0, 1, u"7"_s}}));
    }
}

TEST_F(QueueMoveTest, oneThatMayHaveLeftFailsWithAllThatIsKnownOfIt)
{
    fill();
    const QList<HistoryEvent> before = steps(idOf(u"3"_s));
    begin(idOf(u"3"_s));
    EXPECT_EQ(given(move(false)), 4);
    EXPECT_EQ(count(u"3"_s), 0);
    HistoryFilter inDoubt;
    inDoubt.states = MessageState::InDoubt;
    const QueryLimit limit(TimeSource::system());
    const HistoryPage page =
        given(HistoryPages(m_store->database(), limit).page(inDoubt, {}, {}, 10));
    ASSERT_EQ(page.rows.size(), 1);
    EXPECT_EQ(page.rows.constFirst().phone, u"3"_s);
    QList<HistoryEvent> after = steps(page.rows.constFirst().id);
    ASSERT_FALSE(after.isEmpty());
    const HistoryEvent failed = after.takeLast();
    EXPECT_EQ(failed.step, Step::Failed);
    EXPECT_EQ(failed.code, ErrorCode::noRespond);
    EXPECT_EQ(after, before);
    EXPECT_EQ(given(m_store->outcomes().unreportedFailures()).size(), 1);
    EXPECT_EQ(m_store->queue().size(), 3);
}

TEST_F(QueueMoveTest, oneOfTheDatabaseThatMayHaveLeftFailsThereWithAllThatIsKnownOfIt)
{
    fill();
    given(move(false));
    const qint64 id = idOf(u"3"_s);
    const QList<HistoryEvent> before = steps(id);
    begin(id);
    EXPECT_EQ(given(move(true)), 3);
    QList<HistoryEvent> after = steps(id);
    ASSERT_FALSE(after.isEmpty());
    EXPECT_EQ(after.takeLast().code, ErrorCode::noRespond);
    EXPECT_EQ(after, before);
}

/// Lets a move fail at some place, and go on.
struct Obstacle
{
    const char *name;
    bool isIntoFile;
    bool isOfFile; ///< where it stands
    const char *event;
    const char *table;
    const char *condition;
};

class InterruptedQueueMove : public QueueMoveTest, public testing::WithParamInterface<Obstacle>
{
protected:
    void put()
    {
        const Obstacle &it = GetParam();
        const QString table = QString::fromLatin1(it.table);
        const QString event = QString::fromLatin1(it.event);
        const QString condition = QString::fromLatin1(it.condition);
        if (it.isOfFile)
            FileConnection(file()).rows(
                u"CREATE TRIGGER refuse BEFORE %1 ON %2 WHEN %3 BEGIN "
                "SELECT RAISE(ABORT, 'refused'); END"_s.arg(event, table, condition));
        else
            OtherConnection(file()).refuse(event, table, condition);
    }
    void takeAway()
    {
        if (GetParam().isOfFile)
            FileConnection(file()).rows(u"DROP TRIGGER refuse"_s);
        else
            OtherConnection(file()).allow(QString::fromLatin1(GetParam().table));
    }
};

TEST_P(InterruptedQueueMove, isFinishedByTheNextOneWithAllThatTheHistoryTells)
{
    const bool isIntoFile = GetParam().isIntoFile;
    fill();
    fillUp();
    if (isIntoFile)
        given(move(false));
    const QMap<QString, Told> before = told();
    inDatabase();
    put();
    for (int attempt = 0; attempt < 2; ++attempt)
        EXPECT_FALSE(move(isIntoFile));
    takeAway();
    done(move(isIntoFile));
    if (isIntoFile)
        inFile();
    EXPECT_EQ(count(u"many"_s), QueueMove::batchRows + 10);
    EXPECT_EQ(told(), before);
    EXPECT_EQ(left(), 5) << "three attempts and two parts";
}

INSTANTIATE_TEST_SUITE_P(
    AtEachPlace, InterruptedQueueMove,
    testing::Values(
        Obstacle{"outOfTheFile", false, true, "DELETE", "message", "OLD.phone = '2'"},
        Obstacle{"intoTheDatabase", false, false, "INSERT", "message", "NEW.phone = '3'"},
        Obstacle{"withAPart", false, false, "INSERT", "sent_part", "NEW.number = 2"},
        Obstacle{"withAnAttempt", false, false, "INSERT", "attempt", "NEW.part = 3"},
        Obstacle{"secondBatch", false, false, "INSERT", "message", "NEW.id > 1005"},
        Obstacle{"behindTheCommitInTheDatabase", false, true, "DELETE", "outgoing", "1 = 1"},
        Obstacle{"outOfTheDatabase", true, false, "DELETE", "message", "OLD.phone = '2'"},
        Obstacle{"intoTheFile", true, true, "INSERT", "message", "NEW.phone = '3'"},
        Obstacle{"withAPartToTheFile", true, true, "INSERT", "sent_part", "NEW.number = 2"},
        Obstacle{"behindTheCommitInTheFile", true, false, "DELETE", "moved_out", "true"}),
    [](const testing::TestParamInfo<Obstacle> &each) { return std::string(each.param.name); });

} // namespace

} // namespace norvane
