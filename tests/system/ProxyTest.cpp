#include "system/EngineProcess.h"

#include <QCoreApplication>
#include <QEvent>

namespace norvane {

using namespace Qt::StringLiterals;

class Proxy : public EngineProcess
{
protected:
    static QDateTime future() { return {QDate(2100, 1, 1), QTime(8, 30), Qt::UTC}; }
    static QDateTime past() { return {QDate(2020, 1, 1), QTime(0, 0), Qt::UTC}; }
};

TEST_F(Proxy, aNewConsoleIsToldTheStateWithoutAskingAgain)
{
    makeProxy()->AddSMS(u"1"_s, u"x"_s, future());
    const auto proxy = makeProxy();
    QStringList events;
    QObject::connect(proxy.get(), &SMSManager::EngineStatus,
                     [&](qint32 status) { events << u"status %1"_s.arg(status); });
    QObject::connect(proxy.get(), &SMSManager::SMSQueueChanged,
                     [&](qint32 size) { events << u"queue %1"_s.arg(size); });
    ASSERT_TRUE(eventually([&] { return events.size() >= 2; }));
    EXPECT_EQ(events, (QStringList{u"status 0"_s, u"queue 1"_s}));
}

TEST_F(Proxy, callsRunNoEventLoop)
{
    const auto proxy = makeProxy();
    int events = 0;
    QObject::connect(proxy.get(), &SMSManager::SMSQueueChanged, [&] { ++events; });
    int posted = 0;
    QMetaObject::invokeMethod(
        proxy.get(), [&] { ++posted; }, Qt::QueuedConnection);
    for (int i = 0; i < 20; ++i)
        proxy->AddSMS(u"1"_s, u"x"_s, future());
    EXPECT_EQ(events, 0);
    EXPECT_EQ(posted, 0);
    EXPECT_TRUE(eventually([&] { return events > 0 && posted == 1; }));
}

TEST_F(Proxy, deviceInfoRaisedInTheTestIsHandledBeforeTheNextStatementAThousandTimes)
{
    plugIn();
    const auto proxy = makeProxy();
    proxy->StartEngine(); // keeps the device open, so that a test takes no time to open it
    int infos = 0;
    QObject::connect(proxy.get(), &SMSManager::DeviceInfo, [&] { ++infos; });
    ASSERT_TRUE(eventually([&] { return infos == 1; }));
    int inOrder = 0;
    for (int round = 1; round <= 1000; ++round) {
        const int before = infos;
        ASSERT_EQ(proxy->TestDevice(), 1) << "round " << round;
        EXPECT_EQ(infos, before) << "a call delivered an event";
        proxy->DeliverPendingEvents();
        inOrder += infos == before + 1 ? 1 : 0;
    }
    EXPECT_EQ(inOrder, 1000);
}

TEST_F(Proxy, theTestOfADeviceMayTakeLongerThanAnyOtherCall)
{
    plugIn({u"--silent"_s});
    const auto proxy = makeProxy();
    proxy->setCallTimeout(300);
    EXPECT_NE(proxy->TestDevice(), 1); // the silence alone takes seconds
}

TEST_F(Proxy, pendingEventsAreDeliveredInTheirOrder)
{
    plugIn();
    const auto proxy = makeProxy();
    proxy->GetEngineStatus();
    proxy->DeliverPendingEvents(); // the report of the state
    QStringList events;
    QObject::connect(proxy.get(), &SMSManager::EngineStatus,
                     [&](qint32 status) { events << QString::number(status); });
    QObject::connect(proxy.get(), &SMSManager::DeviceInfo, [&] { events << u"device"_s; });
    proxy->StartEngine();
    proxy->StopEngine();
    EXPECT_EQ(proxy->TestDevice(), 1);
    EXPECT_TRUE(events.isEmpty());
    proxy->DeliverPendingEvents();
    ASSERT_GE(events.size(), 3);
    EXPECT_EQ(events.first(), u"1"_s);
    EXPECT_EQ(events.at(1), u"0"_s);
    EXPECT_EQ(events.last(), u"device"_s);
}

TEST_F(Proxy, eventsOfAnObjectThatWasDroppedAreDiscarded)
{
    auto proxy = makeProxy();
    int events = 0;
    QObject::connect(proxy.get(), &SMSManager::SMSQueueChanged, [&] { ++events; });
    proxy->AddSMS(u"1"_s, u"x"_s, future());
    proxy->GetQueueSize(); // by now the event is waiting
    proxy.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(events, 0);
}

TEST_F(Proxy, settingsAreStoredAsTheyCome)
{
    const auto proxy = makeProxy();
    const DeviceSettings odd{5, u"12 ñ"_s, 0, 0, u"anything"_s};
    EXPECT_TRUE(proxy->SetDeviceSettings(odd));
    EXPECT_EQ(proxy->GetDeviceSettings(), odd);
}

TEST_F(Proxy, theQueueCrossesTheBusWholeAndInOrder)
{
    const auto proxy = makeProxy();
    SMSList list;
    for (int i = 0; i < 9000; ++i)
        list.Add(QString::number(i), u"text %1"_s.arg(i));
    proxy->AddSMSList(list, future());
    const QueueRecordSet queue = proxy->GetQueue();
    ASSERT_EQ(queue.count(), 9000);
    for (int i = 0; i < 9000; ++i)
        ASSERT_EQ(queue.at(i).phone, QString::number(i));
    EXPECT_EQ(queue.at(0).deliveryDate, u"2100-01-01T08:30:00"_s);
    EXPECT_EQ(queue.at(0).message, u"text 0"_s);
    EXPECT_NE(queue.at(0).id, queue.at(1).id);
}

TEST_F(Proxy, anEditCarriesItsRowsAndLeavesWhatCameSince)
{
    const auto proxy = makeProxy();
    for (const char *const phone : {"1", "2", "3"})
        proxy->AddSMS(QLatin1String(phone), u"x"_s, future());
    QueueRecordSet queue = proxy->GetQueue();
    proxy->AddSMS(u"4"_s, u"x"_s, future());
    queue.setPhone(0, u"11"_s);
    queue.removeRow(1);
    proxy->UpdateQueue(queue);

    const QueueRecordSet after = proxy->GetQueue();
    ASSERT_EQ(after.count(), 3);
    EXPECT_EQ(after.at(0).phone, u"11"_s);
    EXPECT_EQ(after.at(1).phone, u"3"_s);
    EXPECT_EQ(after.at(2).phone, u"4"_s);
}

TEST_F(Proxy, clearEmptiesTheQueue)
{
    const auto proxy = makeProxy();
    proxy->AddSMS(u"1"_s, u"x"_s, future());
    proxy->ClearQueue();
    EXPECT_EQ(proxy->GetQueueSize(), 0);
    EXPECT_EQ(proxy->GetQueue().count(), 0);
}

TEST_F(Proxy, aNulInATextBecomesASpace)
{
    const auto proxy = makeProxy();
    const QString withNul = QString(u'a') + QChar(u'\0') + u'b';
    proxy->AddSMS(withNul, withNul, future());
    const QueueRecordSet queue = proxy->GetQueue();
    EXPECT_EQ(queue.at(0).phone, u"a b"_s);
    EXPECT_EQ(queue.at(0).message, u"a b"_s);
}

TEST_F(Proxy, whatCannotBeSentIsQueuedAndReported)
{
    plugIn();
    const auto proxy = makeProxy();
    QList<qint32> codes;
    QObject::connect(proxy.get(), &SMSManager::SMSSentFailed,
                     [&](const QString &, const QString &, qint32 code) { codes << code; });
    proxy->AddSMS(u"call me"_s, u"x"_s, past());
    proxy->AddSMS(QString(30, u'1'), u"x"_s, past());
    proxy->StartEngine();
    ASSERT_TRUE(eventually([&] { return codes.size() == 2; }));
    EXPECT_EQ(codes, (QList<qint32>{-18, -17}));
    EXPECT_EQ(proxy->GetQueueSize(), 0);
}

TEST_F(Proxy, aFailureThatNobodyHeardIsToldToTheNextConsoleOnce)
{
    plugIn();
    {
        const auto first = makeProxy();
        first->AddSMS(u"call me"_s, u"x"_s, QDateTime::currentDateTime().addSecs(4));
        first->StartEngine();
    }
    // Nobody listens while it fails; the queue's emptiness is seen by the command line alone.
    const auto queueIsEmpty = [] {
        QProcess status;
        status.start(QStringLiteral(NORVANE_BIN_DIR "/TovekSMService"), {u"--status"_s});
        return status.waitForFinished(hangMs) &&
               status.readAllStandardOutput().contains("queue: 0");
    };
    ASSERT_TRUE(eventually(queueIsEmpty));
    for (const int expected : {1, 0}) {
        const auto console = makeProxy();
        int failures = 0;
        bool reported = false;
        QObject::connect(console.get(), &SMSManager::SMSSentFailed, [&] { ++failures; });
        QObject::connect(console.get(), &SMSManager::SMSQueueChanged, [&] { reported = true; });
        ASSERT_TRUE(eventually([&] { return reported; }));
        console->GetQueueSize(); // what the report still holds has arrived with this answer
        console->DeliverPendingEvents();
        EXPECT_EQ(failures, expected);
    }
}

} // namespace norvane
