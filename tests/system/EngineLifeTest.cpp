#include "common/NumberedFailure.h"
#include "system/EngineProcess.h"
#include "system/ReplacedEngine.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <atomic>
#include <csignal>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

bool hasOpen(qint64 pid, const QString &file)
{
    const QDir open(u"/proc/%1/fd"_s.arg(pid));
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
    EXPECT_EQ(proxy->GetDeviceSettings(), (DeviceSettings{0, QString(), 1, 1, u"COM1, 9600"_s}));
}

TEST_F(EngineLife, itOutlivesTheConsole)
{
    auto proxy = makeProxy();
    const qint64 pid = enginePid();
    proxy->AddSMS(u"1"_s, u"x"_s, {QDate(2100, 1, 1), QTime(0, 0), Qt::UTC});
    proxy.reset();
    proxy = makeProxy();
    EXPECT_EQ(enginePid(), pid);
    EXPECT_EQ(proxy->GetQueueSize(), 1);
}

TEST_F(EngineLife, theQueueOutlivesTheEngine)
{
    auto proxy = makeProxy();
    proxy->AddSMS(u"1"_s, u"x"_s, {QDate(2100, 1, 1), QTime(0, 0), Qt::UTC});
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
    storeDevice(u"/nowhere/gsm, 9600"_s);
    const auto proxy = makeProxy();
    killEngine();
    QStringList heard;
    QObject::connect(proxy.get(), &SMSManager::WarningError,
                     [&](qint32 code) { heard << QString::number(code); });

    const auto other = makeProxy();
    other->StartEngine();
    EXPECT_TRUE(eventually([&] { return heard.contains(u"-2"_s); }));
}

TEST_F(EngineLife, anEngineThatSomeoneElseStartedAnewIsAskedForItsState)
{
    const auto proxy = makeProxy();
    int reports = 0;
    QObject::connect(proxy.get(), &SMSManager::SMSQueueChanged, [&reports] { ++reports; });
    ASSERT_TRUE(eventually([&] { return reports == 1; }));
    killEngine();
    makeLauncher(QDBusConnection::sessionBus())->ensureRunning();
    EXPECT_TRUE(eventually([&] { return reports == 2; }));
}

TEST_F(EngineLife, anEngineThatACallHasBroughtBackIsNotReportedAsStopped)
{
    const auto proxy = makeProxy();
    proxy->StartEngine();
    killEngine();
    EXPECT_EQ(proxy->GetEngineStatus(), 1);
    proxy->DeliverPendingEvents();
    QList<qint32> statuses;
    QObject::connect(proxy.get(), &SMSManager::EngineStatus,
                     [&](qint32 status) { statuses << status; });
    // Behind the change of the name's owner on the connection of the proxy.
    proxy->ClearQueue();
    bool passed = false;
    QMetaObject::invokeMethod(
        proxy.get(), [&passed] { passed = true; }, Qt::QueuedConnection);
    EXPECT_TRUE(eventually([&] { return passed; }));
    EXPECT_FALSE(statuses.contains(0));
}

TEST_F(EngineLife, aDeviceTestThatBringsTheEngineBackTellsItsReasonWithinTheCall)
{
    const auto proxy = makeProxy();
    proxy->SetDeviceSettings({0, QString(), 1, 1, u"/nowhere/gsm, 9600"_s});
    QList<qint32> codes;
    QObject::connect(proxy.get(), &SMSManager::WarningError, [&](qint32 code) { codes << code; });
    signalEngine(SIGKILL);
    while (enginePid() != 0) // no event loop: the proxy has not been told
        ;
    EXPECT_EQ(proxy->TestDevice(), -2);
    proxy->DeliverPendingEvents();
    EXPECT_EQ(codes, QList<qint32>{-2});
}

TEST_F(EngineLife, aDeviceTestOfAnEngineThatSomeoneElseBroughtBackTellsItsReasonWithinTheCall)
{
    const auto proxy = makeProxy();
    proxy->SetDeviceSettings({0, QString(), 1, 1, u"/nowhere/gsm, 9600"_s});
    QList<qint32> codes;
    QObject::connect(proxy.get(), &SMSManager::WarningError, [&](qint32 code) { codes << code; });
    killEngine();
    makeLauncher(QDBusConnection::sessionBus())->ensureRunning();
    EXPECT_EQ(proxy->TestDevice(), -2);
    proxy->DeliverPendingEvents();
    EXPECT_EQ(codes, QList<qint32>{-2});
}

/// Brings up an engine whose device test takes longer than another call may.
class SlowEngineLauncher : public EngineLauncher
{
public:
    /// @param longer  how long it takes, in milliseconds
    explicit SlowEngineLauncher(int longer) : m_longer(longer) {}

    void ensureRunning() override
    {
        if (!engine)
            engine = std::make_unique<ReplacedEngine>(
                [this](const QDBusMessage &call) { return answer(call); });
    }

    std::unique_ptr<ReplacedEngine> engine;

private:
    QDBusMessage answer(const QDBusMessage &call) const
    {
        if (call.member() != "TestDevice"_L1)
            return call.createReply();
        // Nobody answers, as this is the engine's own thread: it lasts until the limit.
        const QString name = u"slow engine"_s;
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)
            .call(QDBusMessage::createMethodCall(
                      QDBusConnection(u"replaced engine"_s).baseService(),
                      QLatin1String(Bus::objectPath), QLatin1String(Bus::interfaceName),
                      u"GetQueueSize"_s),
                  QDBus::Block, m_longer);
        QDBusConnection::disconnectFromBus(name);
        return call.createReply(QVariant(1));
    }

    const int m_longer;
};

TEST_F(EngineLife, aDeviceTestThatBringsTheEngineBackMayTakeLongerThanAnotherCall)
{
    constexpr int callTimeout = 500;
    SlowEngineLauncher launcher(callTimeout * 2);
    SMSManagerProxy proxy(launcher);
    proxy.setCallTimeout(callTimeout);
    launcher.engine.reset();
    EXPECT_EQ(proxy.TestDevice(), 1);
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

    proxy->AddSMS(u"912345678"_s, u"x"_s, {QDate(2020, 1, 1), QTime(0, 0), Qt::UTC});
    EXPECT_TRUE(eventually([&] { return statuses.endsWith(1); }));
    EXPECT_TRUE(eventually([&] { return device->messages().size() == 1; }));
}

TEST_F(EngineLife, anEngineThatDiesInTheCallTurnsItIntoAFailureAtOnce)
{
    // A silent device keeps TestDevice waiting until the engine is killed.
    plugIn({u"--silent"_s});
    const auto proxy = makeProxy();
    const qint64 pid = enginePid();
    ASSERT_GT(pid, 0);
    const QString port = QFileInfo(device->link()).canonicalFilePath();
    std::atomic<bool> isBack = false;
    const std::unique_ptr<QThread> killer(QThread::create([pid, port, &isBack] {
        // It opens the device for the test alone.
        EXPECT_TRUE(waitUntil([&] { return isBack || hasOpen(pid, port); }));
        ::kill(static_cast<pid_t>(pid), SIGKILL);
    }));
    killer->start();
    try {
        proxy->TestDevice();
        ADD_FAILURE() << "the call came back";
    } catch (const NumberedFailure &failure) {
        EXPECT_EQ(failure.number(), 462);
        EXPECT_EQ(failure.source(), u"SMSManager.TestDevice"_s);
        // The bus has told of the death: no limit was waited for.
        EXPECT_TRUE(failure.description().contains(u"disconnected"_s))
            << failure.description().toStdString();
    }
    isBack = true;
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

} // namespace norvane
