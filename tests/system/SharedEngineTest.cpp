#include "system/EngineProcess.h"

#include <QThread>

#include <atomic>
#include <vector>

namespace norvane {

using namespace Qt::StringLiterals;

class SharedEngine : public EngineProcess
{};

TEST_F(SharedEngine, threeConsolesThatStartAtOnceGetOneEngine)
{
    std::atomic<int> attached = 0;
    std::vector<std::unique_ptr<QThread>> consoles;
    for (int i = 0; i < 3; ++i) {
        consoles.emplace_back(QThread::create([i, &attached] {
            const QString name = u"console %1"_s.arg(i);
            {
                const QDBusConnection bus =
                    QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
                const auto launcher = makeLauncher(bus);
                SMSManagerProxy proxy(*launcher);
                proxy.AddSMS(name, u"x"_s, {QDate(2100, 1, 1), QTime(0, 0), Qt::UTC});
                ++attached;
            }
            QDBusConnection::disconnectFromBus(name);
        }));
        consoles.back()->start();
    }
    for (const auto &console : consoles)
        EXPECT_TRUE(console->wait(hangMs));
    EXPECT_EQ(attached, 3);

    const auto proxy = makeProxy();
    EXPECT_EQ(proxy->GetQueueSize(), 3);
    // The processes that came second have ended. A session of the user's own may have others.
    EXPECT_TRUE(eventually([] { return enginesOfThisTest().size() == 1; }));
    EXPECT_EQ(enginesOfThisTest(), QList<qint64>{enginePid()});
}

TEST_F(SharedEngine, twoConsolesOneAfterTheOtherSeeTheSameQueue)
{
    makeProxy()->AddSMS(u"1"_s, u"x"_s, {QDate(2100, 1, 1), QTime(0, 0), Qt::UTC});
    EXPECT_EQ(makeProxy()->GetQueueSize(), 1);
}

TEST_F(SharedEngine, whatOneConsoleQueuesIsReportedToTheOther)
{
    const auto first = makeProxy();
    const auto second = makeProxy();
    qint32 seen = -1;
    QObject::connect(second.get(), &SMSManager::SMSQueueChanged, [&](qint32 size) { seen = size; });
    ASSERT_TRUE(eventually([&] { return seen == 0; }));
    first->AddSMS(u"1"_s, u"x"_s, {QDate(2100, 1, 1), QTime(0, 0), Qt::UTC});
    EXPECT_TRUE(eventually([&] { return seen == 1; }));
}

} // namespace norvane
