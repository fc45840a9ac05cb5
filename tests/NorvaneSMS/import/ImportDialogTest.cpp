#include "NorvaneSMS/import/ImportDialogFixture.h"

#include <QScreen>

#include <cerrno>
#include <cstdlib>

namespace norvane {

using namespace Qt::StringLiterals;

using S = QStringList;

TEST_F(ImportDialog, opensOnTheTextFormatWithItsCaptions)
{
    showAnd([&] {
        EXPECT_EQ(dialog->windowTitle(), GS(3760042));
        EXPECT_EQ(entries("cboFileFormat"), (S{GS(3760055), GS(3760056)}));
        EXPECT_EQ(control<QComboBox>("cboFileFormat")->currentIndex(), 0);
        EXPECT_FALSE(control<CaptionedFrame>("fraExcel")->isVisible());
        EXPECT_TRUE(control<QCheckBox>("chkDeleteDuplicated")->isChecked());
    });
    const QList<std::pair<const char *, qint32>> captions{{"lblFileFormat", 3760043},
                                                          {"lblFilePath", 3760044},
                                                          {"lblSheet", 3760046},
                                                          {"lblField", 3760047},
                                                          {"lblRecords", 3760048}};
    for (const auto &[name, id] : captions)
        EXPECT_EQ(control<QLabel>(name)->text(), GS(id)) << name;
    EXPECT_EQ(control<QPushButton>("btnImport")->text(), GS(3760049));
    EXPECT_EQ(control<QCheckBox>("chkDeleteDuplicated")->text(), GS(3760045));
    EXPECT_TRUE(control<QPushButton>("btnOpen")->text().isEmpty());
}

TEST_F(ImportDialog, theTabOrderIsThatOfItsControls)
{
    showAnd([&] {
        chooseSpreadsheet();
        S order;
        for (int i = 0; i < 7; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            order.append(QApplication::focusWidget()->objectName());
        }
        EXPECT_EQ(order, (S{u"txtFilePath"_s, u"btnOpen"_s, u"cboSheet"_s, u"cboField"_s,
                            u"txtRecords"_s, u"btnImport"_s, u"chkDeleteDuplicated"_s}));
    });
}

TEST_F(ImportDialog, importingFromAnEmptyDialogDoesNothing)
{
    EXPECT_FALSE(showAnd([&] { click("btnImport"); }));
    EXPECT_TRUE(stayedOpen);
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(streams.calls.isEmpty());
}

TEST_F(ImportDialog, aPathOfNoFileVanishesWhenTheFocusMovesOn)
{
    showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        click("btnOpen");
        ASSERT_EQ(entries("cboSheet").size(), 3);
        type(u"/nowhere/list.xls"_s);
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        EXPECT_EQ(text("txtFilePath"), QString());
        EXPECT_TRUE(entries("cboSheet").isEmpty());
        EXPECT_TRUE(entries("cboField").isEmpty());
        EXPECT_EQ(text("txtRecords"), u"2"_s);
    });
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(ImportDialog, anotherWindowThatTakesTheFocusChangesNothing)
{
    showAnd([&] {
        type(u"/nowhere"_s);
        QFocusEvent event(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
        QApplication::sendEvent(control<QLineEdit>("txtFilePath"), &event);
        EXPECT_EQ(text("txtFilePath"), u"/nowhere"_s);
    });
}

TEST_F(ImportDialog, theCloseBoxCancels)
{
    EXPECT_FALSE(showAnd([&] { dialog->close(); }));
    EXPECT_FALSE(stayedOpen);
}

TEST_F(ImportDialog, escapeIsTheCloseBox)
{
    EXPECT_FALSE(showAnd([&] {
        type(write("1"));
        QTest::keyClick(control<QLineEdit>("txtFilePath"), Qt::Key_Escape);
    }));
    EXPECT_FALSE(stayedOpen);
    EXPECT_TRUE(imported().isEmpty());
}

TEST_F(ImportDialog, enterInAFieldLeavesItOpenAndOnTheButtonImports)
{
    EXPECT_TRUE(showAnd([&] {
        type(write("1"));
        QTest::keyClick(control<QLineEdit>("txtFilePath"), Qt::Key_Return);
        EXPECT_TRUE(dialog->isVisible());
        control<QPushButton>("btnImport")->setFocus();
        QTest::keyClick(control<QPushButton>("btnImport"), Qt::Key_Return);
    }));
    EXPECT_EQ(imported(), QStringList{u"1"_s});
}

TEST_F(ImportDialog, aFormatThatIsTypedChangesNothing)
{
    showAnd([&] {
        auto *const format = control<QComboBox>("cboFileFormat");
        format->setFocus();
        format->lineEdit()->setText(GS(3760056));
        QTest::keyClick(format->lineEdit(), Qt::Key_Return);
        control<QLineEdit>("txtFilePath")->setFocus();
        EXPECT_FALSE(control<CaptionedFrame>("fraExcel")->isVisible());
        click("btnOpen");
    });
    EXPECT_EQ(picker.requests.last().defaultExtension, u"TXT"_s);
}

TEST_F(ImportDialog, changingTheFormatClearsNothing)
{
    showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        script.calls.clear();
        choose("cboFileFormat", GS(3760055));
        EXPECT_FALSE(control<CaptionedFrame>("fraExcel")->isVisible());
        chooseSpreadsheet();
        EXPECT_TRUE(control<CaptionedFrame>("fraExcel")->isVisible());
        EXPECT_EQ(entries("cboSheet").size(), 3);
        EXPECT_FALSE(text("txtFilePath").isEmpty());
    });
    EXPECT_TRUE(script.calls.isEmpty());
}

TEST_F(ImportDialog, thePickerIsAskedForTheFormatsFiles)
{
    showAnd([&] {
        click("btnOpen");
        chooseSpreadsheet();
        click("btnOpen");
        EXPECT_EQ(text("txtFilePath"), QString());
    });
    ASSERT_EQ(picker.requests.size(), 2);
    for (const FilePicker::Request &request : picker.requests) {
        EXPECT_EQ(request.owner, dialog.get());
        EXPECT_EQ(request.title, GS(3760042));
        EXPECT_EQ(request.initialFolder, u"/program"_s);
        EXPECT_EQ(request.path, QString());
        EXPECT_EQ(request.flags, 0x1800U);
    }
    EXPECT_EQ(picker.requests.first().filter, u"Texto(*.txt)|*.txt"_s);
    EXPECT_EQ(picker.requests.last().filter, u"Excel(*.xls)|*.xls"_s);
    EXPECT_EQ(picker.requests.last().defaultExtension, u"XLS"_s);
}

TEST_F(ImportDialog, aTextFileIsImportedOnceAndTheDialogHidden)
{
    const QString path = write("912 345 678|Ana\r\n912345678|Rui\r\n");
    EXPECT_TRUE(showAnd([&] {
        type(path);
        click("btnImport");
    }));
    EXPECT_EQ(imported(), S{u"912 345 678|Ana"_s});

    load();
    EXPECT_TRUE(showAnd([&] {
        control<QCheckBox>("chkDeleteDuplicated")->setChecked(false);
        type(path);
        click("btnImport");
    }));
    EXPECT_EQ(imported().size(), 2);
}

TEST_F(ImportDialog, anEmptyTextFileIsConfirmedWithoutABox)
{
    EXPECT_TRUE(showAnd([&] {
        type(write(""));
        click("btnImport");
    }));
    EXPECT_EQ(dialog->ImportData().getCount(), 0);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(ImportDialog, aReadingThatBreaksOffGivesItsFirstPartAndTheNextOneFails)
{
    const QString path = write("1\r2\r3\r4\r");
    int readings = 0;
    streams.onRead = [&](qsizetype &max) {
        max = 3;
        return ++readings > 2 ? EIO : 0;
    };
    const auto import = [&] {
        type(path);
        click("btnImport");
    };
    EXPECT_TRUE(showAnd(import));
    EXPECT_EQ(boxes.shown, Boxes{box(u"57 - Device I/O error"_s)});
    EXPECT_EQ(imported(), (S{u"1"_s, u"2"_s}));

    streams.onRead = nullptr;
    load();
    EXPECT_TRUE(showAnd(import));
    EXPECT_EQ(boxes.shown.last(), box(u"55 - File already open"_s));
    EXPECT_TRUE(imported().isEmpty());
}

TEST_F(ImportDialog, standsInTheMiddleOfTheScreenAtAFixedSize)
{
    QWidget owner; // in a corner, where the toolkit by itself would put the dialog as well
    owner.setGeometry(0, 0, 50, 50);
    owner.show();
    load(&owner);
    showAnd([&] {
        const QRect screen = dialog->screen()->availableGeometry();
        const QPoint middle = dialog->frameGeometry().center();
        // Not yet known when it is placed: how wide a frame the platform puts around it.
        EXPECT_LE(std::abs(middle.x() - screen.center().x()), 2);
        EXPECT_LE(std::abs(middle.y() - screen.center().y()), 2);
        const QSize size = dialog->size();
        dialog->resize(size * 2);
        EXPECT_EQ(dialog->size(), size);
        chooseSpreadsheet();
        QCoreApplication::processEvents();
        EXPECT_EQ(dialog->size(), size) << "the frame has its place in either format";
    });
    EXPECT_TRUE(dialog->windowFlags().testFlag(Qt::WindowCloseButtonHint));
    EXPECT_FALSE(dialog->windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
    dialog.reset();
}

TEST_F(ImportDialog, aNewDialogRemembersNothing)
{
    EXPECT_TRUE(showAnd([&] {
        control<QCheckBox>("chkDeleteDuplicated")->setChecked(false);
        type(write("1"));
        click("btnImport");
    }));
    load();
    EXPECT_TRUE(control<QCheckBox>("chkDeleteDuplicated")->isChecked());
    EXPECT_EQ(text("txtFilePath"), QString());
    EXPECT_EQ(dialog->ImportData().getCount(), 0);
}

TEST_F(ImportDialog, aDialogShownAgainReadsAnewAndCanBeCancelled)
{
    const auto import = [&] { click("btnImport"); };
    type(write("1\r2\r"));
    EXPECT_TRUE(showAnd(import));
    EXPECT_EQ(imported(), (S{u"1"_s, u"2"_s}));
    write("3");
    EXPECT_TRUE(showAnd(import));
    EXPECT_EQ(imported(), S{u"3"_s});
    EXPECT_FALSE(showAnd([&] { dialog->close(); }));
}

TEST_F(ImportDialog, importingAFileThatHasGoneDoesNothing)
{
    const QString path = write("1");
    EXPECT_FALSE(showAnd([&] {
        type(path);
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        ASSERT_TRUE(QFile::remove(path));
        click("btnImport");
        EXPECT_EQ(text("txtFilePath"), path);
    }));
    EXPECT_TRUE(stayedOpen);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(ImportDialog, aFolderIsNoFile)
{
    EXPECT_FALSE(showAnd([&] {
        type(folder.path());
        click("btnImport");
        EXPECT_EQ(text("txtFilePath"), QString());
    }));
    EXPECT_TRUE(stayedOpen);
}

TEST_F(ImportDialog, theFocusLeavingATextFilesPathChangesNothing)
{
    const QString path = write("1");
    showAnd([&] {
        type(path);
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        EXPECT_EQ(text("txtFilePath"), path);
    });
    EXPECT_TRUE(script.calls.isEmpty());
    EXPECT_TRUE(streams.calls.isEmpty());
}

TEST_F(ImportDialog, aTextFileThatIsPickedIsNotYetRead)
{
    picker.outcome = {true, u"/a/list.txt"_s, 0};
    showAnd([&] {
        click("btnOpen");
        EXPECT_EQ(text("txtFilePath"), u"/a/list.txt"_s);
    });
    EXPECT_TRUE(script.calls.isEmpty());
    EXPECT_TRUE(streams.calls.isEmpty());
}

TEST_F(ImportDialog, aPickerThatFailsChangesNothing)
{
    const QString path = write("1");
    showAnd([&] {
        type(path);
        picker.outcome.errorCode = 2;
        click("btnOpen");
        EXPECT_EQ(text("txtFilePath"), path);
    });
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().title, u"  Common Dialog Error"_s);
}

TEST_F(ImportDialog, aFormatThatIsNeitherReadsNothing)
{
    EXPECT_TRUE(showAnd([&] {
        type(write("1"));
        Q_EMIT control<QComboBox>("cboFileFormat")->activated(2);
        click("btnImport");
    }));
    EXPECT_TRUE(imported().isEmpty());
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(streams.calls.isEmpty());
}

TEST_F(ImportDialog, aTextFileThatDoesNotOpenIsToldAndTheNextOneIsRead)
{
    streams.onOpen = [](const QString &) { return EACCES; };
    EXPECT_TRUE(showAnd([&] {
        type(write("1"));
        click("btnImport");
    }));
    EXPECT_EQ(boxes.shown, Boxes{box(u"70 - Permission denied"_s)});
    EXPECT_TRUE(imported().isEmpty());

    streams.onOpen = nullptr;
    EXPECT_TRUE(showAnd([&] { click("btnImport"); }));
    EXPECT_EQ(imported(), S{u"1"_s});
}

} // namespace norvane
