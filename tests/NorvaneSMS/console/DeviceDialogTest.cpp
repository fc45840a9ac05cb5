#include "NorvaneSMS/console/ConsoleFixture.h"

#include "NorvaneSMS/device/DeviceConfigForm.h"
#include "foundation/Globals.h"
#include "foundation/ui/FatalReport.h"
#include "foundation/ui/FormSetUp.h"
#include "foundation/ui/PictureButton.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <string>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// What becomes of a window, in its order; a step that is repeated at once counts as one.
class Steps : public QObject
{
public:
    void add(const QString &step)
    {
        if (taken.isEmpty() || taken.last() != step)
            taken.append(step);
    }
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Resize)
            add(u"size"_s);
        else if (event->type() == QEvent::WindowTitleChange)
            add(u"title"_s);
        return false;
    }

    QStringList taken;
};

} // namespace

/// The console's button and what follows a dialog that was confirmed.
class DeviceDialog : public ConsoleFixture
{
protected:
    DeviceDialog()
    {
        settings.values.insert(u"Norvane/SMS/QueueFolder"_s, folder.path());
        script.settings = {0, u"1234"_s, 1, 1, u"COM3, 9600"_s};
        settings.onSave = [this](const QString &key, const QString &value) {
            script.calls << key + u'=' + value;
        };
    }

    /// Presses the console's button and runs `act` on the dialog, which is to end it.
    void configure(const std::function<void(DeviceConfigForm &)> &act)
    {
        bool shown = false;
        QTimer::singleShot(0, [&] {
            auto *const form = qobject_cast<DeviceConfigForm *>(QApplication::activeModalWidget());
            ASSERT_NE(form, nullptr);
            shown = true;
            act(*form);
            EXPECT_FALSE(form->isVisible()) << "the test left the dialog open";
            form->hide();
        });
        QTest::mouseClick(control<QPushButton>("btnDeviceConfig"), Qt::LeftButton);
        EXPECT_TRUE(shown);
    }
    static void press(QWidget *button) { QTest::mouseClick(button, Qt::LeftButton); }
    void confirm()
    {
        configure([](DeviceConfigForm &form) { press(form.cmdOk); });
    }
    QString saved(const char *key, const QString &value) const
    {
        return QLatin1String(key) + u'=' + value;
    }
    QString savedFolder() const { return saved("QueueFolder", folder.path()); }
    bool isWide() const { return console->frameSize() == QSize(1009, 519); }

    QTemporaryDir folder;
    const QString get = u"GetDeviceSettings"_s;
    const QString apply = u"ApplySettings"_s;
};

TEST_F(DeviceDialog, aConfirmedDialogOnAServerGoesThroughItsFourSteps)
{
    loadAsServer();
    configure([this](DeviceConfigForm &form) {
        form.txtParameter->setText(u"COM7, 9600"_s);
        console->setWindowTitle(u"another"_s);
        press(form.cmdOk);
    });
    EXPECT_EQ(takeCalls(),
              (QStringList{get, saved("ServerMode", u"True"_s), savedFolder(), u"new 2"_s,
                           u"release 1"_s, u"SetDeviceSettings(COM7, 9600)"_s, apply}));
    EXPECT_EQ(script.settings.PINCode, u"1234"_s);
    EXPECT_EQ(console->windowTitle(), GS(3760000));
}

TEST_F(DeviceDialog, theWindowIsLaidOutAfterTheDialogIsGoneAndBeforeTheSettingsAreApplied)
{
    loadAsServer();
    show();
    console->resize(console->size() + QSize(40, 40));
    QPointer<DeviceConfigForm> dialog;
    configure([&](DeviceConfigForm &form) {
        dialog = &form;
        EXPECT_FALSE(isWide());
        press(form.cmdOk);
        EXPECT_FALSE(isWide()) << "not by the dialog";
    });
    EXPECT_TRUE(dialog.isNull());
    EXPECT_TRUE(isWide());
    EXPECT_EQ(takeCalls().last(), apply);
}

TEST_F(DeviceDialog, theWindowGetsItsLimitsThenItsTitleAndThenTheSettingsAreApplied)
{
    loadAsServer();
    show();
    console->resize(console->size() + QSize(40, 40));
    Steps steps;
    script.inCall = [&](const QString &call) {
        if (call == apply)
            steps.add(call);
    };
    configure([&](DeviceConfigForm &form) {
        console->setWindowTitle(u"another"_s);
        press(form.cmdOk);
        console->installEventFilter(&steps);
    });
    EXPECT_EQ(steps.taken, (QStringList{u"size"_s, u"title"_s, apply}));
    EXPECT_TRUE(isWide());
    EXPECT_EQ(console->windowTitle(), GS(3760000));
    script.inCall = nullptr;
}

TEST_F(DeviceDialog, theWindowStandsInTheMiddleAgain)
{
    loadAsClient();
    show();
    const auto corner = [this] { return console->windowHandle()->frameGeometry().topLeft(); };
    const QRect screen = console->screen()->geometry();
    const auto middle = [&](QSize outer) {
        return screen.topLeft() + FormSetUp::centred(outer, screen.size());
    };
    EXPECT_EQ(corner(), middle({574, 519}));
    const auto moveAway = [&] {
        console->move(console->pos() + QPoint(31, 17));
        ASSERT_TRUE(waitUntil([&] { return corner() != middle({574, 519}); }));
    };
    moveAway();
    configure([](DeviceConfigForm &form) { press(form.cmdCancel); });
    EXPECT_NE(corner(), middle({574, 519})) << "a cancelled dialog moves nothing";
    confirm();
    EXPECT_EQ(corner(), middle({574, 519}));
    moveAway();
    configure([](DeviceConfigForm &form) {
        press(form.opServer);
        press(form.cmdOk);
    });
    EXPECT_EQ(corner(), middle({1009, 519}));
}

TEST_F(DeviceDialog, aCancelledDialogCallsNothingAndChangesNothing)
{
    loadAsServer();
    show();
    console->resize(console->size() + QSize(40, 40));
    configure([](DeviceConfigForm &form) { press(form.cmdCancel); });
    EXPECT_EQ(takeCalls(), QStringList{get});
    EXPECT_FALSE(isWide());
}

TEST_F(DeviceDialog, twoConfirmedDialogsMakeTwoEnginesInTurnAndNoStopFallsBetween)
{
    loadAsServer();
    confirm();
    confirm();
    const QStringList once{get, saved("ServerMode", u"True"_s), savedFolder()};
    const QString set = u"SetDeviceSettings(COM3, 9600)"_s;
    const QStringList second{u"new 2"_s, u"release 1"_s, set, apply};
    const QStringList third{u"new 3"_s, u"release 2"_s, set, apply};
    EXPECT_EQ(takeCalls(), once + second + once + third);
}

TEST_F(DeviceDialog, fromServerToClientStopsTheEngineAndLeavesItsQueue)
{
    script.queueSize = 3;
    loadAsServer();
    show();
    configure([](DeviceConfigForm &form) {
        press(form.opClient);
        press(form.cmdOk);
    });
    EXPECT_EQ(takeCalls(), (QStringList{get, saved("ServerMode", u"False"_s), savedFolder(),
                                        u"StopEngine"_s, u"release 1"_s}));
    EXPECT_FALSE(isWide());
    EXPECT_FALSE(control("btnTestDevice")->isEnabled());
    EXPECT_FALSE(control("grdQueue")->isEnabled());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(DeviceDialog, fromClientToServerMakesTheEngineThenHandsItTheRecord)
{
    loadAsClient();
    show();
    configure([](DeviceConfigForm &form) {
        press(form.opServer);
        form.txtPINCode->setText(u"0000"_s);
        press(form.cmdOk);
    });
    EXPECT_EQ(takeCalls(), (QStringList{saved("ServerMode", u"True"_s), savedFolder(), u"new 1"_s,
                                        u"SetDeviceSettings(COM1, 9600)"_s, apply}));
    EXPECT_EQ(script.settings, (DeviceSettings{0, u"0000"_s, 1, 1, u"COM1, 9600"_s}));
    EXPECT_TRUE(isWide());
    EXPECT_TRUE(control("btnTestDevice")->isEnabled());
}

TEST_F(DeviceDialog, aClientThatStaysOneCallsNoEngineAndKeepsItsState)
{
    loadAsClient();
    show();
    const QString status = text("lblEngineStatus");
    configure([](DeviceConfigForm &form) {
        EXPECT_EQ(form.cboConnectionMode->currentIndex(), -1);
        EXPECT_EQ(form.cboProtocol->currentIndex(), -1);
        EXPECT_EQ(form.txtParameter->text(), QString());
        press(form.cmdOk);
    });
    EXPECT_EQ(takeCalls(), (QStringList{saved("ServerMode", u"False"_s), savedFolder()}));
    EXPECT_EQ(text("lblEngineStatus"), status);
    EXPECT_EQ(engine(), nullptr);
}

TEST_F(DeviceDialog, theCloseBoxOfTheFirstDialogRunsTheStepsThatFollowWithTheOldSettings)
{
    loadAsServer();
    const auto close = [](DeviceConfigForm &form) { form.close(); };
    configure(close);
    EXPECT_EQ(takeCalls(), (QStringList{get, apply}));
    configure([](DeviceConfigForm &form) { press(form.cmdCancel); });
    takeCalls();
    configure(close);
    EXPECT_EQ(takeCalls(), QStringList{get}) << "after an earlier cancelled showing";
}

TEST_F(DeviceDialog, theCloseBoxOnAClientCallsNothing)
{
    loadAsClient();
    configure([](DeviceConfigForm &form) { form.close(); });
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(DeviceDialog, anEngineThatRefusesTheSettingsIsNotTold)
{
    script.setAnswer = false;
    loadAsServer();
    confirm();
    EXPECT_EQ(takeCalls().last(), apply);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(DeviceDialog, theQueueFolderInForceIsTheOneThatWasConfirmed)
{
    QTemporaryDir other;
    loadAsServer();
    configure([&](DeviceConfigForm &form) {
        form.txtQueueFolder->setText(other.path());
        press(form.cmdOk);
    });
    EXPECT_EQ(settings.values.value(u"Norvane/SMS/QueueFolder"_s), other.path());
    settings.reads.clear();
    configure([&](DeviceConfigForm &form) {
        EXPECT_EQ(form.txtQueueFolder->text(), other.path());
        press(form.cmdCancel);
    });
}

TEST_F(DeviceDialog, browsingBeginsWhereTheProgramWasTold)
{
    folders.answer = {true, std::nullopt};
    loadAsServer();
    configure([](DeviceConfigForm &form) {
        press(form.btnOpen);
        EXPECT_EQ(form.txtQueueFolder->text(), u"/documents/Norvane"_s);
        press(form.cmdCancel);
    });
}

struct FailingConfirmation
{
    const char *name;
    const char *call;
    bool serverAfterwards;
};

class FatalDeviceDialog : public DeviceDialog,
                          public testing::WithParamInterface<FailingConfirmation>
{};

TEST_P(FatalDeviceDialog, endsTheProgram)
{
    int exitCode = 0;
    const auto previous = FatalReport::setTerminate([&](int code) { exitCode = code; });
    loadAsServer();
    show();
    configure([this](DeviceConfigForm &form) {
        script.failingCall = QLatin1String(GetParam().call);
        press(GetParam().serverAfterwards ? form.opServer : form.opClient);
        press(form.cmdOk);
        form.hide(); // where the program would have ended
    });
    FatalReport::setTerminate(previous);
    EXPECT_EQ(exitCode, 1);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(boxes.shown.first().text.endsWith(u" - 462"_s));
    EXPECT_TRUE(script.failingCall.isEmpty()) << "the call was made";
}

INSTANTIATE_TEST_SUITE_P(Each, FatalDeviceDialog,
                         testing::Values(FailingConfirmation{"stop", "StopEngine", false},
                                         FailingConfirmation{"settings", "SetDeviceSettings", true},
                                         FailingConfirmation{"apply", "ApplySettings", true}),
                         [](const auto &each) { return std::string(each.param.name); });

} // namespace norvane
