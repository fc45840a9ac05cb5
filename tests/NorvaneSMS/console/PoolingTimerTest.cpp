#include "NorvaneSMS/console/PoolingFixture.h"

#include "common/NumberedFailure.h"
#include "foundation/CTimerMM.h"
#include "foundation/Globals.h"
#include "support/WindowMessages.h"

#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

class PoolingTimer : public Pooling
{
protected:
    static qsizetype registered()
    {
        return MTimerMM::mcolTimers ? MTimerMM::mcolTimers->size() : 0;
    }
};

TEST_F(PoolingTimer, aServerTicksEveryTenSecondsFromItsStart)
{
    loadAsServer();
    EXPECT_EQ(timers.calls, (QStringList{u"begin 1"_s, u"set 10000 1 1"_s}));
    EXPECT_EQ(registered(), 1);
    drop(u"sms.0"_s);
    processWindowMessages();
    EXPECT_EQ(messages(), 0) << "not before the first tick";
    tick();
    EXPECT_EQ(messages(), 1);
}

TEST_F(PoolingTimer, theEngineIsThereBeforeTheTimer)
{
    script.calls.clear();
    timers.windowError = 24;
    storeMode(true);
    EXPECT_THROW(load(), NumberedFailure);
    EXPECT_EQ(script.calls.first(), u"new 1"_s);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().text, u"Unable to create window, LastError = 24"_s);
}

TEST_F(PoolingTimer, aClientHasNone)
{
    loadAsClient();
    EXPECT_TRUE(timers.calls.isEmpty());
    EXPECT_EQ(registered(), 0);
}

TEST_F(PoolingTimer, fromServerToClientItIsDisabledAndReleased)
{
    loadAsServer();
    const std::weak_ptr<CTimerMM> timer = MTimerMM::mcolTimers->cbegin()->Owner;
    timers.calls.clear();
    timers.tick(); // still queued when the mode changes
    storeMode(false);
    console->SetDeviceSettings({});
    EXPECT_EQ(timers.calls, (QStringList{u"kill 1"_s, u"end 1"_s}));
    EXPECT_EQ(registered(), 0);
    EXPECT_TRUE(timer.expired());
    drop(u"sms.0"_s);
    processWindowMessages();
    EXPECT_TRUE(isThere(u"sms.0"_s));
}

TEST_F(PoolingTimer, fromClientToServerItBegins)
{
    loadAsClient();
    drop(u"sms.0"_s);
    storeMode(true);
    console->SetDeviceSettings({});
    tick();
    EXPECT_EQ(takeMessages(), QStringList{u"sms.0"_s});
}

TEST_F(PoolingTimer, replacedTimerTicksOnUnheard)
{
    loadAsServer();
    storeQueueFolder(path(u"none"_s));
    console->SetDeviceSettings({});
    console->SetDeviceSettings({});
    EXPECT_EQ(registered(), 3);
    EXPECT_EQ(timers.events.size(), 3);
    EXPECT_FALSE(timers.calls.contains(u"kill 1"_s));
    tick(); // of all three
    EXPECT_EQ(terminal(), GS(3760050) + u"\r\n"_s);
}

TEST_F(PoolingTimer, closingTheConsoleEndsItAfterTheEngineIsReleased)
{
    loadAsServer();
    qsizetype registeredThen = 0;
    QObject::connect(engine(), &QObject::destroyed, [&] { registeredThen = registered(); });
    console->close();
    EXPECT_EQ(registeredThen, 1);
    EXPECT_EQ(registered(), 0);
    EXPECT_EQ(timers.calls.mid(2), (QStringList{u"kill 1"_s, u"end 1"_s}));
    EXPECT_EQ(script.calls.last(), u"ReleaseGlobals"_s);
}

TEST_F(PoolingTimer, ticksWhetherTheEngineIsStartedOrNot)
{
    for (const qint32 status : {0, 1, 2}) {
        script.status = status;
        loadAsServer();
        drop(u"sms.0"_s);
        tick();
        EXPECT_EQ(takeCalls(), QStringList{u"AddSMS(912345678|sms.0|2009-03-05T14:07:09)"_s})
            << "no tick looks at the engine's status or starts it";
        console->close();
    }
}

TEST_F(PoolingTimer, clockThatPassesItsGreatestValueIsFatal)
{
    timers.now = std::numeric_limits<qint32>::max();
    loadAsServer();
    drop(u"sms.0"_s);
    timers.now = std::numeric_limits<qint32>::min();
    tick();
    EXPECT_EQ(exitCode, 1);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first(),
              (RecordingMessageBoxes::Shown{u"Overflow - 6"_s, MessageBoxes::Icon::Critical,
                                            MessageBoxes::Buttons::Ok, u"Norvane SMS"_s}));
    EXPECT_TRUE(isThere(u"sms.0"_s)) << "the event was not raised";
}

} // namespace norvane
