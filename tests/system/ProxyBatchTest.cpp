#include "support/RaisedFailure.h"
#include "system/EngineProcess.h"
#include "system/ReplacedEngine.h"

#include <QStringList>

#include <csignal>
#include <thread>

namespace norvane {

using namespace Qt::StringLiterals;

/// Messages that reach the engine together.
class ProxyBatch : public EngineProcess
{
protected:
    static QDateTime future() { return {QDate(2100, 1, 1), QTime(8, 30), Qt::UTC}; }
    static void add(SMSManager &proxy, int count)
    {
        for (int i = 0; i < count; ++i)
            proxy.AddSMS(QString::number(i), u"text"_s, future().addSecs(i));
    }
    static QStringList numbers(int count)
    {
        QStringList numbers;
        for (int i = 0; i < count; ++i)
            numbers.append(QString::number(i));
        return numbers;
    }
    static QStringList phones(SMSManager &proxy)
    {
        QStringList phones;
        const QueueRecordSet queue = proxy.GetQueue();
        for (const QueueRow &row : queue.rows())
            phones.append(row.phone);
        return phones;
    }
    /// The members that the calls to the engine in its place named, but for the state's report.
    QStringList m_calls;
};

TEST_F(ProxyBatch, itsMessagesAreInTheQueueInTheirOrderEachWithItsDate)
{
    const auto proxy = makeProxy();
    proxy->BeginBatch();
    add(*proxy, 700);
    EXPECT_EQ(makeProxy()->GetQueueSize(), 0);
    EXPECT_EQ(proxy->CommitBatch(), 700);
    EXPECT_EQ(phones(*proxy), numbers(700));
    EXPECT_EQ(proxy->GetQueue().at(1).deliveryDate, u"2100-01-01T08:30:01"_s);
}

TEST_F(ProxyBatch, aMessageOutsideOfABatchReachesTheEngineAtOnce)
{
    const auto proxy = makeProxy();
    proxy->BeginBatch();
    add(*proxy, 1);
    EXPECT_EQ(proxy->CommitBatch(), 1);
    add(*proxy, 1);
    EXPECT_EQ(makeProxy()->GetQueueSize(), 2);
}

TEST_F(ProxyBatch, anEmptyOneIsNoCall)
{
    const ReplacedEngine engine([this](const QDBusMessage &call) {
        m_calls += call.member();
        return call.createReply();
    });
    ASSERT_TRUE(engine.isThere());
    const auto proxy = makeProxy();
    proxy->BeginBatch();
    EXPECT_EQ(proxy->CommitBatch(), 0);
    EXPECT_EQ(proxy->CommitBatch(), 0) << "nor is one that never began";
    proxy->StopEngine();
    EXPECT_FALSE(m_calls.contains(u"AddSMSBatch"_s));
}

TEST_F(ProxyBatch, anAnswerThatWasLostIsAskedForAgainUnderTheSameName)
{
    QStringList names;
    const ReplacedEngine engine([&names](const QDBusMessage &call) {
        if (call.member() != "AddSMSBatch"_L1)
            return call.createReply();
        names += call.arguments().constFirst().toString();
        return names.size() == 1 ? call.createErrorReply(QDBusError::NoReply, QString())
                                 : call.createReply(QVariant::fromValue(2U));
    });
    ASSERT_TRUE(engine.isThere());
    const auto proxy = makeProxy();
    for (int batch = 0; batch < 2; ++batch) {
        proxy->BeginBatch();
        add(*proxy, 2);
        EXPECT_EQ(proxy->CommitBatch(), 2);
    }
    ASSERT_EQ(names.size(), 3);
    EXPECT_EQ(names.at(0), names.at(1));
    EXPECT_NE(names.at(0), names.at(2));
}

TEST_F(ProxyBatch, anEngineThatIsKilledInTheCallHasEachMessageOnce)
{
    const auto proxy = makeProxy();
    for (int round = 0; round < 5; ++round) {
        proxy->ClearQueue();
        proxy->BeginBatch();
        add(*proxy, 500);
        const auto pid = static_cast<pid_t>(enginePid());
        ASSERT_NE(pid, 0);
        std::thread killer([pid] { ::kill(pid, SIGKILL); }); // before, in or behind the call
        const qsizetype stored = proxy->CommitBatch();
        killer.join();
        EXPECT_EQ(stored, 500);
        EXPECT_EQ(phones(*proxy), numbers(500));
    }
}

TEST_F(ProxyBatch, anEngineThatStoodStillHasEachMessageOnceWhenItGoesOn)
{
    const auto proxy = makeProxy();
    proxy->setCallTimeout(300);
    proxy->BeginBatch();
    add(*proxy, 3);
    const auto pid = static_cast<pid_t>(enginePid());
    ASSERT_EQ(::kill(pid, SIGSTOP), 0);
    EXPECT_EQ(raisedNumber([&] { proxy->CommitBatch(); }), 462);
    ASSERT_EQ(::kill(pid, SIGCONT), 0);
    const auto other = makeProxy();
    ASSERT_TRUE(eventually([&] { return other->GetQueueSize() == 3; }));
    EXPECT_EQ(phones(*other), numbers(3));
}

TEST_F(ProxyBatch, anOlderEngineGetsTheMessagesOneByOneUntilItFailsForOne)
{
    qsizetype answers = 0;
    QStringList added;
    const ReplacedEngine engine([&](const QDBusMessage &call) {
        if (call.member() == "AddSMSBatch"_L1)
            return QDBusMessage();
        if (call.member() != "AddSMS"_L1)
            return call.createReply();
        added += call.arguments().constFirst().toString();
        return ++answers == 3 ? call.createErrorReply(QDBusError::Failed, QString())
                              : call.createReply();
    });
    ASSERT_TRUE(engine.isThere());
    const auto proxy = makeProxy();
    proxy->BeginBatch();
    add(*proxy, 5);
    EXPECT_EQ(proxy->CommitBatch(), 2);
    EXPECT_EQ(added, numbers(3));
    proxy->BeginBatch();
    add(*proxy, 5);
    EXPECT_EQ(proxy->CommitBatch(), 5);
}

TEST_F(ProxyBatch, anEngineThatTookAPartOfItTellsHowMany)
{
    const ReplacedEngine engine(
        [](const QDBusMessage &call) { return call.createReply(QVariant::fromValue(3U)); });
    ASSERT_TRUE(engine.isThere());
    const auto proxy = makeProxy();
    proxy->BeginBatch();
    add(*proxy, 5);
    EXPECT_EQ(proxy->CommitBatch(), 3);
}

TEST_F(ProxyBatch, anEngineThatFailsForItIsAFailure)
{
    const ReplacedEngine engine([](const QDBusMessage &call) {
        return call.createErrorReply(QDBusError::Failed, u"no"_s);
    });
    ASSERT_TRUE(engine.isThere());
    const auto proxy = makeProxy();
    proxy->BeginBatch();
    add(*proxy, 5);
    EXPECT_EQ(raisedNumber([&] { proxy->CommitBatch(); }), 462);
}

} // namespace norvane
