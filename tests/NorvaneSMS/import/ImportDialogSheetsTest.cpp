#include "NorvaneSMS/import/ImportDialogFixture.h"
#include "NorvaneSMS/import/readers/HelperConnection.h"
#include "support/WaitUntil.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

using S = QStringList;

TEST_F(ImportDialog, theFocusLeavesThePathBeforeTheImportActs)
{
    const QString path = write("x");
    EXPECT_TRUE(showAnd([&] {
        chooseSpreadsheet();
        type(path);
        control<QComboBox>("cboSheet")->setFocus();
        choose("cboSheet", u"Dos"_s);
        EXPECT_EQ(entries("cboField"), S{u"Tel"_s});
        control<QLineEdit>("txtFilePath")->setFocus();
        script.calls.clear();
        click("btnImport");
    }));
    EXPECT_EQ(script.calls, (S{u"new"_s, u"release"_s, u"open(%1)"_s.arg(path), u"describe(Uno)"_s,
                               u"rows(Uno)"_s}));
    EXPECT_EQ(imported(), (S{u"1"_s, u"2"_s}));
}

TEST_F(ImportDialog, aPathThatIsTypedOverAnotherIsTheOneThatIsImported)
{
    const QList<SheetScript::Sheet> former = script.sheets;
    const QString second = write("x", u"second.xls"_s);
    for (const PressWay way : pressWays) {
        script.sheets = former;
        load();
        EXPECT_TRUE(showAnd([&] {
            chooseSpreadsheet();
            type(write("x"));
            control<QComboBox>("cboSheet")->setFocus();
            type(second);
            script.sheets = {{u"Otra"_s, {u"Num"_s}, {{u"7"_s}}}};
            press(control<QPushButton>("btnImport"), way);
            EXPECT_TRUE(waitUntil([this] { return !dialog->isVisible(); })) << way;
        }));
        EXPECT_EQ(imported(), S{u"7"_s}) << way;
    }
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(ImportDialog, aPathOfNoFileVanishesAlsoBeforeAPressByKey)
{
    for (const PressWay way : pressWays) {
        load();
        EXPECT_FALSE(showAnd([&] {
            type(u"/nowhere/list.txt"_s);
            auto *const button = control<QPushButton>("btnImport");
            press(button, way);
            EXPECT_TRUE(button->hasFocus()) << way;
            EXPECT_EQ(text("txtFilePath"), QString()) << way;
        }));
    }
}

TEST_F(ImportDialog, whatWasTypedIntoListsWithoutEntriesGoesWithTheirEntries)
{
    const auto typeIntoLists = [this] {
        control<QComboBox>("cboSheet")->setEditText(u"Dos"_s);
        control<QComboBox>("cboField")->setEditText(u"Tel"_s);
    };
    const auto typed = [this] {
        return control<QComboBox>("cboSheet")->currentText() +
               control<QComboBox>("cboField")->currentText();
    };
    showAnd([&] {
        chooseSpreadsheet();
        typeIntoLists();
        type(u"/nowhere/list.xls"_s);
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        EXPECT_EQ(typed(), QString()) << "a path of no file";

        script.sheets.clear();
        typeIntoLists();
        type(write("x"));
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        EXPECT_EQ(typed(), QString()) << "a workbook without sheets";

        script.sheets = {{u"Uno"_s, {}, {{}}}};
        typeIntoLists();
        control<QLineEdit>("txtFilePath")->setFocus();
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        EXPECT_EQ(typed(), u"Uno"_s) << "a sheet without fields";
    });
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(ImportDialog, aSpreadsheetThatWasNeverOpenedGivesTheReadersBox)
{
    const QString path = write("x");
    EXPECT_TRUE(showAnd([&] {
        type(path);
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        chooseSpreadsheet();
        click("btnImport");
    }));
    EXPECT_EQ(boxes.shown, Boxes{box(u"91 - Object variable or With block variable not set"_s)});
    EXPECT_TRUE(imported().isEmpty());
    EXPECT_FALSE(stayedOpen);
}

TEST_F(ImportDialog, aSpreadsheetThatIsPickedIsOpened)
{
    showAnd([&] {
        chooseSpreadsheet();
        picker.outcome = {true, u"/a/book.xls"_s, 0};
        click("btnOpen");
        EXPECT_EQ(text("txtFilePath"), u"/a/book.xls"_s);
        EXPECT_EQ(entries("cboSheet"), (S{u"Uno"_s, u"Dos"_s, u"Vacio"_s}));
        EXPECT_EQ(entries("cboField"), (S{u"Num"_s, u"Otro"_s}));
        EXPECT_EQ(control<QComboBox>("cboField")->currentText(), u"Num"_s);
        EXPECT_EQ(text("txtRecords"), u"2"_s);
        picker.outcome = {};
        click("btnOpen");
        EXPECT_EQ(text("txtFilePath"), u"/a/book.xls"_s) << "cancelling changes nothing";
        EXPECT_EQ(entries("cboSheet").size(), 3);
    });
}

TEST_F(ImportDialog, blankAndNullCellsAreSkipped)
{
    script.sheets = {
        {u"Uno"_s, {u"Num"_s}, {{{}}, {u" - "_s}, {u"912 345-678"_s}, {u"912345678"_s}, {u""_s}}}};
    EXPECT_TRUE(showAnd([&] {
        chooseSpreadsheet();
        control<QCheckBox>("chkDeleteDuplicated")->setChecked(false);
        type(write("x"));
        click("btnImport");
    }));
    EXPECT_EQ(imported(), (S{u"912345678"_s, u"912345678"_s}));
    EXPECT_TRUE(dialog->ImportData().itemExists(u"K3"_s));
    EXPECT_TRUE(dialog->ImportData().itemExists(u"K4"_s));
}

TEST_F(ImportDialog, aFieldThatIsTypedWrongEndsAtTheFirstRow)
{
    EXPECT_TRUE(showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        control<QComboBox>("cboField")->setFocus();
        control<QComboBox>("cboField")->setEditText(u"Nada"_s);
        click("btnImport");
    }));
    EXPECT_EQ(boxes.shown, Boxes{box(u"3265 - Item cannot be found in the collection "
                                     u"corresponding to the requested name or ordinal."_s)});
    EXPECT_TRUE(imported().isEmpty());
}

TEST_F(ImportDialog, sheetAndFieldMayBeTyped)
{
    EXPECT_TRUE(showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        control<QComboBox>("cboSheet")->setFocus();
        control<QComboBox>("cboSheet")->setEditText(u"Dos"_s);
        control<QComboBox>("cboField")->setEditText(u"Tel"_s);
        click("btnImport");
    }));
    EXPECT_EQ(imported(), S{u"3"_s});
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(ImportDialog, anEmptySheetShowsTheFormerOnesFields)
{
    showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        choose("cboSheet", u"Vacio"_s);
        EXPECT_EQ(entries("cboField"), (S{u"Num"_s, u"Otro"_s}));
        EXPECT_EQ(text("txtRecords"), u"2"_s);
    });
    EXPECT_EQ(boxes.shown,
              Boxes{box(u"3021 - Either BOF or EOF is True, or the current record has been "
                        u"deleted. Requested operation requires a current record."_s)});
}

TEST_F(ImportDialog, aRowThatFailsKeepsTheRowsBeforeIt)
{
    script.inRow = [](qint32 row) {
        if (row == 2)
            throw NumberedFailure(-2147467259, u"Sheet"_s, u"broken"_s);
    };
    EXPECT_TRUE(showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        click("btnImport");
    }));
    EXPECT_EQ(boxes.shown, Boxes{box(u"-2147467259 - broken"_s)});
    EXPECT_EQ(imported(), S{u"1"_s});
}

TEST_F(ImportDialog, aWorkbookThatDoesNotOpenIsToldByItsNumberOrItsErrors)
{
    const QString path = write("x");
    showAnd([&] {
        chooseSpreadsheet();
        type(path);
        click("btnOpen");
        script.failsToOpen = NumberedFailure(70, u"Sheet"_s, u"Permission denied"_s);
        type(path);
        click("btnOpen");
        EXPECT_EQ(boxes.shown, Boxes{box(u"70-Permission denied"_s)});

        boxes.shown.clear();
        script.failsToOpen = NumberedFailure(-2147467259, u"Sheet"_s, u"all"_s);
        script.errors = {u"one"_s, u"two"_s};
        type(path);
        click("btnOpen");
        EXPECT_EQ(boxes.shown, (Boxes{box(u"one"_s), box(u"two"_s)}));
        EXPECT_EQ(entries("cboSheet").size(), 3) << "the lists keep what they had";

        boxes.shown.clear();
        click("btnImport");
    });
    EXPECT_EQ(boxes.shown,
              Boxes{box(u"3704 - Operation is not allowed when the object is closed."_s)});
}

TEST_F(ImportDialog, blanksAroundASpreadsheetsPathAreTrimmed)
{
    const QString path = write("x", u" book "_s);
    showAnd([&] {
        chooseSpreadsheet();
        type(path);
        click("btnOpen");
        EXPECT_TRUE(script.calls.contains(u"open(%1)"_s.arg(path.chopped(1))));
        EXPECT_EQ(text("txtFilePath"), path);
    });
}

TEST_F(ImportDialog, unloadingClosesTheConnection)
{
    showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        click("btnOpen");
    });
    script.calls.clear();
    dialog.reset();
    EXPECT_EQ(script.calls, (S{u"close"_s, u"release"_s}));
}

TEST_F(ImportDialog, thePathIsOpenedAnewWheneverTheFocusLeavesIt)
{
    const QString path = write("x");
    showAnd([&] {
        chooseSpreadsheet();
        for (int i = 0; i < 2; ++i) {
            type(path);
            control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        }
    });
    EXPECT_EQ(script.calls.count(u"open(%1)"_s.arg(path)), 2);
    // A connection is replaced without being closed.
    EXPECT_EQ(script.calls.count(u"close"_s), 0);
    EXPECT_EQ(script.calls.count(u"release"_s), 1);
}

TEST_F(ImportDialog, blanksInFrontOfASpreadsheetsPathAreTrimmed)
{
    showAnd([&] {
        chooseSpreadsheet();
        picker.outcome = {true, u"  /a/my book.xls "_s, 0};
        click("btnOpen");
        EXPECT_TRUE(script.calls.contains(u"open(/a/my book.xls)"_s));
        EXPECT_EQ(text("txtFilePath"), u"  /a/my book.xls "_s);
    });
}

TEST_F(ImportDialog, theFirstOfASheetsEqualNumbersStays)
{
    script.sheets = {{u"Uno"_s, {u"Num"_s}, {{u"912 345-678"_s}, {u"7"_s}, {u"912345678"_s}}}};
    EXPECT_TRUE(showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        click("btnImport");
    }));
    EXPECT_EQ(imported(), (S{u"912345678"_s, u"7"_s}));
    EXPECT_TRUE(dialog->ImportData().itemExists(u"912345678"_s));
}

TEST_F(ImportDialog, aFirstSheetWithoutRecordsLeavesNoFields)
{
    script.sheets.move(2, 0);
    showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        click("btnOpen");
        EXPECT_EQ(entries("cboSheet"), (S{u"Vacio"_s, u"Uno"_s, u"Dos"_s}));
        EXPECT_EQ(entries("cboField"), S());
        EXPECT_EQ(text("txtRecords"), QString());
    });
    EXPECT_EQ(boxes.shown.size(), 1);
}

TEST_F(ImportDialog, aWorkbookWithoutSheetsListsNothing)
{
    script.sheets.clear();
    showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        click("btnOpen");
        EXPECT_EQ(entries("cboSheet"), S());
    });
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_FALSE(script.calls.contains(u"describe()"_s));
}

TEST_F(ImportDialog, aFailureNumberedZeroIsToldByTheConnectionsErrors)
{
    script.failsToOpen = NumberedFailure(0, u"Sheet"_s, u"zero"_s);
    script.errors = {u"one"_s};
    showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        click("btnOpen");
    });
    EXPECT_EQ(boxes.shown, Boxes{box(u"one"_s)});
}

TEST_F(ImportDialog, aSheetThatIsGoneKeepsTheFieldsOfTheFormerOne)
{
    showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        script.sheets.removeLast();
        choose("cboSheet", u"Vacio"_s);
        EXPECT_EQ(entries("cboField"), (S{u"Num"_s, u"Otro"_s}));
        EXPECT_EQ(text("txtRecords"), u"2"_s);
    });
    EXPECT_EQ(boxes.shown, Boxes{box(u"-2147217865 - There is no sheet 'Vacio' in this file."_s)});
}

namespace {

bool pointerShowsThatTheProgramIsBusy()
{
    const QCursor *const pointer = QGuiApplication::overrideCursor();
    return pointer != nullptr && pointer->shape() == Qt::WaitCursor;
}

/// Does something at the first painting of a window.
class PaintWatch : public QObject
{
public:
    PaintWatch(QWidget &window, std::function<void()> atPaint) : m_atPaint(std::move(atPaint))
    {
        window.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && m_atPaint)
            std::exchange(m_atPaint, nullptr)();
        return false;
    }

private:
    std::function<void()> m_atPaint;
};

} // namespace

TEST_F(ImportDialog, thePointerIsBusyWhileAWorkbookIsOpenedAndNotWhileItIsRead)
{
    QList<bool> opening;
    QList<bool> reading;
    script.whileOpening = [&] { opening.append(pointerShowsThatTheProgramIsBusy()); };
    script.inRow = [&](qint32) { reading.append(pointerShowsThatTheProgramIsBusy()); };
    EXPECT_TRUE(showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        EXPECT_FALSE(pointerShowsThatTheProgramIsBusy());
        click("btnImport");
    }));
    EXPECT_EQ(opening, QList<bool>{true});
    EXPECT_EQ(reading, (QList<bool>{false, false}));

    script.failsToOpen = NumberedFailure(70, u"Sheet"_s, u"Permission denied"_s);
    load();
    showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        EXPECT_FALSE(pointerShowsThatTheProgramIsBusy());
    });
    EXPECT_EQ(opening, (QList<bool>{true, true}));
}

TEST_F(ImportDialog, whatIsPressedWhileAWorkbookIsOpenedHasNoEffect)
{
    // A screen reader presses without key or mouse, and the window's events are handled meanwhile.
    int openings = 0;
    script.whileOpening = [&] {
        ++openings;
        control<QPushButton>("btnImport")->click();
        control<QPushButton>("btnOpen")->click();
        EXPECT_TRUE(dialog->isVisible());
    };
    showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        EXPECT_EQ(openings, 1);
        EXPECT_EQ(control<QComboBox>("cboSheet")->count(), script.sheets.size());
        EXPECT_TRUE(dialog->isVisible());
    });
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(ImportDialog, noOtherFileIsChosenOrOpenedWhileAWorkbookIsOpened)
{
    int openings = 0;
    script.whileOpening = [&] {
        if (++openings > 1)
            return;
        control<QPushButton>("btnOpen")->click();
        type(write("y", u"other.xls"_s));
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
    };
    showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
    });
    EXPECT_TRUE(picker.requests.isEmpty());
    EXPECT_EQ(openings, 1);
}

TEST_F(ImportDialog, aSheetThatIsChosenWhileTheNextWorkbookIsOpenedIsNotRead)
{
    showAnd([&] {
        chooseSpreadsheet();
        type(write("x"));
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        script.whileOpening = [&] { Q_EMIT control<QComboBox>("cboSheet")->activated(0); };
        type(write("y", u"other.xls"_s));
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
    });
    EXPECT_EQ(script.calls.filter(u"describe"_s),
              (QStringList{u"describe(Uno)"_s, u"describe(Uno)"_s}));
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(ImportDialog, theWindowIsPaintedWhileAWorkbookIsOpened)
{
    // A reader that answers once the window was painted, and not before.
    const QByteArray pipe = QFile::encodeName(folder.filePath(u"pipe"_s));
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
    const int release = ::open(pipe.constData(), O_RDWR | O_CLOEXEC);
    const QString reader =
        write("#!/bin/sh\nread line <" + pipe + "\nprintf '\\0\\0\\0\\1\\0'\n", u"reader"_s);
    QFile::setPermissions(reader, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    environment.createConnection = [&] {
        return std::make_unique<HelperConnection>(reader, std::chrono::seconds(30));
    };
    load();
    bool isPainted = false;
    showAnd([&] {
        chooseSpreadsheet();
        QCoreApplication::processEvents();
        // What is posted here is due when the opening has begun.
        dialog->update();
        const PaintWatch watch(*dialog, [&] {
            isPainted = pointerShowsThatTheProgramIsBusy();
            EXPECT_EQ(::write(release, "\n", 1), 1);
        });
        type(write("x"));
        control<QCheckBox>("chkDeleteDuplicated")->setFocus();
        EXPECT_TRUE(isPainted);
    });
    EXPECT_EQ(boxes.shown, Boxes{box(u"The file can't be read."_s)});
    ::close(release);
}

} // namespace norvane
