#include "foundation/NumberedFailure.h"
#include "system/EngineProcess.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <csignal>

namespace {

bool hasOpen(qint64 pid, const QString &file)
{
    const QDir open(QStringLiteral("/proc/%1/fd").arg(pid));
    for (const QString &name : open.entryList(QDir::System | QDir::Files | QDir::NoDotAndDotDot))
        if (QFile::symLinkTarget(open.filePath(name)) == file)
            return true;
    return false;
}

} // namespace

class EngineLife : public EngineProcess
{
protected:
    static void signalEngine(int number)
    {
        const qint64 pid = enginePid();
        ASSERT_NE(pid, 0);
        ASSERT_EQ(::kill(static_cast<pid_t>(pid), number), 0);
    }
};

TEST_F(EngineLife, theFirstProxyStartsTheEngine)
{
    EXPECT_EQ(enginePid(), 0);
    const auto proxy = makeProxy();
    EXPECT_NE(enginePid(), 0);
    EXPECT_EQ(proxy->GetEngineStatus(), 0);
    EXPECT_EQ(proxy->GetQueueSize(), 0);
}

TEST_F(EngineLife, itHandsOutWhatTheDialogProposesUntilSomeoneSetsAnything)
{
    const auto proxy = makeProxy();
    EXPECT_EQ(proxy->GetDeviceSettings(),
              (DeviceSettings{0, QString(), 1, 1, QStringLiteral("COM1, 9600")}));
}

TEST_F(EngineLife, itOutlivesTheConsole)
{
    auto proxy = makeProxy();
    const qint64 pid = enginePid();
    proxy->AddSMS(QStringLiteral("1"), QStringLiteral("x"),
                  {QDate(2100, 1, 1), QTime(0, 0), Qt::UTC});
    proxy.reset();
    proxy = makeProxy();
    EXPECT_EQ(enginePid(), pid);
    EXPECT_EQ(proxy->GetQueueSize(), 1);
}

TEST_F(EngineLife, theQueueOutlivesTheEngine)
{
    auto proxy = makeProxy();
    proxy->AddSMS(QStringLiteral("1"), QStringLiteral("x"),
                  {QDate(2100, 1, 1), QTime(0, 0), Qt::UTC});
    killEngine();
    EXPECT_EQ(proxy->GetQueueSize(), 1);
}

TEST_F(EngineLife, aCallToAnEngineThatHasVanishedStartsItAgain)
{
    const auto proxy = makeProxy();
    const qint64 first = enginePid();
    killEngine();
    EXPECT_EQ(proxy->GetEngineStatus(), 0);
    EXPECT_NE(enginePid(), 0);
    EXPECT_NE(enginePid(), first);
}

TEST_F(EngineLife, anEngineThatCameUpAnewReportsItsStateAgain)
{
    const auto proxy = makeProxy();
    killEngine();
    int reports = 0;
    QObject::connect(proxy.get(), &SMSManager::EngineStatus, [&reports] { ++reports; });
    proxy->GetQueueSize();
    EXPECT_TRUE(eventually([&] { return reports > 0; }));
}

TEST_F(EngineLife, aConsoleHearsAnEngineThatSomeoneElseStartedAnew)
{
    storeDevice(QStringLiteral("/nowhere/gsm, 9600"));
    const auto proxy = makeProxy();
    killEngine();
    QStringList heard;
    QObject::connect(proxy.get(), &SMSManager::WarningError,
                     [&](qint32 code) { heard << QString::number(code); });

    const auto other = makeProxy();
    other->StartEngine();
    EXPECT_TRUE(eventually([&] { return heard.contains(QStringLiteral("-2")); }));
}

TEST_F(EngineLife, aDeviceTestThatBringsTheEngineBackTellsItsReasonWithinTheCall)
{
    const auto proxy = makeProxy();
    proxy->SetDeviceSettings({0, QString(), 1, 1, QStringLiteral("/nowhere/gsm, 9600")});
    QList<qint32> codes;
    QObject::connect(proxy.get(), &SMSManager::WarningError, [&](qint32 code) { codes << code; });
    signalEngine(SIGKILL);
    while (enginePid() != 0) // no event loop: the proxy has not been told
        ;
    EXPECT_EQ(proxy->TestDevice(), -2);
    proxy->DeliverPendingEvents();
    EXPECT_EQ(codes, QList<qint32>{-2});
}

TEST_F(EngineLife, anEngineThatHasGoneIsReportedAsStoppedAndRunsAgainWithTheNextCall)
{
    plugIn();
    const auto proxy = makeProxy();
    QList<qint32> statuses;
    QObject::connect(proxy.get(), &SMSManager::EngineStatus,
                     [&](qint32 status) { statuses << status; });
    proxy->StartEngine();
    ASSERT_TRUE(eventually([&] { return statuses.endsWith(1); }));
    statuses.clear();
    signalEngine(SIGKILL);
    // Nothing is called meanwhile: nobody but the bus can tell.
    ASSERT_TRUE(eventually([&] { return !statuses.isEmpty(); }));
    EXPECT_EQ(statuses, QList<qint32>{0});
    EXPECT_EQ(enginePid(), 0);

    proxy->AddSMS(QStringLiteral("912345678"), QStringLiteral("x"),
                  {QDate(2020, 1, 1), QTime(0, 0), Qt::UTC});
    EXPECT_TRUE(eventually([&] { return statuses.endsWith(1); }));
    EXPECT_TRUE(eventually([&] { return device->messages().size() == 1; }));
}

TEST_F(EngineLife, anEngineThatDiesInTheCallTurnsItIntoAFailureAtOnce)
{
    // A silent device keeps TestDevice waiting until the engine is killed.
    plugIn({QStringLiteral("--silent")});
    const auto proxy = makeProxy();
    const qint64 pid = enginePid();
    ASSERT_GT(pid, 0);
    const QString port = QFileInfo(device->link()).canonicalFilePath();
    const std::unique_ptr<QThread> killer(QThread::create([pid, port] {
        // It opens the device for the test alone.
        EXPECT_TRUE(waitUntil([&] { return hasOpen(pid, port); }));
        ::kill(static_cast<pid_t>(pid), SIGKILL);
    }));
    killer->start();
    try {
        proxy->TestDevice();
        ADD_FAILURE() << "the call came back";
    } catch (const NumberedFailure &failure) {
        EXPECT_EQ(failure.number(), 462);
        EXPECT_EQ(failure.source(), QStringLiteral("SMSManager.TestDevice"));
        // The bus has told of the death: no limit was waited for.
        EXPECT_TRUE(failure.description().contains(QStringLiteral("disconnected")))
            << failure.description().toStdString();
    }
    EXPECT_TRUE(killer->wait());
}

TEST_F(EngineLife, aHungEngineTurnsTheCallIntoAFailureByItsLimit)
{
    const auto proxy = makeProxy();
    proxy->GetEngineStatus();
    proxy->setCallTimeout(500);
    signalEngine(SIGSTOP);
    EXPECT_THROW(proxy->GetEngineStatus(), NumberedFailure);
    EXPECT_NE(enginePid(), 0);
}

TEST_F(EngineLife, anEngineThatWasStartedComesBackStarted)
{
    plugIn();
    const auto proxy = makeProxy();
    proxy->StartEngine();
    killEngine();
    EXPECT_EQ(proxy->GetEngineStatus(), 1);
}
