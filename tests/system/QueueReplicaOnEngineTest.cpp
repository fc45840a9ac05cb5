#include "system/EngineProcess.h"
#include "system/ReplacedEngine.h"

#include <QFile>

#include <csignal>

namespace norvane {

using namespace Qt::StringLiterals;

/// A console that follows the queue change by change, beside one that fetches it whole.
class QueueReplicaOnEngine : public EngineProcess
{
protected:
    static QDateTime later(int seconds = 0)
    {
        return QDateTime(QDate(2100, 1, 1), QTime(0, 0), Qt::UTC).addSecs(seconds);
    }
    void add(int count, const QString &message)
    {
        SMSList list;
        for (int i = 0; i < count; ++i)
            list.Add(QString::number(i), message);
        makeProxy()->AddSMSList(list, later());
    }
    QList<QueueRow> wholeQueue() { return makeProxy()->GetQueue().rows(); }
    static QStringList messages(const QueueRecordSet &queue)
    {
        QStringList messages;
        for (const QueueRow &row : queue.rows())
            messages += row.message;
        return messages;
    }
    void endEngine(int signalNumber)
    {
        const qint64 pid = enginePid();
        ASSERT_NE(pid, 0);
        ASSERT_EQ(::kill(static_cast<pid_t>(pid), signalNumber), 0);
        ASSERT_TRUE(eventually([] { return enginePid() == 0 && enginesOfThisTest().isEmpty(); }));
    }
};

TEST_F(QueueReplicaOnEngine, anEngineThatWasKilledAndCameUpAnewIsFollowedFromItsWholeQueue)
{
    add(4, u"first"_s);
    const auto follower = makeProxy();
    ASSERT_EQ(follower->GetQueue().count(), 4);
    endEngine(SIGKILL);
    // More changes than the engine had before: numbers of its old revisions would be known again.
    const auto other = makeProxy();
    QueueRecordSet queue = other->GetQueue();
    queue.removeRow(3);
    queue.setMessage(0, u"changed"_s);
    other->UpdateQueue(queue);
    for (int i = 0; i < 5; ++i)
        other->AddSMS(u"7"_s, u"added"_s, later(-1));
    const QueueRecordSet followed = follower->GetQueue();
    EXPECT_TRUE(followed.rows() == wholeQueue());
    EXPECT_EQ(messages(followed),
              QStringList(5, u"added"_s) + QStringList{u"changed"_s} + QStringList(2, u"first"_s));
}

TEST_F(QueueReplicaOnEngine, whoHasMissedMoreChangesThanAreKeptFetchesTheWholeQueue)
{
    add(2, u"first"_s);
    const auto follower = makeProxy();
    ASSERT_EQ(follower->GetQueue().count(), 2);
    for (int round = 0; round < 3; ++round)
        add(7000, u"round %1"_s.arg(round)); // 21,000 in notes of 7,000
    QueueRecordSet followed = follower->GetQueue();
    EXPECT_EQ(followed.count(), 21'002);
    EXPECT_TRUE(followed.rows() == wholeQueue());

    makeProxy()->ClearQueue(); // in one note, of which more than are kept
    EXPECT_EQ(follower->GetQueue().count(), 0);
    add(1, u"last"_s);
    EXPECT_EQ(messages(follower->GetQueue()), QStringList{u"last"_s});
}

TEST_F(QueueReplicaOnEngine, ofAStoreThatWasSetAsideNothingIsLeft)
{
    for (int i = 0; i < 4; ++i)
        add(1, u"lost"_s);
    add(20, u"lost"_s);
    const auto follower = makeProxy();
    ASSERT_EQ(follower->GetQueue().count(), 24);
    endEngine(SIGTERM);
    QFile store(qEnvironmentVariable("XDG_DATA_HOME") + u"/TovekSMService/queue.sqlite"_s);
    ASSERT_TRUE(store.open(QIODevice::WriteOnly));
    store.write(QByteArray(10'000, 'g'));
    store.close();

    // Under the numbers of some of those that are lost, and in more changes than there were before.
    for (int i = 0; i < 8; ++i)
        makeProxy()->AddSMS(u"7"_s, u"new %1"_s.arg(i), later());
    const QueueRecordSet followed = follower->GetQueue();
    EXPECT_TRUE(followed.rows() == wholeQueue());
    EXPECT_EQ(followed.count(), 8);
    EXPECT_EQ(messages(followed).filter(u"lost"_s), QStringList());
}

TEST_F(QueueReplicaOnEngine, anEngineThatDiesBetweenTwoPagesIsFollowedByTheNextOnesQueue)
{
    add(3, u"real"_s);
    endEngine(SIGKILL);
    const BusQueueRows firstPage{{u"2099-01-01T00:00:00"_s, u"1"_s, u"dead"_s, 1},
                                 {u"2099-01-01T00:00:00"_s, u"2"_s, u"dead"_s, 2}};
    ReplacedEngine *dying = nullptr;
    int pages = 0;
    ReplacedEngine engine([&](const QDBusMessage &call) -> QDBusMessage {
        if (call.member() == u"GetQueueChanges"_s)
            return call.createReply({QVariant::fromValue(quint64{100}), true,
                                     QVariant::fromValue(BusQueueRows()),
                                     QVariant::fromValue(QList<qlonglong>())});
        if (call.member() == u"GetQueue"_s) {
            ++pages;
            dying->vanishWithThisAnswer();
            return ReplacedEngine::page(call, 55, 5, firstPage);
        }
        return call.createReply();
    });
    dying = &engine;
    ASSERT_TRUE(engine.isThere());

    const auto follower = makeProxy();
    EXPECT_EQ(messages(follower->GetQueue()), QStringList(3, u"real"_s))
        << "none of the page that came before";
    EXPECT_EQ(pages, 1);
    add(1, u"added"_s);
    EXPECT_TRUE(follower->GetQueue().rows() == wholeQueue());
    EXPECT_EQ(follower->GetQueue().count(), 4);
}

TEST_F(QueueReplicaOnEngine, anOlderEngineThatTellsOfNoChangesIsAskedForTheWholeQueueEachTime)
{
    add(1, u"real"_s);
    endEngine(SIGKILL);
    BusQueueRows rows;
    for (int id = 1; id <= 3; ++id)
        rows.append({u"2099-01-01T00:00:00"_s, u"1"_s, u"row %1"_s.arg(id), id});
    auto older = std::make_unique<ReplacedEngine>([&](const QDBusMessage &call) -> QDBusMessage {
        if (call.member() == u"GetQueueChanges"_s)
            return {};
        if (call.member() != u"GetQueue"_s)
            return call.createReply();
        const quint32 first = call.arguments().at(1).toUInt();
        return ReplacedEngine::page(call, 9, static_cast<quint32>(rows.size()), rows.mid(first, 2));
    });
    ASSERT_TRUE(older->isThere());
    const auto proxy = makeProxy();
    EXPECT_TRUE(proxy->GetQueue().rows() == rows);
    rows.removeFirst();
    rows.first().message = u"changed"_s;
    EXPECT_TRUE(proxy->GetQueue().rows() == rows);

    older.reset(); // and a newer one takes its place
    EXPECT_EQ(messages(proxy->GetQueue()), QStringList{u"real"_s});
    add(1, u"added"_s);
    EXPECT_EQ(proxy->GetQueue().count(), 2);
}

} // namespace norvane
