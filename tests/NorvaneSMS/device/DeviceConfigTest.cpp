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

class DeviceConfig : public DeviceConfigFixture
{
protected:
    static const DeviceSettings &sample()
    {
        static const DeviceSettings settings{0, QStringLiteral("1234"), 2, 3,
                                             QStringLiteral("COM5, 115200")};
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
    static DeviceSettings proposal() { return {0, {}, 0, 0, QStringLiteral("COM1, 9600")}; }
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
        EXPECT_EQ(form.Label1->text(), QStringLiteral("Pasta envio:"));
        EXPECT_EQ(form.opClient->text(), QStringLiteral("Cliente"));
        EXPECT_EQ(form.opServer->text(), QStringLiteral("Servidor"));
        EXPECT_EQ(form.fraOperationMode->caption(), QStringLiteral("Modo de funcionamento"));
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
            EXPECT_EQ(form.Label1->text(), QStringLiteral("Pasta envio:")) << code;
            EXPECT_EQ(form.opClient->text(), QStringLiteral("Cliente")) << code;
            EXPECT_EQ(form.opServer->text(), QStringLiteral("Servidor")) << code;
            EXPECT_EQ(form.fraOperationMode->caption(), QStringLiteral("Modo de funcionamento"))
                << code;
            EXPECT_EQ(items(form.cboDeviceType), QStringList{GS(3760041)}) << code;
            EXPECT_EQ(items(form.cboConnectionMode).at(0),
                      QStringLiteral("Physical/Virtual Serial port"))
                << code;
            EXPECT_EQ(items(form.cboProtocol).at(0), QStringLiteral("AT Command")) << code;
            press(form.btnOpen);
            cancel(form);
        });
        EXPECT_EQ(folders.asked.last().title,
                  QStringLiteral("Localização da pasta de envio de SMS"))
            << code;
    }
}

TEST_F(DeviceConfig, theListsHoldTheirFixedTexts)
{
    show([&](DeviceConfigForm &form) {
        EXPECT_EQ(items(form.cboDeviceType), QStringList{GS(3760041)});
        EXPECT_EQ(items(form.cboConnectionMode),
                  (QStringList{QStringLiteral("Physical/Virtual Serial port"),
                               QStringLiteral("Infrared"), QStringLiteral("Bluetooth")}));
        EXPECT_EQ(items(form.cboProtocol),
                  (QStringList{QStringLiteral("AT Command"), QStringLiteral("Nokia FBus"),
                               QStringLiteral("Nokia MBus")}));
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
        EXPECT_EQ(form.txtQueueFolder->text(), QStringLiteral("/program"));
        EXPECT_EQ(shown(form),
                  (DeviceSettings{0, QStringLiteral("1234"), 1, 2, sample().Parameter}));
        cancel(form);
    });
}

TEST_F(DeviceConfig, storedValuesWinOverTheProposals)
{
    store("ServerMode", QStringLiteral("True"));
    keeper.stored = {0, QStringLiteral(" 12 "), 3, 1, QString()};
    show([&](DeviceConfigForm &form) {
        EXPECT_EQ(shown(form), (DeviceSettings{0, QStringLiteral(" 12 "), 2, 0, QString()}));
        EXPECT_TRUE(deviceFieldsAre(form, true));
        cancel(form);
    });
}

TEST_F(DeviceConfig, settingsAreReadInOrder)
{
    show([&](DeviceConfigForm &form) { cancel(form); });
    EXPECT_EQ(settings.reads,
              (QStringList{QStringLiteral("ServerMode"), QStringLiteral("QueueFolder")}));
    EXPECT_EQ(keeper.calls, QStringList{QStringLiteral("GetDeviceSettings")});
}

TEST_F(DeviceConfig, aRecordWithoutConnectionModeShowsNothingAndComesBackUnchanged)
{
    keeper.stored = {0, {}, 0, 0, QStringLiteral("x")};
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
    store("ServerMode", QStringLiteral("False"));
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
    store("ServerMode", QStringLiteral("False"));
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
    EXPECT_EQ(keeper.given, (QList{DeviceSettings{0, {}, 1, 1, QStringLiteral("COM1, 9600")}}));
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
        form.txtPINCode->setText(QStringLiteral("9999"));
        press(form.cmdOk);
    }));
    EXPECT_EQ(keeper.calls,
              (QStringList{QStringLiteral("ServerMode"), QStringLiteral("QueueFolder"),
                           QStringLiteral("SetDeviceSettings")}));
    EXPECT_EQ(stored("ServerMode"), QStringLiteral("True"));
    EXPECT_EQ(stored("QueueFolder"), folder());
    DeviceSettings expected = sample();
    expected.PINCode = QStringLiteral("9999");
    EXPECT_EQ(keeper.given, QList{expected});
}

TEST_F(DeviceConfig, aClientsRecordIsBuiltAllTheSame)
{
    store("ServerMode", QStringLiteral("False"));
    keeper.answer = false;
    EXPECT_TRUE(show([&](DeviceConfigForm &form) { press(form.cmdOk); }));
    EXPECT_EQ(keeper.given, QList{DeviceSettings()});
    EXPECT_EQ(stored("ServerMode"), QStringLiteral("False"));
}

TEST_F(DeviceConfig, anEngineThatRefusesTheSettingsIsNotTold)
{
    keeper.answer = false;
    EXPECT_TRUE(show([&](DeviceConfigForm &form) { press(form.cmdOk); }));
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(DeviceConfig, aFolderThatIsNotThereIsRefused)
{
    QFile file(folder() + QStringLiteral("/file"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    for (const QString &path : {QString(), folder() + QStringLiteral("/missing"), folder() + u' ',
                                QStringLiteral(" "), file.fileName(), QStringLiteral(":/")}) {
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
        EXPECT_EQ(boxes.shown, (QList{RecordingMessageBoxes::Shown{
                                   GS(3760050), MessageBoxes::Icon::Exclamation,
                                   MessageBoxes::Buttons::Ok, QStringLiteral("Norvane SMS")}}))
            << path.toStdString();
        EXPECT_TRUE(keeper.calls.isEmpty()) << "nothing was saved";
        EXPECT_EQ(settings.saves, 0);
    }
}

TEST_F(DeviceConfig, aFolderWhoseNameEndsInBlanksIsTakenAsItStands)
{
    const QString odd = folder() + QStringLiteral("/odd  ");
    ASSERT_TRUE(QDir().mkdir(odd));
    EXPECT_TRUE(show([&](DeviceConfigForm &form) {
        form.txtQueueFolder->setText(odd);
        press(form.cmdOk);
    }));
    EXPECT_EQ(stored("QueueFolder"), odd);
}

TEST_F(DeviceConfig, aClientsFolderIsValidatedToo)
{
    store("ServerMode", QStringLiteral("False"));
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
        form.txtParameter->setText(QStringLiteral("x"));
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
        form.txtParameter->setText(QStringLiteral("typed"));
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
              (ScriptedFolderBrowser::Asked{QStringLiteral("Localização da pasta de envio de SMS"),
                                            QString(), FolderBrowser::Style::Plain}))
        << "the folder of the documents isn't there, so nothing is selected";
}

TEST_F(DeviceConfig, aChosenFolderIsTaken)
{
    folders.answer = {true, QStringLiteral("/chosen")};
    show([&](DeviceConfigForm &form) {
        press(form.btnOpen);
        EXPECT_EQ(form.txtQueueFolder->text(), QStringLiteral("/chosen"));
        cancel(form);
    });
}

TEST_F(DeviceConfig, aConfirmedBlankPathLeavesTheFieldAsItWas)
{
    for (const QString &blank : {QString(QLatin1String("")), QStringLiteral("   ")}) {
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
        EXPECT_EQ(form.txtQueueFolder->text(), QStringLiteral("/documents/Norvane"));
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
        throw NumberedFailure(70, QStringLiteral("save"), QStringLiteral("Permission denied"));
    };
    show([&](DeviceConfigForm &form) {
        press(form.cmdOk);
        form.hide();
    });
    EXPECT_EQ(exitCode, 1);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().text, QStringLiteral("Permission denied - 70"));
    FatalReport::setTerminate(previous);
}
