#include "NorvaneSMS/device/DeviceConfigFixture.h"

#include "common/NumberedFailure.h"
#include "foundation/Globals.h"
#include "foundation/ui/CaptionedFrame.h"
#include "foundation/ui/FatalReport.h"
#include "foundation/ui/PictureButton.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QTest>

#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

class DeviceConfig : public DeviceConfigFixture
{
protected:
    static const DeviceSettings &sample()
    {
        static const DeviceSettings settings{0, u"1234"_s, 2, 3, u"COM5, 115200"_s};
        return settings;
    }
    static QStringList items(const QComboBox *list)
    {
        QStringList texts;
        for (int i = 0; i < list->count(); ++i)
            texts << list->itemText(i);
        return texts;
    }
    static bool deviceFieldsAre(const DeviceConfigForm &form, bool enabled)
    {
        return form.cboConnectionMode->isEnabled() == enabled &&
               form.cboProtocol->isEnabled() == enabled &&
               form.txtParameter->isEnabled() == enabled && form.txtPINCode->isEnabled() == enabled;
    }
    /// What the device fields show.
    static DeviceSettings shown(const DeviceConfigForm &form)
    {
        return {form.cboDeviceType->currentIndex(), form.txtPINCode->text(),
                form.cboConnectionMode->currentIndex(), form.cboProtocol->currentIndex(),
                form.txtParameter->text()};
    }
    static DeviceSettings proposal() { return {0, {}, 0, 0, u"COM1, 9600"_s}; }
    void cancel(DeviceConfigForm &form) const { press(form.cmdCancel); }
};

TEST_F(DeviceConfig, captionsComeFromTheLanguageAndFourStayAsTheyWereDrawn)
{
    show([&](DeviceConfigForm &form) {
        EXPECT_EQ(form.windowTitle(), GS(3760035));
        EXPECT_EQ(form.lblDeviceType->text(), GS(3760036));
        EXPECT_EQ(form.lblMode->text(), GS(3760037));
        EXPECT_EQ(form.lblProtocol->text(), GS(3760038));
        EXPECT_EQ(form.lblParameter->text(), GS(3760039));
        EXPECT_EQ(form.lblPINCode->text(), GS(3760040));
        EXPECT_EQ(form.cmdOk->text(), GS(14));
        EXPECT_EQ(form.cmdCancel->text(), GS(16));
        EXPECT_EQ(form.Label1->text(), u"Pasta envio:"_s);
        EXPECT_EQ(form.opClient->text(), u"Cliente"_s);
        EXPECT_EQ(form.opServer->text(), u"Servidor"_s);
        EXPECT_EQ(form.fraOperationMode->caption(), u"Modo de funcionamento"_s);
        cancel(form);
    });
}

TEST_F(DeviceConfig, theFixedTextsAreTheSameInEveryLanguage)
{
    for (const char *const code : {"ESN", "CAT", "PTG"}) {
        goLocalize = std::make_unique<cls_Localize>();
        ASSERT_TRUE(goLocalize->Init(
            QStringLiteral(NORVANE_SOURCE_DIR "/resources/language/NorvaneSMS_%1.XML")
                .arg(QLatin1String(code)),
            QLatin1String(code)));
        show([&](DeviceConfigForm &form) {
            EXPECT_EQ(form.windowTitle(), GS(3760035)) << code;
            EXPECT_EQ(form.cmdOk->text(), GS(14)) << code;
            EXPECT_EQ(form.Label1->text(), u"Pasta envio:"_s) << code;
            EXPECT_EQ(form.opClient->text(), u"Cliente"_s) << code;
            EXPECT_EQ(form.opServer->text(), u"Servidor"_s) << code;
            EXPECT_EQ(form.fraOperationMode->caption(), u"Modo de funcionamento"_s) << code;
            EXPECT_EQ(items(form.cboDeviceType), QStringList{GS(3760041)}) << code;
            EXPECT_EQ(items(form.cboConnectionMode).at(0), u"Physical/Virtual Serial port"_s)
                << code;
            EXPECT_EQ(items(form.cboProtocol).at(0), u"AT Command"_s) << code;
            press(form.btnOpen);
            cancel(form);
        });
        EXPECT_EQ(folders.asked.last().title, u"Localização da pasta de envio de SMS"_s) << code;
    }
}

TEST_F(DeviceConfig, theListsHoldTheirFixedTexts)
{
    show([&](DeviceConfigForm &form) {
        EXPECT_EQ(items(form.cboDeviceType), QStringList{GS(3760041)});
        EXPECT_EQ(items(form.cboConnectionMode),
                  (QStringList{u"Physical/Virtual Serial port"_s, u"Infrared"_s, u"Bluetooth"_s}));
        EXPECT_EQ(items(form.cboProtocol),
                  (QStringList{u"AT Command"_s, u"Nokia FBus"_s, u"Nokia MBus"_s}));
        for (const QComboBox *const list :
             {form.cboDeviceType, form.cboConnectionMode, form.cboProtocol})
            EXPECT_FALSE(list->isEditable());
        cancel(form);
    });
}

TEST_F(DeviceConfig, aFirstRunOpensAsServerWithTheProgramsFolderAndTheEnginesRecord)
{
    settings.values.clear();
    keeper.stored = sample();
    show([&](DeviceConfigForm &form) {
        EXPECT_TRUE(form.opServer->isChecked());
        EXPECT_FALSE(form.opClient->isChecked());
        EXPECT_EQ(form.txtQueueFolder->text(), u"/program"_s);
        EXPECT_EQ(shown(form), (DeviceSettings{0, u"1234"_s, 1, 2, sample().Parameter}));
        cancel(form);
    });
}

TEST_F(DeviceConfig, storedValuesWinOverTheProposals)
{
    store("ServerMode", u"True"_s);
    keeper.stored = {0, u" 12 "_s, 3, 1, QString()};
    show([&](DeviceConfigForm &form) {
        EXPECT_EQ(shown(form), (DeviceSettings{0, u" 12 "_s, 2, 0, QString()}));
        EXPECT_TRUE(deviceFieldsAre(form, true));
        cancel(form);
    });
}

TEST_F(DeviceConfig, settingsAreReadInOrder)
{
    show([&](DeviceConfigForm &form) { cancel(form); });
    EXPECT_EQ(settings.reads, (QStringList{u"ServerMode"_s, u"QueueFolder"_s}));
    EXPECT_EQ(keeper.calls, QStringList{u"GetDeviceSettings"_s});
}

TEST_F(DeviceConfig, aRecordWithoutConnectionModeShowsNothingAndComesBackUnchanged)
{
    keeper.stored = {0, {}, 0, 0, u"x"_s};
    EXPECT_TRUE(show([&](DeviceConfigForm &form) {
        EXPECT_EQ(form.cboConnectionMode->currentIndex(), -1);
        EXPECT_EQ(form.cboConnectionMode->currentText(), QString());
        EXPECT_EQ(form.cboProtocol->currentIndex(), -1);
        press(form.cmdOk);
    }));
    EXPECT_EQ(keeper.given, QList{keeper.stored});
}

TEST_F(DeviceConfig, aRecordOutsideTheListsShowsNothing)
{
    keeper.stored = {0, {}, 9, -4, QString()};
    show([&](DeviceConfigForm &form) {
        EXPECT_EQ(form.cboConnectionMode->currentIndex(), -1);
        EXPECT_EQ(form.cboProtocol->currentIndex(), -1);
        cancel(form);
    });
}

TEST_F(DeviceConfig, anyDeviceTypeIsShownAsTheFirstAndComesBackAsZero)
{
    keeper.stored = sample();
    keeper.stored.DeviceType = 5;
    show([&](DeviceConfigForm &form) {
        EXPECT_EQ(form.cboDeviceType->currentIndex(), 0);
        EXPECT_FALSE(form.cboDeviceType->isEnabled());
        press(form.cmdOk);
    });
    EXPECT_EQ(keeper.given, QList{sample()});
}

TEST_F(DeviceConfig, aClientOpensWithTheDeviceFieldsOffAndEmpty)
{
    store("ServerMode", u"False"_s);
    show([&](DeviceConfigForm &form) {
        EXPECT_TRUE(form.opClient->isChecked());
        EXPECT_FALSE(form.opServer->isChecked());
        EXPECT_TRUE(deviceFieldsAre(form, false));
        EXPECT_EQ(shown(form), (DeviceSettings{0, {}, -1, -1, {}}));
        cancel(form);
    });
}

TEST_F(DeviceConfig, whatIsNoDeviceFieldIsEnabledInBothModes)
{
    show([&](DeviceConfigForm &form) {
        for (QRadioButton *const mode : {form.opClient, form.opServer}) {
            press(mode);
            for (const QWidget *const control :
                 std::initializer_list<QWidget *>{form.txtQueueFolder, form.btnOpen, form.opClient,
                                                  form.opServer, form.cmdOk, form.cmdCancel})
                EXPECT_TRUE(control->isEnabled()) << control->objectName().toStdString();
            EXPECT_FALSE(form.cboDeviceType->isEnabled());
        }
        cancel(form);
    });
}

TEST_F(DeviceConfig, fromClientToServerEnablesTheFieldsAndProposes)
{
    store("ServerMode", u"False"_s);
    show([&](DeviceConfigForm &form) {
        press(form.opServer);
        EXPECT_TRUE(deviceFieldsAre(form, true));
        EXPECT_EQ(shown(form), proposal());
        EXPECT_TRUE(form.opServer->isChecked());
        EXPECT_FALSE(form.opClient->isChecked());
        cancel(form);
    });
}

TEST_F(DeviceConfig, toClientChangesWhatIsEnabledAndNothingElse)
{
    keeper.stored = sample();
    show([&](DeviceConfigForm &form) {
        const DeviceSettings before = shown(form);
        press(form.opClient);
        EXPECT_TRUE(deviceFieldsAre(form, false));
        EXPECT_EQ(shown(form), before);
        EXPECT_FALSE(form.opServer->isChecked());
        cancel(form);
    });
}

TEST_F(DeviceConfig, toClientAndBackDiscardsWhatWasLoaded)
{
    keeper.stored = sample();
    show([&](DeviceConfigForm &form) {
        press(form.opClient);
        press(form.opServer);
        EXPECT_EQ(shown(form), proposal());
        press(form.cmdOk);
    });
    EXPECT_EQ(keeper.given, (QList{DeviceSettings{0, {}, 1, 1, u"COM1, 9600"_s}}));
}

TEST_F(DeviceConfig, aClickOnTheServerButtonThatIsOnResetsTheFieldsToo)
{
    keeper.stored = sample();
    show([&](DeviceConfigForm &form) {
        press(form.opServer);
        EXPECT_EQ(shown(form), proposal());
        cancel(form);
    });
}

TEST_F(DeviceConfig, theArrowKeysOfTheModeButtonsRunTheirHandlers)
{
    show([&](DeviceConfigForm &form) {
        form.opServer->setFocus();
        QTest::keyClick(form.opServer, Qt::Key_Right);
        EXPECT_TRUE(form.opClient->isChecked());
        EXPECT_TRUE(deviceFieldsAre(form, false));
        QTest::keyClick(form.opClient, Qt::Key_Left);
        EXPECT_TRUE(form.opServer->isChecked());
        EXPECT_TRUE(deviceFieldsAre(form, true));
        cancel(form);
    });
}

TEST_F(DeviceConfig, theListsAndTheParameterLeaveEachOtherAlone)
{
    keeper.stored = sample();
    show([&](DeviceConfigForm &form) {
        choose(form.cboConnectionMode, 2);
        EXPECT_EQ(shown(form), (DeviceSettings{0, sample().PINCode, 2, 2, sample().Parameter}));
        EXPECT_EQ(form.cboProtocol->count(), 3);
        press(form.cmdOk);
    });
    EXPECT_EQ(keeper.given.first().ConnectionMode, 3);
}

TEST_F(DeviceConfig, confirmingSavesModeThenFolderAndThenHandsTheRecordOver)
{
    keeper.stored = sample();
    EXPECT_TRUE(show([&](DeviceConfigForm &form) {
        keeper.calls.clear();
        form.txtPINCode->setText(u"9999"_s);
        press(form.cmdOk);
    }));
    EXPECT_EQ(keeper.calls,
              (QStringList{u"ServerMode"_s, u"QueueFolder"_s, u"SetDeviceSettings"_s}));
    EXPECT_EQ(stored("ServerMode"), u"True"_s);
    EXPECT_EQ(stored("QueueFolder"), folder());
    DeviceSettings expected = sample();
    expected.PINCode = u"9999"_s;
    EXPECT_EQ(keeper.given, QList{expected});
}

TEST_F(DeviceConfig, aClientsRecordIsBuiltAllTheSame)
{
    store("ServerMode", u"False"_s);
    keeper.answer = false;
    EXPECT_TRUE(show([&](DeviceConfigForm &form) { press(form.cmdOk); }));
    EXPECT_EQ(keeper.given, QList{DeviceSettings()});
    EXPECT_EQ(stored("ServerMode"), u"False"_s);
}

TEST_F(DeviceConfig, anEngineThatRefusesTheSettingsIsNotTold)
{
    keeper.answer = false;
    EXPECT_TRUE(show([&](DeviceConfigForm &form) { press(form.cmdOk); }));
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(DeviceConfig, aFolderThatIsNotThereIsRefused)
{
    QFile file(folder() + u"/file"_s);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    for (const QString &path :
         {QString(), folder() + u"/missing"_s, folder() + u' ', u" "_s, file.fileName(), u":/"_s}) {
        boxes.shown.clear();
        show([&](DeviceConfigForm &form) {
            keeper.calls.clear();
            form.txtQueueFolder->setText(path);
            press(form.cmdOk);
            EXPECT_TRUE(form.isVisible());
            EXPECT_TRUE(form.txtQueueFolder->hasFocus());
            EXPECT_EQ(form.txtQueueFolder->text(), path);
            cancel(form);
        });
        EXPECT_EQ(
            boxes.shown,
            (QList{RecordingMessageBoxes::Shown{GS(3760050), MessageBoxes::Icon::Exclamation,
                                                MessageBoxes::Buttons::Ok, u"Norvane SMS"_s}}))
            << path.toStdString();
        EXPECT_TRUE(keeper.calls.isEmpty()) << "nothing was saved";
        EXPECT_EQ(settings.saves, 0);
    }
}

TEST_F(DeviceConfig, aFolderWhoseNameEndsInBlanksIsTakenAsItStands)
{
    const QString odd = folder() + u"/odd  "_s;
    ASSERT_TRUE(QDir().mkdir(odd));
    EXPECT_TRUE(show([&](DeviceConfigForm &form) {
        form.txtQueueFolder->setText(odd);
        press(form.cmdOk);
    }));
    EXPECT_EQ(stored("QueueFolder"), odd);
}

TEST_F(DeviceConfig, aClientsFolderIsValidatedToo)
{
    store("ServerMode", u"False"_s);
    show([&](DeviceConfigForm &form) {
        form.txtQueueFolder->clear();
        press(form.cmdOk);
        cancel(form);
    });
    EXPECT_EQ(boxes.shown.size(), 1);
}

TEST_F(DeviceConfig, cancellingSavesNothing)
{
    EXPECT_FALSE(show([&](DeviceConfigForm &form) {
        form.txtParameter->setText(u"x"_s);
        press(form.opClient);
        cancel(form);
    }));
    EXPECT_EQ(settings.saves, 0);
    EXPECT_TRUE(keeper.given.isEmpty());
}

TEST_F(DeviceConfig, escapeIsCancel)
{
    EXPECT_FALSE(
        show([&](DeviceConfigForm &form) { QTest::keyClick(form.txtParameter, Qt::Key_Escape); }));
    EXPECT_EQ(settings.saves, 0);
}

TEST_F(DeviceConfig, enterConfirms)
{
    EXPECT_TRUE(
        show([&](DeviceConfigForm &form) { QTest::keyClick(form.txtParameter, Qt::Key_Return); }));
    EXPECT_EQ(keeper.given.size(), 1);
}

TEST_F(DeviceConfig, enterOnAButtonPressesThatButton)
{
    EXPECT_FALSE(show([&](DeviceConfigForm &form) {
        form.cmdCancel->setFocus();
        QTest::keyClick(form.cmdCancel, Qt::Key_Return);
    }));
    EXPECT_TRUE(keeper.given.isEmpty());
    show([&](DeviceConfigForm &form) {
        form.btnOpen->setFocus();
        QTest::keyClick(form.btnOpen, Qt::Key_Return);
        EXPECT_EQ(folders.asked.size(), 1);
        cancel(form);
    });
    EXPECT_TRUE(keeper.given.isEmpty());
}

TEST_F(DeviceConfig, aRecordOfTheLeastNumbersShowsNoSelection)
{
    keeper.stored.ConnectionMode = std::numeric_limits<qint32>::min();
    keeper.stored.Protocol = std::numeric_limits<qint32>::min();
    show([&](DeviceConfigForm &form) {
        EXPECT_EQ(form.cboConnectionMode->currentIndex(), -1);
        EXPECT_EQ(form.cboProtocol->currentIndex(), -1);
        cancel(form);
    });
}

TEST_F(DeviceConfig, eachOpeningBeginsAfresh)
{
    keeper.stored = sample();
    show([&](DeviceConfigForm &form) {
        form.txtParameter->setText(u"typed"_s);
        press(form.opClient);
        cancel(form);
    });
    show([&](DeviceConfigForm &form) {
        EXPECT_EQ(form.txtParameter->text(), sample().Parameter);
        EXPECT_TRUE(form.opServer->isChecked());
        cancel(form);
    });
}

TEST_F(DeviceConfig, theCloseBoxOfTheFirstShowingCountsAsConfirmed)
{
    EXPECT_TRUE(show([](DeviceConfigForm &form) { form.close(); }));
    EXPECT_EQ(settings.saves, 0);
    EXPECT_TRUE(keeper.given.isEmpty());
}

TEST_F(DeviceConfig, theCloseBoxGivesWhatTheLastPressedButtonGave)
{
    const auto close = [](DeviceConfigForm &form) { form.close(); };
    show([&](DeviceConfigForm &form) { cancel(form); });
    EXPECT_FALSE(show(close));
    EXPECT_FALSE(show(close));
    show([&](DeviceConfigForm &form) { press(form.cmdOk); });
    EXPECT_TRUE(show(close));
    show([&](DeviceConfigForm &form) { QTest::keyClick(&form, Qt::Key_Escape); });
    EXPECT_FALSE(show(close));
}

TEST_F(DeviceConfig, aRefusedFolderLeavesTheCancelFlagAlone)
{
    show([&](DeviceConfigForm &form) { cancel(form); });
    EXPECT_FALSE(show([&](DeviceConfigForm &form) {
        form.txtQueueFolder->clear();
        press(form.cmdOk);
        form.close();
    }));
}

TEST_F(DeviceConfig, theWindowExistsOnlyWhileItIsShown)
{
    QPointer<DeviceConfigForm> window;
    show([&](DeviceConfigForm &form) {
        window = &form;
        cancel(form);
    });
    EXPECT_TRUE(window.isNull());
}

TEST_F(DeviceConfig, browsingStartsInTheDocumentsAndShowsTheFixedTitle)
{
    show([&](DeviceConfigForm &form) {
        form.txtQueueFolder->setText(folder());
        press(form.btnOpen);
        cancel(form);
    });
    ASSERT_EQ(folders.asked.size(), 1);
    EXPECT_EQ(folders.asked.first(),
              (ScriptedFolderBrowser::Asked{u"Localização da pasta de envio de SMS"_s, QString(),
                                            FolderBrowser::Style::Plain}))
        << "the folder of the documents isn't there, so nothing is selected";
}

TEST_F(DeviceConfig, aChosenFolderIsTaken)
{
    folders.answer = {true, u"/chosen"_s};
    show([&](DeviceConfigForm &form) {
        press(form.btnOpen);
        EXPECT_EQ(form.txtQueueFolder->text(), u"/chosen"_s);
        cancel(form);
    });
}

TEST_F(DeviceConfig, aConfirmedBlankPathLeavesTheFieldAsItWas)
{
    for (const QString &blank : {QString(""_L1), u"   "_s}) {
        folders.answer = {true, blank};
        show([&](DeviceConfigForm &form) {
            press(form.btnOpen);
            EXPECT_EQ(form.txtQueueFolder->text(), folder());
            cancel(form);
        });
    }
}

TEST_F(DeviceConfig, anItemWithoutAPathGivesTheFolderThatBrowsingStartedIn)
{
    folders.answer = {true, std::nullopt};
    show([&](DeviceConfigForm &form) {
        press(form.btnOpen);
        EXPECT_EQ(form.txtQueueFolder->text(), u"/documents/Norvane"_s);
        cancel(form);
    });
}

TEST_F(DeviceConfig, cancellingThePickerEmptiesTheFieldAndTheFolderIsThenRefused)
{
    show([&](DeviceConfigForm &form) {
        EXPECT_EQ(form.txtQueueFolder->text(), folder());
        press(form.btnOpen);
        EXPECT_EQ(form.txtQueueFolder->text(), QString());
        press(form.cmdOk);
        EXPECT_TRUE(form.isVisible());
        cancel(form);
    });
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().text, GS(3760050));
}

TEST_F(DeviceConfig, aPickerThatFailsEmptiesTheFieldToo)
{
    folders.failing = [] { throw std::runtime_error("no dialog"); };
    show([&](DeviceConfigForm &form) {
        press(form.btnOpen);
        EXPECT_EQ(form.txtQueueFolder->text(), QString());
        cancel(form);
    });
    EXPECT_EQ(boxes.shown.size(), 1);
}

TEST_F(DeviceConfig, settingsThatCantBeWrittenAreFatal)
{
    int exitCode = 0;
    const auto previous = FatalReport::setTerminate([&](int code) { exitCode = code; });
    settings.onSave = [](const QString &, const QString &) {
        throw NumberedFailure(70, u"save"_s, u"Permission denied"_s);
    };
    show([&](DeviceConfigForm &form) {
        press(form.cmdOk);
        form.hide();
    });
    EXPECT_EQ(exitCode, 1);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().text, u"Permission denied - 70"_s);
    FatalReport::setTerminate(previous);
}

} // namespace norvane
