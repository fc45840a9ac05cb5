#include "NorvaneSMS/console/ConsoleFixture.h"
#include "NorvaneSMS/import/ScriptedImport.h"
#include "NorvaneSMS/import/frmImport.h"
#include "NorvaneSMS/queue/Fixture.h"
#include "common/CodePages.h"
#include "foundation/Globals.h"
#include "foundation/Normalisation.h"
#include "foundation/ui/MessageEdit.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDir>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cerrno>

namespace norvane {

using namespace Qt::StringLiterals;

using S = QStringList;

namespace {

RecordingMessageBoxes::Shown box(const QString &text, MessageBoxes::Icon icon)
{
    return {text, icon, MessageBoxes::Buttons::Ok, u"Norvane SMS"_s};
}
RecordingMessageBoxes::Shown success()
{
    return box(GS(3760051), MessageBoxes::Icon::Information);
}
using Boxes = QList<RecordingMessageBoxes::Shown>;

} // namespace

/// The console's import button over the real dialog, in which a test picks a file.
class BulkSend : public ConsoleFixture
{
protected:
    void load(bool server)
    {
        importing.createConnection = [this] {
            return std::make_unique<ScriptedConnection>(sheets);
        };
        storeQueueFolder(queue.path());
        server ? loadAsServer() : loadAsClient();
        show();
    }
    void useTemplate(const QString &text) { control<MessageEdit>("txtMessage")->setText(text); }
    frmImport *dialog() const { return console->findChild<frmImport *>(); }
    /// Presses the console's button and runs `steps` on the dialog that comes up.
    void press(const std::function<void(frmImport *)> &steps)
    {
        QTimer::singleShot(0, console.get(), [&] {
            ASSERT_NE(dialog(), nullptr);
            QApplication::setActiveWindow(dialog());
            steps(dialog());
        });
        QTest::mouseClick(control<QPushButton>("btnImport"), Qt::LeftButton);
    }
    void import(const QByteArray &lines)
    {
        const QString path = queue.filePath(u"list.txt"_s);
        writeFile(path, lines);
        press([&](frmImport *form) {
            form->findChild<QLineEdit *>(u"txtFilePath"_s)->setText(path);
            QTest::mouseClick(form->findChild<QPushButton *>(u"btnImport"_s), Qt::LeftButton);
        });
    }
    /// Imports a sheet of these cells. One that begins with a "|" has nothing in front of it.
    void importCells(const S &cells)
    {
        SheetScript::Sheet sheet{u"Uno"_s, {u"Num"_s}, {}};
        for (const QString &cell : cells)
            sheet.rows.append({cell});
        sheets.sheets = {sheet};
        const QString path = queue.filePath(u"list.xls"_s);
        writeFile(path, "x");
        press([&](frmImport *form) {
            auto *const format = form->findChild<QComboBox *>(u"cboFileFormat"_s);
            format->setCurrentIndex(1);
            Q_EMIT format->activated(1);
            form->findChild<QLineEdit *>(u"txtFilePath"_s)->setFocus();
            form->findChild<QLineEdit *>(u"txtFilePath"_s)->setText(path);
            QTest::mouseClick(form->findChild<QPushButton *>(u"btnImport"_s), Qt::LeftButton);
        });
    }
    QByteArray dropFile() const { return bytesOf(queue.filePath(u"sms.0"_s)); }
    QList<SMSList::Entry> queued() const
    {
        return script.lists.isEmpty() ? QList<SMSList::Entry>() : script.lists.last().entries();
    }

    SheetScript sheets;
    const QTemporaryDir queue;
    const QString moment = u"2026-11-20T09:30:15"_s;
};

TEST_F(BulkSend, aServerQueuesTheListInOneCallAndStartsAStoppedEngine)
{
    load(true);
    useTemplate(u"Olá %1, o seu saldo é %2"_s);
    import("912345678|Ana|10\r\n600000001|Jos\xE9|20\r\n");
    EXPECT_EQ(takeCalls(),
              (S{u"AddSMSList(2|%1)"_s.arg(moment), u"GetEngineStatus"_s, u"StartEngine"_s}));
    EXPECT_EQ(queued(), (QList<SMSList::Entry>{{u"912345678"_s, u"Ola Ana, o seu saldo e 10"_s},
                                               {u"600000001"_s, u"Ola José, o seu saldo e 20"_s}}));
    EXPECT_EQ(boxes.shown, Boxes{success()});
    EXPECT_EQ(dialog(), nullptr);
}

TEST_F(BulkSend, aRunningEngineIsNotStartedAgain)
{
    script.status = 1;
    load(true);
    import("1");
    EXPECT_EQ(takeCalls(), (S{u"AddSMSList(1|%1)"_s.arg(moment), u"GetEngineStatus"_s}));
}

TEST_F(BulkSend, thePhoneIsCleanedAfterTheTemplateWasFilled)
{
    load(true);
    useTemplate(u"<%0>"_s);
    import("91 234-5678");
    EXPECT_EQ(queued(), (QList<SMSList::Entry>{{u"912345678"_s, u"<91 234-5678>"_s}}));
}

TEST_F(BulkSend, aRowWithoutFieldsKeepsThePlaceholder)
{
    load(true);
    useTemplate(u"a %1"_s);
    import("1\r2|x");
    EXPECT_EQ(queued().first().message, u"a %1"_s);
    EXPECT_EQ(queued().last().message, u"a x"_s);
}

TEST_F(BulkSend, aLongMessageReachesTheEngineWhole)
{
    load(true);
    useTemplate(QString(158, u'x') + u"%1"_s);
    import("1|" + QByteArray(500, 'y'));
    EXPECT_EQ(queued().first().message.size(), 658);
}

TEST_F(BulkSend, aCancelledDialogDoesNothing)
{
    load(true);
    const QString path = queue.filePath(u"list.txt"_s);
    writeFile(path, "1\r2\r");
    const QList<std::function<void(frmImport *)>> ways{
        [](frmImport *form) { form->close(); },
        [](frmImport *form) { QTest::keyClick(form, Qt::Key_Escape); },
    };
    for (const auto &cancel : ways) {
        press([&](frmImport *form) {
            form->findChild<QLineEdit *>(u"txtFilePath"_s)->setText(path);
            // Whatever the dialog holds by then isn't asked for.
            const_cast<clsCollection &>(form->ImportData()).add(u"3"_s, u"K1"_s);
            cancel(form);
            EXPECT_FALSE(form->isVisible());
        });
        EXPECT_TRUE(takeCalls().isEmpty());
        EXPECT_TRUE(boxes.shown.isEmpty());
        EXPECT_EQ(dialog(), nullptr);
    }
}

TEST_F(BulkSend, anEmptyImportDoesNothing)
{
    load(true);
    import("\r\n - \r\n");
    EXPECT_TRUE(takeCalls().isEmpty());
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(dialog(), nullptr);
}

TEST_F(BulkSend, anEmptyTemplateIsAccepted)
{
    load(true);
    import("1");
    EXPECT_EQ(queued(), (QList<SMSList::Entry>{{u"1"_s, QString()}}));
    EXPECT_EQ(boxes.shown, Boxes{success()});
}

TEST_F(BulkSend, fiveHundredRecipientsOnAClientAreOneFileOf99500Bytes)
{
    load(false);
    useTemplate(u"Olá %1"_s);
    QByteArray lines;
    for (int i = 0; i < 500; ++i)
        lines += QByteArray::number(600000000 + i) + "|N" + QByteArray::number(i) + "\r\n";
    import(lines);
    EXPECT_EQ(dropFile().size(), 99'500);
    EXPECT_TRUE(dropFile().startsWith("600000000" + QByteArray(16, ' ') + "20112026093015Ola N0 "));
    EXPECT_EQ(QDir(queue.path()).entryList({u"sms.*"_s}), S{u"sms.0"_s});
    EXPECT_EQ(boxes.shown, Boxes{success()});
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(BulkSend, aClientCutsAtTheRecordAndMapsTheTemplateTwice)
{
    load(false);
    useTemplate(u"º%1"_s);
    import("1|\xBA" + QByteArray(200, 'y'));
    const QByteArray message = dropFile().mid(39);
    EXPECT_EQ(message.size(), 160);
    EXPECT_TRUE(message.endsWith("yyy"));
    const QString once = NormalizeSMSText(false, u"º"_s);
    EXPECT_EQ(message.first(2), CodePages::toAnsi(NormalizeSMSText(false, once) + once));
}

TEST_F(BulkSend, rowsWithoutAPhoneAreDroppedWithoutAWord)
{
    load(true);
    importCells({u"|5"_s});
    EXPECT_EQ(takeCalls().first(), u"AddSMSList(0|%1)"_s.arg(moment));
    EXPECT_EQ(boxes.shown, Boxes{success()});
}

TEST_F(BulkSend, aRowWhosePhoneConsistsOfBlanksIsDropped)
{
    load(true);
    import("   |Ana\r1|Rui");
    EXPECT_EQ(queued(), (QList<SMSList::Entry>{{u"1"_s, QString()}}));

    importCells({u" - |Ana"_s, u"2"_s});
    EXPECT_EQ(queued(), (QList<SMSList::Entry>{{u"2"_s, QString()}}));
}

TEST_F(BulkSend, equalNumbersAreSoughtByTheDialogAlone)
{
    load(true);
    const QString path = queue.filePath(u"list.txt"_s);
    writeFile(path, "1|a\r1|b");
    press([&](frmImport *form) {
        form->findChild<QLineEdit *>(u"txtFilePath"_s)->setText(path);
        form->findChild<QCheckBox *>(u"chkDeleteDuplicated"_s)->setChecked(false);
        QTest::mouseClick(form->findChild<QPushButton *>(u"btnImport"_s), Qt::LeftButton);
    });
    EXPECT_EQ(queued().size(), 2);
    import("1|a\r1|b");
    EXPECT_EQ(queued().size(), 1);
}

TEST_F(BulkSend, theDeliveryMomentMayLieInThePast)
{
    load(true);
    control<QDateEdit>("dtDeliveryDate")->setDate(QDate(1999, 12, 31));
    import("1");
    EXPECT_EQ(takeCalls().first(), u"AddSMSList(1|1999-12-31T09:30:15)"_s);
}

TEST_F(BulkSend, theDialogIsUnloadedBeforeTheSuccessIsShown)
{
    load(true);
    boxes.whileShown = [this] { EXPECT_EQ(dialog(), nullptr); };
    import("1");
    EXPECT_EQ(boxes.shown, Boxes{success()});
}

TEST_F(BulkSend, aReadingThatBrokeOffSendsItsFirstPartAndTheNextOneFindsTheFileOpen)
{
    importing.files = std::make_shared<NumberedFiles>(streams);
    load(true);
    int readings = 0;
    streams.onRead = [&](qsizetype &max) {
        max = 4;
        return ++readings > 1 ? EIO : 0;
    };
    import("1\r2\r3\r");
    EXPECT_EQ(queued().size(), 1);
    EXPECT_EQ(boxes.shown,
              (Boxes{box(u"57 - Device I/O error"_s, MessageBoxes::Icon::None), success()}));

    streams.onRead = nullptr;
    takeCalls();
    boxes.shown.clear();
    import("1");
    EXPECT_EQ(boxes.shown, Boxes{box(u"55 - File already open"_s, MessageBoxes::Icon::None)});
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(BulkSend, anEmptyListOnAClientIsAnEmptyFile)
{
    load(false);
    importCells({u"|5"_s});
    EXPECT_TRUE(QFile::exists(queue.filePath(u"sms.0"_s)));
    EXPECT_EQ(dropFile(), QByteArray());
    EXPECT_EQ(boxes.shown, Boxes{success()});
}

TEST_F(BulkSend, aClientsMissingFolderIsToldWithoutSuccess)
{
    load(false);
    storeQueueFolder(queue.filePath(u"none"_s));
    console->ApplyOperationMode();
    boxes.whileShown = [this] { EXPECT_NE(dialog(), nullptr) << "unloaded behind the box"; };
    import("1");
    EXPECT_EQ(boxes.shown, Boxes{box(GS(3760050), MessageBoxes::Icon::Exclamation)});
    EXPECT_EQ(dialog(), nullptr);
}

TEST_F(BulkSend, aWritersFailureIsFollowedByTheSuccessAllTheSame)
{
    load(false);
    streams.onCreate = [](const QString &) { return EACCES; };
    import("1");
    EXPECT_EQ(boxes.shown, (Boxes{box(u"Permission denied - 70"_s, MessageBoxes::Icon::Information),
                                  success()}));
}

TEST_F(BulkSend, theEntryBeyondTheListsCountIsAnOverflowAndNothingIsQueued)
{
    load(true);
    QByteArray lines;
    for (int i = 0; i < 32768; ++i)
        lines += QByteArray::number(600000000 + i) + "\r";
    import(lines);
    EXPECT_EQ(boxes.shown, Boxes{box(u"Overflow - 6"_s, MessageBoxes::Icon::Critical)});
    EXPECT_TRUE(takeCalls().isEmpty());
    ASSERT_NE(dialog(), nullptr);
    EXPECT_FALSE(dialog()->isVisible());

    boxes.shown.clear();
    lines.chop(10);
    import(lines);
    EXPECT_EQ(queued().size(), 32767);
    EXPECT_EQ(boxes.shown, Boxes{success()});
}

TEST_F(BulkSend, anEnginesFailureStrandsTheDialogUntilTheNextPress)
{
    load(true);
    script.failingCall = u"AddSMSList"_s;
    import("1");
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().icon, MessageBoxes::Icon::Critical);
    EXPECT_TRUE(boxes.shown.first().text.endsWith(u" - 462"_s));
    const QPointer<frmImport> stranded = dialog();
    ASSERT_FALSE(stranded.isNull());
    EXPECT_FALSE(stranded->isVisible());

    press([&](frmImport *form) {
        EXPECT_NE(form, stranded.data());
        form->close();
    });
    EXPECT_EQ(dialog(), nullptr);
    EXPECT_TRUE(stranded.isNull());
}

TEST_F(BulkSend, aFailureBehindTheQueueingLeavesTheListQueued)
{
    for (const QString &call : {u"GetEngineStatus"_s, u"StartEngine"_s}) {
        load(true);
        boxes.shown.clear();
        script.lists.clear();
        script.failingCall = call;
        import("1");
        EXPECT_EQ(queued().size(), 1) << call.toStdString();
        EXPECT_EQ(boxes.shown,
                  Boxes{box(u"The remote server machine does not exist or is unavailable - 462"_s,
                            MessageBoxes::Icon::Critical)});
        EXPECT_NE(dialog(), nullptr);
    }
}

TEST_F(BulkSend, aStrandedDialogDoesNotKeepTheProgramAlive)
{
    // Closing the last window ends the event loop; the deadline ends it otherwise.
    const auto endsWithTheConsole = [this] {
        QTimer deadline;
        deadline.callOnTimeout(qApp, [] { QCoreApplication::exit(1); });
        deadline.start(10'000);
        QTimer::singleShot(0, console.get(), [this] { console->close(); });
        return QApplication::exec() == 0;
    };
    load(true);
    ASSERT_TRUE(endsWithTheConsole());

    load(true);
    script.failingCall = u"GetEngineStatus"_s;
    import("1");
    ASSERT_NE(dialog(), nullptr);
    EXPECT_TRUE(endsWithTheConsole());
}

} // namespace norvane
