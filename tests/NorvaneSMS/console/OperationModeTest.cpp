#include "NorvaneSMS/console/ConsoleFixture.h"

#include "foundation/Globals.h"
#include "foundation/ui/CaptionedFrame.h"

#include <QRegularExpression>
#include <QScreen>
#include <QTableView>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const char *const framesByMode[] = {"fraCommunication", "fraDeviceStatus", "fraEngineStatus",
                                    "fraQueueDetails",  "fraQueueStatus",  "fraSentDetails"};
const char *const controlsByMode[] = {
    "btnTestDevice",   "btnClearQueue",      "btnStart",     "btnStop",     "grdQueue",
    "grdSentDetails",  "imgEngineStatus(0)", "imgQueue(0)",  "imgQueue(1)", "lblDeviceInfo",
    "lblDeviceStatus", "lblEngineStatus",    "lblEstimated", "lblQueueSize"};
const char *const alwaysEnabled[] = {"btnDeviceConfig", "btnSend",    "btnImport",
                                     "txtPhone",        "txtMessage", "dtDeliveryDate",
                                     "tmDeliveryDate",  "txtTerm",    "imgEngineStatus(1)",
                                     "imgQueue(2)",     "lblPhone",   "lblSMSChars"};

} // namespace

class OperationMode : public ConsoleFixture
{
protected:
    // The limits hold for the outer window.
    QSize frame() const { return console->frameSize() - console->size(); }
    QSize smallest() const { return console->minimumSize() + frame(); }
    QSize largest() const { return console->maximumSize() + frame(); }

    bool isEnabled(const char *name) const { return control(name)->isEnabled(); }
    bool isFrameEnabled(const char *name) const
    {
        return control<CaptionedFrame>(name)->isFrameEnabled();
    }
};

TEST_F(OperationMode, aClientDisablesWhatBelongsToTheEngine)
{
    loadAsClient();
    for (const char *const name : framesByMode)
        EXPECT_FALSE(isFrameEnabled(name)) << name;
    for (const char *const name : controlsByMode)
        EXPECT_FALSE(isEnabled(name)) << name;
}

TEST_F(OperationMode, aServerEnablesIt)
{
    loadAsServer();
    console->ApplyOperationMode();
    for (const char *const name : framesByMode)
        EXPECT_TRUE(isFrameEnabled(name)) << name;
    for (const char *const name : controlsByMode)
        EXPECT_TRUE(isEnabled(name)) << name;
}

TEST_F(OperationMode, everythingElseIsEnabledInBothModes)
{
    for (const bool server : {true, false}) {
        storeMode(server);
        load();
        for (const char *const name : alwaysEnabled)
            EXPECT_TRUE(isEnabled(name)) << name << (server ? " on a server" : " on a client");
        EXPECT_TRUE(isFrameEnabled("fraSMSMessage"));
    }
}

TEST_F(OperationMode, theRunningPictureIsLeftOut)
{
    loadAsClient();
    EXPECT_TRUE(isEnabled("imgEngineStatus(1)"));
    EXPECT_FALSE(isEnabled("imgEngineStatus(0)"));
}

TEST_F(OperationMode, startAndStopStayBothEnabledUntilTheEngineReportsItsStatus)
{
    loadAsServer();
    console->SetDeviceSettings({});
    EXPECT_TRUE(isEnabled("btnStart"));
    EXPECT_TRUE(isEnabled("btnStop"));
    Q_EMIT engine()->EngineStatus(1);
    EXPECT_FALSE(isEnabled("btnStart"));
    EXPECT_TRUE(isEnabled("btnStop"));
}

TEST_F(OperationMode, fromServerToClientStopsAndThenReleasesTheEngine)
{
    script.queueSize = 3;
    loadAsServer();
    storeMode(false);
    EXPECT_FALSE(console->SetDeviceSettings({}));
    EXPECT_EQ(takeCalls(), (QStringList{u"StopEngine"_s, u"release 1"_s}));
    EXPECT_EQ(engine(), nullptr);
}

TEST_F(OperationMode, fromClientToServerMakesTheEngineBeforeTheSettingsReachIt)
{
    loadAsClient();
    storeMode(true);
    EXPECT_TRUE(console->SetDeviceSettings({0, {}, 1, 1, u"COM3, 9600"_s}));
    EXPECT_EQ(takeCalls(), (QStringList{u"new 1"_s, u"SetDeviceSettings(COM3, 9600)"_s}));
}

TEST_F(OperationMode, aChangeToServerPullsNoState)
{
    loadAsClient();
    storeMode(true);
    console->SetDeviceSettings({});
    const QStringList calls = takeCalls();
    EXPECT_FALSE(calls.contains(u"GetQueueSize"_s));
    EXPECT_FALSE(calls.contains(u"GetEngineStatus"_s));
}

TEST_F(OperationMode, theDisplaysKeepWhatTheyShowThroughChangesOfMode)
{
    script.queueSize = 5;
    script.status = 1;
    loadAsServer();
    Q_EMIT engine()->DeviceInfo(u"Acme"_s, u"M1"_s, {}, {}, 0, 0, {}, {}, {}, {});
    const QStringList names{u"lblQueueSize"_s, u"lblEngineStatus"_s, u"lblDeviceStatus"_s,
                            u"lblEstimated"_s};
    const auto shown = [&] {
        QStringList texts;
        for (const QString &name : names)
            texts << text(name.toLatin1());
        for (const char *const picture :
             {"imgEngineStatus(0)", "imgEngineStatus(1)", "imgQueue(0)", "imgQueue(1)"})
            texts << QString::number(control(picture)->isHidden());
        return texts;
    };
    const QStringList before = shown();
    EXPECT_EQ(before.first(), GS(3760025, 5));
    // What the next engine would tell if it were asked.
    script.queueSize = 0;
    script.status = 0;
    for (const bool server : {false, true, true}) {
        storeMode(server);
        console->SetDeviceSettings({});
        EXPECT_EQ(shown(), before) << (server ? "as a server" : "as a client");
    }
}

TEST_F(OperationMode, twoConfirmedDialogsMakeTwoEnginesInTurnWithoutAStop)
{
    loadAsServer();
    console->SetDeviceSettings({});
    console->SetDeviceSettings({});
    const QStringList calls = takeCalls();
    EXPECT_EQ(script.objectsMade, 3);
    EXPECT_FALSE(calls.contains(u"StopEngine"_s));
    EXPECT_EQ(calls.filter(QRegularExpression(u"^(new|release)"_s)),
              (QStringList{u"new 2"_s, u"release 1"_s, u"new 3"_s, u"release 2"_s}));
}

TEST_F(OperationMode, theEnginesRefusalIsPassedOn)
{
    script.setAnswer = false;
    loadAsServer();
    EXPECT_FALSE(console->SetDeviceSettings({}));
}

TEST_F(OperationMode, aClientGivesTheEmptyRecordAndCallsNoEngine)
{
    loadAsClient();
    EXPECT_EQ(console->GetDeviceSettings(), DeviceSettings());
    EXPECT_FALSE(console->SetDeviceSettings({0, {}, 1, 1, u"COM3, 9600"_s}));
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(OperationMode, aServerGivesTheEnginesRecord)
{
    script.settings = {0, u"1234"_s, 2, 1, u"COM5, 9600"_s};
    loadAsServer();
    EXPECT_EQ(console->GetDeviceSettings(), script.settings);
}

TEST_F(OperationMode, theWindowTakesTheSizeOfItsMode)
{
    loadAsServer();
    EXPECT_EQ(console->frameSize(), QSize(1009, 519));
    loadAsClient();
    EXPECT_EQ(console->frameSize(), QSize(574, 519));
}

TEST_F(OperationMode, theFrameOfTheWindowManagerIsTakenIntoAccountOnceItIsKnown)
{
    loadAsServer();
    EXPECT_EQ(frame(), QSize(0, 0));
    show();
    ASSERT_NE(frame(), QSize(0, 0)) << "this platform draws a frame, or the test shows nothing";
    EXPECT_EQ(console->frameSize(), QSize(1009, 519));
    EXPECT_EQ(smallest(), QSize(1009, 519));
}

TEST_F(OperationMode, aClientCanNeitherGrowNorShrink)
{
    loadAsClient();
    show();
    EXPECT_EQ(smallest(), QSize(574, 519));
    EXPECT_EQ(largest(), QSize(574, 519));
}

TEST_F(OperationMode, aServerCanGrowToTheScreenAndNotShrink)
{
    loadAsServer();
    show();
    const QSize screen = console->screen()->size();
    EXPECT_EQ(QSize(gWindowLimits.maximumWidth, gWindowLimits.maximumHeight), screen);
    const QSize largest = screen.expandedTo({1009, 519});
    ASSERT_GT(largest.height(), 519) << "the screen leaves no room to grow";
    console->resize(5000, 5000);
    EXPECT_EQ(console->frameSize(), largest);
    console->resize(1, 1);
    EXPECT_EQ(console->frameSize(), QSize(1009, 519));
    console->resize(QSize(1009, 600) - frame());
    EXPECT_EQ(console->frameSize(), QSize(1009, 600));
}

TEST_F(OperationMode, aChangeOfModeChangesSizeAndLimitsAtOnce)
{
    loadAsServer();
    show();
    storeMode(false);
    console->SetDeviceSettings({});
    console->SetWindowLimits();
    EXPECT_EQ(console->frameSize(), QSize(574, 519));
    EXPECT_EQ(largest(), QSize(574, 519));
    storeMode(true);
    console->SetDeviceSettings({});
    console->SetWindowLimits();
    EXPECT_EQ(console->frameSize(), QSize(1009, 519));
    EXPECT_EQ(smallest(), QSize(1009, 519));
}

TEST_F(OperationMode, aMaximisedWindowReturnsToItsNormalState)
{
    loadAsServer();
    show();
    console->showMaximized();
    console->SetWindowLimits();
    EXPECT_FALSE(console->isMaximized());
    EXPECT_EQ(console->frameSize(), QSize(1009, 519));
}

TEST_F(OperationMode, whatWasReportedStaysThroughNewEnginesAndChangesOfMode)
{
    loadAsServer();
    const auto report = [this](const QString &phone) {
        Q_EMIT engine()->SMSSent(phone, u"Hola"_s, 0);
        Q_EMIT engine()->SMSSentFailed(phone, u"Hola"_s, -39);
    };
    const auto phones = [this] {
        const QAbstractItemModel *const sent = control<QTableView>("grdSentDetails")->model();
        QString shown;
        for (int row = 0; row < sent->rowCount(); ++row)
            shown += sent->index(row, 1).data().toString();
        return shown;
    };
    report(u"1"_s);
    const QString lines = terminal();
    const QString count = caption("fraSentDetails");
    for (const bool server : {true, false, true}) { // a new engine, none, a new one
        storeMode(server);
        console->SetDeviceSettings({});
        EXPECT_EQ(phones(), u"11"_s);
        EXPECT_EQ(caption("fraSentDetails"), count);
        EXPECT_EQ(terminal(), lines);
    }
    report(u"2"_s);
    EXPECT_EQ(phones(), u"1122"_s);
    EXPECT_EQ(caption("fraSentDetails"), GS(3760009) + u" ( 3 )"_s);
}

TEST_F(OperationMode, anEngineThatWasReplacedIsNoLongerHeard)
{
    loadAsServer();
    const auto raiseLater = [](RecordingEngine *from, const QString &words) {
        QMetaObject::invokeMethod(
            from, [from, words] { Q_EMIT from->WarningError(1, words); }, Qt::QueuedConnection);
    };
    // It waits for the event loop, as events of an engine do, when the object is replaced.
    raiseLater(engine(), u"replaced"_s);
    console->SetDeviceSettings({});
    raiseLater(engine(), u"newest"_s);
    QCoreApplication::processEvents();
    EXPECT_FALSE(terminal().contains(u"replaced"_s));
    EXPECT_TRUE(terminal().contains(u"newest"_s));
    EXPECT_EQ(takeCalls().filter(u"release 1"_s).size(), 1);
}

} // namespace norvane
