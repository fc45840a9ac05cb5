#include "NorvaneSMS/console/PoolingFixture.h"

#include "foundation/CTimerMM.h"
#include "foundation/Globals.h"

#include <QDir>
#include <QPushButton>

namespace norvane {

using namespace Qt::StringLiterals;

// What happens while a tick processes events between two files.

class PoolingInterrupted : public Pooling
{
protected:
    void SetUp() override
    {
        loadAsServer();
        dropMany(30);
    }

    /// Runs a tick during which `action` takes place after the first file.
    void tickWith(std::function<void()> action)
    {
        whenEventsAreProcessed([this, action = std::move(action)] {
            happened = true;
            action();
        });
        tick();
        ASSERT_TRUE(happened);
    }

    bool happened = false;
};

TEST_F(PoolingInterrupted, tickThatFallsDueReturnsAtOnce)
{
    tickWith([this] {
        const qsizetype before = messages();
        EXPECT_EQ(before, 1);
        tick();
        tick();
        EXPECT_EQ(messages(), before);
    });
    EXPECT_EQ(messages(), 30);
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(PoolingInterrupted, tickEndsWhenTheModeHasChanged)
{
    tickWith([this] {
        storeMode(false);
        console->SetDeviceSettings({});
    });
    EXPECT_EQ(messages(), 1);
    EXPECT_EQ(names().size(), 29);
    EXPECT_EQ(streams.calls.filter(u"open "_s).size(), 1);

    storeMode(true);
    console->SetDeviceSettings({});
    tick();
    EXPECT_EQ(messages(), 30) << "a tick that ended this way doesn't keep the next one out";
}

TEST_F(PoolingInterrupted, tickEndsWhenTheFolderHasChanged)
{
    ASSERT_TRUE(QDir().mkdir(path(u"other"_s)));
    tickWith([this] {
        storeQueueFolder(path(u"other"_s));
        console->SetDeviceSettings({});
    });
    EXPECT_EQ(messages(), 1);
    EXPECT_EQ(names().size(), 29 + 1);
    drop(u"other/sms.0"_s);
    tick();
    EXPECT_EQ(messages(), 2);
    EXPECT_FALSE(isThere(u"other/sms.0"_s));
}

TEST_F(PoolingInterrupted, tickEndsWhenTheWindowIsClosed)
{
    tickWith([this] { console->close(); });
    EXPECT_EQ(messages(), 1);
    EXPECT_EQ(names().size(), 29);
    EXPECT_EQ(exitCode, 0);
    EXPECT_EQ(MTimerMM::mcolTimers, nullptr);
}

TEST_F(PoolingInterrupted, timerLivesUntilItsCallHasReturned)
{
    const std::weak_ptr<CTimerMM> timer = MTimerMM::mcolTimers->cbegin()->Owner;
    bool alive = false;
    tickWith([&] {
        console->close();
        alive = !timer.expired();
    });
    EXPECT_TRUE(alive);
    EXPECT_TRUE(timer.expired());
}

TEST_F(PoolingInterrupted, tickGoesOnWithTheNewEngineWhenOnlyThatHasChanged)
{
    tickWith([this] { console->SetDeviceSettings({}); });
    EXPECT_EQ(messages(), 30);
    EXPECT_TRUE(names().isEmpty());
    QStringList calls = takeCalls();
    ASSERT_GT(calls.size(), 4);
    EXPECT_TRUE(calls.first().startsWith(u"AddSMS("_s));
    EXPECT_EQ(calls.mid(1, 3), (QStringList{u"new 2"_s, u"release 1"_s, u"SetDeviceSettings()"_s}));
    EXPECT_EQ(calls.mid(4).filter(u"AddSMS("_s).size(), 29) << "of the new one";
}

TEST_F(PoolingInterrupted, nothingIsPolledWhileTheFatalReportIsOpen)
{
    script.failingCalls.enqueue(4); // the next call: three were made at load
    boxes.whileShown = [this] {
        tick();
        tick();
        EXPECT_EQ(messages(), 0);
    };
    Q_EMIT engine()->SMSQueueChanged(1);
    boxes.whileShown = nullptr;
    EXPECT_EQ(exitCode, 1);
    EXPECT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(names().size(), 30);
    EXPECT_TRUE(streams.calls.isEmpty());
    EXPECT_EQ(terminal(), QString());

    tick(); // here the end of the process is only noted
    EXPECT_EQ(messages(), 30);
}

TEST_F(PoolingInterrupted, failureInAnotherHandlerIsFatalAsEver)
{
    tickWith([this] {
        script.failingCalls.enqueue(5); // the next call: three at load, one AddSMS
        Q_EMIT engine()->SMSQueueChanged(1);
    });
    EXPECT_EQ(exitCode, 1);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(boxes.shown.first().text.endsWith(u" - 462"_s));
    EXPECT_EQ(messages(), 30) << "the tick is none of its business";
}

TEST_F(PoolingInterrupted, noFileIsTakenInFrontOfTheReportOfADeviceTestThatFails)
{
    // The test took longer than ten seconds: a tick waits behind it.
    const QString test = u"TestDevice"_s;
    script.failingCall = test;
    script.inCall = [&](const QString &call) {
        if (call == test)
            QMetaObject::invokeMethod(
                console.get(), [this] { tick(); }, Qt::QueuedConnection);
    };
    control<QPushButton>("btnTestDevice")->click();
    script.inCall = nullptr;
    EXPECT_EQ(exitCode, 1);
    EXPECT_EQ(names().size(), 30);
}

} // namespace norvane
