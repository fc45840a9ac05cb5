#include "NorvaneSMS/console/ConsoleFixture.h"

#include "common/FailureNumbers.h"
#include "common/NumberedFailure.h"
#include "foundation/Globals.h"
#include "foundation/ui/PictureButton.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDateEdit>
#include <QLabel>
#include <QScreen>
#include <QTableView>
#include <QTimeEdit>

namespace norvane {

using namespace Qt::StringLiterals;

class LoadAndUnload : public ConsoleFixture
{
protected:
    QString header(const char *grid, int column) const
    {
        return control<QTableView>(grid)->model()->headerData(column, Qt::Horizontal).toString();
    }
};

TEST_F(LoadAndUnload, aServerMakesItsEngineAndPullsTheStateOnce)
{
    storeMode(true);
    load();
    EXPECT_EQ(takeCalls(),
              (QStringList{u"new 1"_s, u"GetQueueSize"_s, u"GetQueue"_s, u"GetEngineStatus"_s}));
}

TEST_F(LoadAndUnload, aClientHasNoEngineAndMakesNoCall)
{
    storeMode(false);
    load();
    EXPECT_TRUE(takeCalls().isEmpty());
    EXPECT_EQ(engine(), nullptr);
}

TEST_F(LoadAndUnload, withNothingStoredTheConsoleIsAServerAndWritesNothing)
{
    load();
    EXPECT_EQ(script.objectsMade, 1);
    EXPECT_EQ(settings.saves, 0);
    EXPECT_TRUE(settings.values.isEmpty());
}

TEST_F(LoadAndUnload, captionsComeFromTheLanguageFile)
{
    loadAsClient();
    EXPECT_EQ(console->windowTitle(), GS(3760000));
    const std::initializer_list<std::pair<const char *, qint32>> buttons = {
        {"btnDeviceConfig", 3760001},
        {"btnTestDevice", 3760002},
        {"btnSend", 3760003},
        {"btnImport", 3760004}};
    for (const auto &[name, id] : buttons)
        EXPECT_EQ(control<PictureButton>(name)->text(), GS(id)) << name;
    const std::initializer_list<std::pair<const char *, qint32>> frames = {
        {"fraSMSMessage", 3760005},   {"fraQueueDetails", 3760008}, {"fraSentDetails", 3760009},
        {"fraDeviceStatus", 3760012}, {"fraQueueStatus", 3760011},  {"fraCommunication", 3760090}};
    for (const auto &[name, id] : frames)
        EXPECT_EQ(caption(name), GS(id)) << name;
    const std::initializer_list<std::pair<const char *, qint32>> labels = {
        {"lblPhone", 3760006},
        {"lblDeliveryDate", 3760007},
        {"lblQueueSize", 3760013},
        {"lblEngineStatus", 3760014},
        {"lblDeviceInfo", 3760015}};
    for (const auto &[name, id] : labels)
        EXPECT_EQ(text(name), GS(id)) << name;
}

TEST_F(LoadAndUnload, theDeviceFrameShowsTheSecondOfItsTwoTexts)
{
    loadAsClient();
    ASSERT_NE(GS(3760010), GS(3760012));
    EXPECT_EQ(caption("fraDeviceStatus"), GS(3760012));
}

TEST_F(LoadAndUnload, whatHasNoTextOfItsOwnKeepsTheDesignText)
{
    loadAsClient();
    EXPECT_EQ(caption("fraEngineStatus"), u"Estado"_s);
    EXPECT_EQ(text("lblSMSChars"), u"Caracteres: 0 / 160"_s);
    EXPECT_EQ(text("lblEstimated"), u"Tempo previsto: 00:00:00"_s);
    EXPECT_EQ(text("lblDeviceStatus"), QString());
    for (const char *const button : {"btnStart", "btnStop", "btnClearQueue"})
        EXPECT_TRUE(control<PictureButton>(button)->text().isEmpty()) << button;
}

TEST_F(LoadAndUnload, theSecondLogoIsTheOneThatShows)
{
    loadAsClient();
    EXPECT_TRUE(control("imgLogo(0)")->isHidden());
    EXPECT_FALSE(control("imgLogo(1)")->isHidden());
}

TEST_F(LoadAndUnload, aClientShowsOneOfTheTwoPicturesThatShareAPlace)
{
    loadAsClient();
    EXPECT_FALSE(control("imgEngineStatus(0)")->isHidden());
    EXPECT_TRUE(control("imgEngineStatus(1)")->isHidden());
    EXPECT_FALSE(control("imgQueue(0)")->isHidden());
    EXPECT_TRUE(control("imgQueue(1)")->isHidden());
}

TEST_F(LoadAndUnload, deliveryDateAndTimeStartAtNowInBothModes)
{
    for (const bool server : {true, false}) {
        storeMode(server);
        load();
        EXPECT_EQ(control<QDateEdit>("dtDeliveryDate")->date(), now.date());
        EXPECT_EQ(control<QTimeEdit>("tmDeliveryDate")->time(), now.time());
        EXPECT_EQ(control<QDateEdit>("dtDeliveryDate")->text(), u"20/11/2026"_s);
        EXPECT_EQ(control<QTimeEdit>("tmDeliveryDate")->text(), u"09:30:15"_s);
    }
}

TEST_F(LoadAndUnload, gridHeadersAndWidthsAreSet)
{
    loadAsServer();
    const std::initializer_list<std::pair<const char *, qint32>> grids = {
        {"grdQueue", 3760028}, {"grdSentDetails", 3760031}};
    for (const auto &[name, first] : grids) {
        const auto *const grid = control<QTableView>(name);
        const QAbstractItemModel *const model = grid->model();
        ASSERT_EQ(model->columnCount(), 3);
        EXPECT_EQ(model->headerData(0, Qt::Horizontal).toString(), GS(first));
        EXPECT_EQ(model->headerData(1, Qt::Horizontal).toString(), GS(3760029));
        EXPECT_EQ(model->headerData(2, Qt::Horizontal).toString(), GS(3760030));
        EXPECT_EQ(grid->columnWidth(0), 84);
        EXPECT_EQ(grid->columnWidth(1), 107);
        EXPECT_EQ(grid->columnWidth(2), 78);
    }
}

TEST_F(LoadAndUnload, anEventThatArrivesDuringTheLoadIsHandled)
{
    // The earliest event comes before the window is shown: captions and grids stand by then.
    storeMode(true);
    script.inGetQueue = [this] {
        script.inGetQueue = nullptr;
        Q_EMIT engine()->SMSSent(u"912345678"_s, u"Hola"_s, 0);
    };
    load();
    EXPECT_EQ(terminal(), GS(3760023, u"912345678"_s) + u"\r\n"_s);
    EXPECT_EQ(caption("fraSentDetails"), GS(3760009) + u" ( 1 )"_s);
}

TEST_F(LoadAndUnload, captionsAndHeadersStandBeforeTheEngineExists)
{
    storeMode(true);
    bool made = false;
    script.inNew = [&] {
        made = true;
        EXPECT_EQ(console->windowTitle(), GS(3760000));
        EXPECT_EQ(caption("fraSentDetails"), GS(3760009));
        EXPECT_EQ(caption("fraCommunication"), GS(3760090));
        EXPECT_EQ(text("lblQueueSize"), GS(3760013));
        for (const char *const grid : {"grdQueue", "grdSentDetails"}) {
            EXPECT_EQ(header(grid, 1), GS(3760029)) << grid;
            EXPECT_EQ(control<QTableView>(grid)->columnWidth(0), 84) << grid;
        }
        EXPECT_FALSE(control("imgLogo(1)")->isHidden());
    };
    load();
    script.inNew = nullptr;
    EXPECT_TRUE(made);
}

TEST_F(LoadAndUnload, whatWasPulledStandsOverTheCaptions)
{
    storeMode(true);
    script.queueSize = 5;
    script.status = 0;
    load();
    EXPECT_EQ(text("lblQueueSize"), GS(3760025, 5));
    EXPECT_EQ(text("lblEngineStatus"), GS(3760026));
}

TEST_F(LoadAndUnload, theModeIsReadFirstAndThenTheFolderAndTheModeAgain)
{
    loadAsClient();
    EXPECT_EQ(settings.reads, (QStringList{u"ServerMode"_s, u"QueueFolder"_s, u"ServerMode"_s}));
}

TEST_F(LoadAndUnload, theWindowStandsInTheMiddleOfTheScreen)
{
    for (const bool server : {true, false}) {
        storeMode(server);
        load();
        const QSize screen = console->screen()->size();
        const QSize shown = console->frameSize().boundedTo(screen);
        EXPECT_EQ(console->pos(), QPoint((screen.width() - shown.width()) / 2,
                                         (screen.height() - shown.height()) / 2));
    }
}

TEST_F(LoadAndUnload, theWindowHasItsSizeBeforeTheStateIsPulledAndIsHookedBehindThat)
{
    storeMode(true);
    QSize pulledAt;
    QSize minimumThen;
    script.inGetQueue = [&] {
        pulledAt = console->frameSize();
        minimumThen = console->minimumSize();
    };
    load();
    script.inGetQueue = nullptr;
    EXPECT_EQ(pulledAt, QSize(1009, 519));
    EXPECT_EQ(minimumThen, QSize(0, 0));
    EXPECT_EQ(console->minimumSize(), QSize(1009, 519));
}

TEST_F(LoadAndUnload, timerAndHookAreGoneWhenTheGlobalsAreReleased)
{
    loadAsServer();
    show();
    bool looked = false;
    inReleaseGlobals = [&] {
        looked = true;
        EXPECT_EQ(engine(), nullptr);
        EXPECT_TRUE(timers.events.isEmpty());
        EXPECT_EQ(console->minimumSize(), QSize(0, 0));
        EXPECT_EQ(GS(3760003), control<PictureButton>("btnSend")->text()) << "texts are there";
    };
    console->close();
    EXPECT_TRUE(looked);
}

TEST_F(LoadAndUnload, theLimitsAreTakenOffAtTheEnd)
{
    loadAsClient();
    show();
    EXPECT_NE(console->maximumSize(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
    console->close();
    EXPECT_EQ(console->maximumSize(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
    EXPECT_EQ(console->minimumSize(), QSize(0, 0));
}

TEST_F(LoadAndUnload, anEngineThatCannotBeMadeFailsTheLoad)
{
    storeMode(true);
    ConsoleEnvironment withoutEngine{
        []() -> std::unique_ptr<SMSManager> {
            Failure::raise(Failure::CannotCreateObject, u"SMSManager"_s);
        },
        [] {}, [this] { return now; }, ModeSettings(settings, u"/program"_s), locale};
    console = std::make_unique<frmSMSClient>(std::move(withoutEngine));
    try {
        console->Form_Load();
        ADD_FAILURE() << "it loaded";
    } catch (const NumberedFailure &failure) {
        EXPECT_EQ(failure.number(), 429);
    }
    EXPECT_FALSE(console->isVisible());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(LoadAndUnload, closingReleasesTheEngineWithoutAStopAndTheGlobalsLast)
{
    script.status = SMSManager::running;
    loadAsServer();
    show();
    takeCalls();
    console->close();
    EXPECT_EQ(takeCalls(), (QStringList{u"release 1"_s, u"ReleaseGlobals"_s}));
}

TEST_F(LoadAndUnload, closingAClientEndsTheSameWayWithoutAnEngine)
{
    loadAsClient();
    show();
    console->close();
    EXPECT_EQ(takeCalls(), QStringList{u"ReleaseGlobals"_s});
}

TEST_F(LoadAndUnload, closingAsksNothingWhateverTheQueueHolds)
{
    script.queueSize = 5;
    loadAsServer();
    show();
    console->close();
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_FALSE(console->isVisible());
}

TEST_F(LoadAndUnload, theUnloadRunsOnce)
{
    loadAsClient();
    show();
    console->close();
    // close() of a window that is gone sends no event any more; others may.
    QCloseEvent again;
    QApplication::sendEvent(console.get(), &again);
    EXPECT_EQ(takeCalls().count(u"ReleaseGlobals"_s), 1);
    EXPECT_TRUE(again.isAccepted());
}

} // namespace norvane
