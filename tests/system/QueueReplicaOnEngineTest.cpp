#include "system/EngineProcess.h"
#include "system/ReplacedEngine.h"

#include <QFile>

#include <csignal>

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
    add(4, QStringLiteral("first"));
    const auto follower = makeProxy();
    ASSERT_EQ(follower->GetQueue().count(), 4);
    endEngine(SIGKILL);
    // More changes than the engine had before: numbers of its old revisions would be known again.
    const auto other = makeProxy();
    QueueRecordSet queue = other->GetQueue();
    queue.removeRow(3);
    queue.setMessage(0, QStringLiteral("changed"));
    other->UpdateQueue(queue);
    for (int i = 0; i < 5; ++i)
        other->AddSMS(QStringLiteral("7"), QStringLiteral("added"), later(-1));
    const QueueRecordSet followed = follower->GetQueue();
    EXPECT_TRUE(followed.rows() == wholeQueue());
    EXPECT_EQ(messages(followed), QStringList(5, QStringLiteral("added")) +
                                      QStringList{QStringLiteral("changed")} +
                                      QStringList(2, QStringLiteral("first")));
}

TEST_F(QueueReplicaOnEngine, whoHasMissedMoreChangesThanAreKeptFetchesTheWholeQueue)
{
    add(2, QStringLiteral("first"));
    const auto follower = makeProxy();
    ASSERT_EQ(follower->GetQueue().count(), 2);
    for (int round = 0; round < 3; ++round)
        add(7000, QStringLiteral("round %1").arg(round)); // 21,000 in notes of 7,000
    QueueRecordSet followed = follower->GetQueue();
    EXPECT_EQ(followed.count(), 21'002);
    EXPECT_TRUE(followed.rows() == wholeQueue());

    makeProxy()->ClearQueue(); // in one note, of which more than are kept
    EXPECT_EQ(follower->GetQueue().count(), 0);
    add(1, QStringLiteral("last"));
    EXPECT_EQ(messages(follower->GetQueue()), QStringList{QStringLiteral("last")});
}

TEST_F(QueueReplicaOnEngine, ofAStoreThatWasSetAsideNothingIsLeft)
{
    for (int i = 0; i < 4; ++i)
        add(1, QStringLiteral("lost"));
    add(20, QStringLiteral("lost"));
    const auto follower = makeProxy();
    ASSERT_EQ(follower->GetQueue().count(), 24);
    endEngine(SIGTERM);
    QFile store(qEnvironmentVariable("XDG_DATA_HOME") +
                QStringLiteral("/TovekSMService/queue.sqlite"));
    ASSERT_TRUE(store.open(QIODevice::WriteOnly));
    store.write(QByteArray(10'000, 'g'));
    store.close();

    // Under the numbers of some of those that are lost, and in more changes than there were before.
    for (int i = 0; i < 8; ++i)
        makeProxy()->AddSMS(QStringLiteral("7"), QStringLiteral("new %1").arg(i), later());
    const QueueRecordSet followed = follower->GetQueue();
    EXPECT_TRUE(followed.rows() == wholeQueue());
    EXPECT_EQ(followed.count(), 8);
    EXPECT_EQ(messages(followed).filter(QStringLiteral("lost")), QStringList());
}

TEST_F(QueueReplicaOnEngine, anEngineThatDiesBetweenTwoPagesIsFollowedByTheNextOnesQueue)
{
    add(3, QStringLiteral("real"));
    endEngine(SIGKILL);
    const BusQueueRows firstPage{
        {QStringLiteral("2099-01-01T00:00:00"), QStringLiteral("1"), QStringLiteral("dead"), 1},
        {QStringLiteral("2099-01-01T00:00:00"), QStringLiteral("2"), QStringLiteral("dead"), 2}};
    ReplacedEngine *dying = nullptr;
    int pages = 0;
    ReplacedEngine engine([&](const QDBusMessage &call) -> QDBusMessage {
        if (call.member() == QStringLiteral("GetQueueChanges"))
            return call.createReply({QVariant::fromValue(quint64{100}), true,
                                     QVariant::fromValue(BusQueueRows()),
                                     QVariant::fromValue(QList<qlonglong>())});
        if (call.member() == QStringLiteral("GetQueue")) {
            ++pages;
            dying->vanishWithThisAnswer();
            return ReplacedEngine::page(call, 55, 5, firstPage);
        }
        return call.createReply();
    });
    dying = &engine;
    ASSERT_TRUE(engine.isThere());

    const auto follower = makeProxy();
    EXPECT_EQ(messages(follower->GetQueue()), QStringList(3, QStringLiteral("real")))
        << "none of the page that came before";
    EXPECT_EQ(pages, 1);
    add(1, QStringLiteral("added"));
    EXPECT_TRUE(follower->GetQueue().rows() == wholeQueue());
    EXPECT_EQ(follower->GetQueue().count(), 4);
}

TEST_F(QueueReplicaOnEngine, anOlderEngineThatTellsOfNoChangesIsAskedForTheWholeQueueEachTime)
{
    add(1, QStringLiteral("real"));
    endEngine(SIGKILL);
    BusQueueRows rows;
    for (int id = 1; id <= 3; ++id)
        rows.append({QStringLiteral("2099-01-01T00:00:00"), QStringLiteral("1"),
                     QStringLiteral("row %1").arg(id), id});
    auto older = std::make_unique<ReplacedEngine>([&](const QDBusMessage &call) -> QDBusMessage {
        if (call.member() == QStringLiteral("GetQueueChanges"))
            return {};
        if (call.member() != QStringLiteral("GetQueue"))
            return call.createReply();
        const quint32 first = call.arguments().at(1).toUInt();
        return ReplacedEngine::page(call, 9, static_cast<quint32>(rows.size()), rows.mid(first, 2));
    });
    ASSERT_TRUE(older->isThere());
    const auto proxy = makeProxy();
    EXPECT_TRUE(proxy->GetQueue().rows() == rows);
    rows.removeFirst();
    rows.first().message = QStringLiteral("changed");
    EXPECT_TRUE(proxy->GetQueue().rows() == rows);

    older.reset(); // and a newer one takes its place
    EXPECT_EQ(messages(proxy->GetQueue()), QStringList{QStringLiteral("real")});
    add(1, QStringLiteral("added"));
    EXPECT_EQ(proxy->GetQueue().count(), 2);
}
