#include "system/WholePath.h"

#include "NorvaneSMS/device/DeviceConfigForm.h"
#include "foundation/ui/CaptionedFrame.h"
#include "foundation/ui/PictureButton.h"

#include <QApplication>
#include <QComboBox>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTimer>

namespace norvane {

using namespace Qt::StringLiterals;

/// Device dialog and device test over the real engine and a simulated device.
class DeviceOnEngine : public WholePath
{
protected:
    void configure(const std::function<void(DeviceConfigForm &)> &act)
    {
        QTimer::singleShot(0, [&] {
            auto *const form = qobject_cast<DeviceConfigForm *>(QApplication::activeModalWidget());
            ASSERT_NE(form, nullptr);
            act(*form);
            EXPECT_FALSE(form->isVisible()) << "the test left the dialog open";
            form->hide();
        });
        QTest::mouseClick(control<QPushButton>("btnDeviceConfig"), Qt::LeftButton);
    }
    static void press(QWidget *button) { QTest::mouseClick(button, Qt::LeftButton); }
    void confirmWith(const QString &parameter)
    {
        configure([&](DeviceConfigForm &form) {
            form.txtQueueFolder->setText(m_queueFolder.path());
            form.txtParameter->setText(parameter);
            press(form.cmdOk);
        });
    }
    void testDevice() { press(control<QPushButton>("btnTestDevice")); }
    QString terminal() const { return control<TerminalView>("txtTerm")->text(); }
    bool isShownAs(qint32 text)
    {
        return eventually([&] { return label("lblEngineStatus") == GS(text); });
    }
    static QDateTime due() { return {QDate(2020, 1, 1), QTime(0, 0), Qt::UTC}; }
    static QDateTime later() { return {QDate(2100, 1, 1), QTime(0, 0), Qt::UTC}; }

private:
    QTemporaryDir m_queueFolder;
};

TEST_F(DeviceOnEngine, whatIsConfirmedIsWhatTheEngineKeepsAndShowsAgain)
{
    configure([&](DeviceConfigForm &form) {
        EXPECT_EQ(form.txtParameter->text(), device->link() + u", 115200"_s);
        form.txtQueueFolder->setText(QDir::tempPath());
        form.txtPINCode->setText(u"1234"_s);
        form.txtParameter->setText(u"/dev/nothing, 9600"_s);
        form.cboProtocol->setCurrentIndex(-1);
        press(form.cmdOk);
    });
    const DeviceSettings expected{0, u"1234"_s, 1, 0, u"/dev/nothing, 9600"_s};
    EXPECT_EQ(makeProxy()->GetDeviceSettings(), expected);
    configure([&](DeviceConfigForm &form) {
        EXPECT_EQ(form.txtPINCode->text(), expected.PINCode);
        EXPECT_EQ(form.txtParameter->text(), expected.Parameter);
        EXPECT_EQ(form.cboProtocol->currentIndex(), -1);
        press(form.cmdCancel);
    });
}

TEST_F(DeviceOnEngine, newSettingsAreInForceAtOnce)
{
    storeDevice(u"/nowhere/gsm, 9600"_s);
    send(u"912345678"_s, u"Hola"_s);
    ASSERT_TRUE(eventually([&] { return terminal().contains(GS(3760032)); }));
    EXPECT_TRUE(device->messages().isEmpty());
    confirmWith(device->link() + u", 115200"_s);
    waitForReceived(1);
    EXPECT_EQ(received(0), u"Hola"_s);
}

TEST_F(DeviceOnEngine, aChangeToClientStopsTheEngineAndLeavesItsQueueForTheNextServer)
{
    makeProxy()->StartEngine();
    makeProxy()->AddSMS(u"1"_s, u"x"_s, later());
    ASSERT_TRUE(isShownAs(3760014));
    const auto change = [&](QRadioButton *DeviceConfigForm::*mode) {
        configure([&](DeviceConfigForm &form) {
            form.txtQueueFolder->setText(QDir::tempPath());
            press(form.*mode);
            press(form.cmdOk);
        });
    };
    change(&DeviceConfigForm::opClient);
    EXPECT_EQ(console->frameSize().width(), 574);
    EXPECT_FALSE(control<QPushButton>("btnTestDevice")->isEnabled());
    EXPECT_EQ(makeProxy()->GetEngineStatus(), 0);
    EXPECT_EQ(makeProxy()->GetQueueSize(), 1);

    change(&DeviceConfigForm::opServer);
    EXPECT_EQ(console->frameSize().width(), 1009);
    EXPECT_TRUE(control<QPushButton>("btnTestDevice")->isEnabled());
    EXPECT_TRUE(isShownAs(3760026));
    EXPECT_TRUE(
        eventually([&] { return control<QTableView>("grdQueue")->model()->rowCount() == 1; }));
    EXPECT_EQ(makeProxy()->GetDeviceSettings(), (DeviceSettings{0, {}, 1, 1, u"COM1, 9600"_s}));
}

TEST_F(DeviceOnEngine, aDeviceThatAnswersShowsItsDetailsAndTheSuccessTextBehindThem)
{
    testDevice();
    EXPECT_TRUE(terminal().startsWith(u"Manufacturer: "_s)) << "with no event loop";
    EXPECT_TRUE(terminal().endsWith(GS(3760018)));
    EXPECT_EQ(terminal().count(u"\r\n"_s), 10 + GS(3760018).count(u'\n'));
    EXPECT_EQ(label("lblDeviceStatus"), GS(3760019));
    EXPECT_EQ(control<CaptionedFrame>("fraCommunication")->caption(), GS(3760090));
    EXPECT_TRUE(isShownAs(3760026)) << "an engine that was stopped stays stopped";
    EXPECT_EQ(makeProxy()->GetEngineStatus(), 0);
}

TEST_F(DeviceOnEngine, aRunningEngineRunsAgainAfterTheTest)
{
    const std::unique_ptr<SMSManagerProxy> other = makeProxy();
    other->StartEngine();
    ASSERT_TRUE(isShownAs(3760014));
    ASSERT_TRUE(eventually([&] { return !label("lblDeviceStatus").isEmpty(); }));
    QList<int> statuses;
    QObject::connect(other.get(), &SMSManager::EngineStatus, other.get(),
                     [&](qint32 status) { statuses.append(status); });
    testDevice();
    EXPECT_EQ(label("lblEngineStatus"), GS(3760014)) << "told within the test";
    EXPECT_EQ(other->GetEngineStatus(), 1);
    EXPECT_TRUE(eventually([&] { return statuses == QList<int>({0, 1}); }));
    // The console's own send would start an engine that had stayed stopped.
    other->AddSMS(u"912345678"_s, u"Hola"_s, due());
    waitForReceived(1);
}

TEST_F(DeviceOnEngine, theResultOfATestStaysReadableWhenTheEngineRunsAgain)
{
    const std::unique_ptr<SMSManagerProxy> other = makeProxy();
    int infos = 0;
    QObject::connect(other.get(), &SMSManager::DeviceInfo, other.get(), [&] { ++infos; });
    other->StartEngine();
    ASSERT_TRUE(eventually([&] { return infos == 1 && !label("lblDeviceStatus").isEmpty(); }));
    infos = 0;
    testDevice();
    other->AddSMS(u"912345678"_s, u"Hola"_s, due());
    // The line of the message that the engine has sent since stands behind the test's result.
    const QString sent = GS(3760023, u"912345678"_s);
    ASSERT_TRUE(eventually([&] { return terminal().contains(sent); }));
    EXPECT_TRUE(terminal().contains(GS(3760018) + sent)) << terminal().toStdString();
    EXPECT_EQ(label("lblDeviceStatus"), GS(3760019));
    EXPECT_EQ(infos, 1) << "the test's own";
}

TEST_F(DeviceOnEngine, aDeviceThatIsNotThereFailsTheTestAndARunningEngineRunsAgain)
{
    storeDevice(u"/nowhere/gsm, 9600"_s);
    for (const bool running : {false, true}) {
        if (running)
            makeProxy()->StartEngine();
        ASSERT_TRUE(isShownAs(running ? 3760014 : 3760026));
        testDevice();
        EXPECT_EQ(label("lblDeviceStatus"), GS(3760088));
        EXPECT_FALSE(terminal().contains(GS(3760018).trimmed()));
        EXPECT_TRUE(terminal().contains(GS(3760032))) << "the reason, with no event loop";
        EXPECT_EQ(makeProxy()->GetEngineStatus(), running ? 1 : 0);
    }
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(DeviceOnEngine, aPinThatATestSpendsIsToldWithinIt)
{
    plugIn({u"--pin"_s, u"4711"_s});
    makeProxy()->SetDeviceSettings({0, u"1234"_s, 1, 1, device->link() + u", 115200"_s});
    makeProxy()->ApplySettings();
    testDevice();
    EXPECT_EQ(label("lblDeviceStatus"), GS(3760088));
    EXPECT_TRUE(terminal().contains(u"ERR_INCORRECT_PASSWORD"_s)) << terminal().toStdString();
}

TEST_F(DeviceOnEngine, eachTestStartsFromAnEmptyTerminal)
{
    testDevice();
    const QString first = terminal();
    testDevice();
    EXPECT_EQ(terminal().count(u"Manufacturer: "_s), 1);
    EXPECT_EQ(terminal().size(), first.size());
}

} // namespace norvane
