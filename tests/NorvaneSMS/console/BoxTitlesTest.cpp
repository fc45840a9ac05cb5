#include "NorvaneSMS/console/QueueGridFixture.h"

#include "NorvaneSMS/import/frmImport.h"
#include "NorvaneSMS/queue/Fixture.h"
#include "foundation/ui/FatalReport.h"
#include "foundation/ui/MessageEdit.h"

#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <cerrno>

namespace norvane {

using namespace Qt::StringLiterals;

/// The boxes of the console under a title that its own language files don't have: theirs is the
/// program's bare name, and couldn't be told from a literal.
class BoxTitles : public QueueGridTest
{
protected:
    void SetUp() override
    {
        QFile original(QStringLiteral(NORVANE_LANGUAGE_DIR "/NorvaneSMS_ESN.XML"));
        ASSERT_TRUE(original.open(QIODevice::ReadOnly));
        QByteArray bytes = original.readAll();
        const QByteArray title = "ResID=\"0\" ResSTring=\"%1\"";
        ASSERT_TRUE(bytes.contains(title));
        bytes.replace(title, "ResID=\"0\" ResSTring=\"[%1]\"");
        const QString path = folder.filePath(u"NorvaneSMS_ESN.XML"_s);
        writeFile(path, bytes);
        ASSERT_TRUE(goLocalize->Init(path, u"ESN"_s));
        storeQueueFolder(folder.path());
    }

    void press(const char *button)
    {
        QTest::mouseClick(control<QPushButton>(button), Qt::LeftButton);
    }
    void send()
    {
        control<QLineEdit>("txtPhone")->setText(u"1"_s);
        press("btnSend");
    }
    void import(const QByteArray &lines)
    {
        const QString path = folder.filePath(u"list.txt"_s);
        writeFile(path, lines);
        QTimer::singleShot(0, console.get(), [&] {
            auto *const form = console->findChild<frmImport *>();
            ASSERT_NE(form, nullptr);
            form->findChild<QLineEdit *>(u"txtFilePath"_s)->setText(path);
            QTest::mouseClick(form->findChild<QPushButton *>(u"btnImport"_s), Qt::LeftButton);
        });
        press("btnImport");
    }
    /// `count` boxes were shown, all of them under the title of the language file.
    void expectTitled(int count)
    {
        EXPECT_EQ(boxes.shown.size(), count);
        for (const RecordingMessageBoxes::Shown &box : std::as_const(boxes.shown))
            EXPECT_EQ(box.title, u"[Norvane SMS]"_s) << box.text.toStdString();
        boxes.shown.clear();
    }

    QTemporaryDir folder;
};

TEST_F(BoxTitles, ofAServersSendsAndOfTheImportDialogAreTheLanguages)
{
    importing.files = std::make_shared<NumberedFiles>(streams);
    loadAsServer();
    show();
    send();
    expectTitled(1);
    import("1");
    expectTitled(1);
    script.failingCall = u"AddSMSList"_s;
    import("1");
    expectTitled(1);
    streams.onRead = [](qsizetype &) { return EIO; };
    import("1");
    expectTitled(1);
}

TEST_F(BoxTitles, ofAClientsSendsAreTheLanguages)
{
    loadAsClient();
    show();
    send();
    expectTitled(1);
    streams.onCreate = [](const QString &) { return EACCES; };
    send();
    import("1");
    expectTitled(4); // the writers' own boxes, and behind them those of the success
    storeQueueFolder(folder.filePath(u"none"_s));
    console->ApplyOperationMode();
    send();
    import("1");
    expectTitled(2);
}

TEST_F(BoxTitles, ofTheQueueAndItsButtonsAreTheLanguages)
{
    script.status = 1;
    script.queueSize = 2;
    loadAsServer();
    showQueue(2);
    press("btnStop");
    press("btnClearQueue");
    expectTitled(2);
    beginEdit(1, 1);
    select({1});
    pressDelete();
    expectTitled(3);
}

TEST_F(BoxTitles, ofAFailureIsTheProgramsNameWhateverTheLanguageSays)
{
    int exitCode = 0;
    const auto previous = FatalReport::setTerminate([&](int code) { exitCode = code; });
    loadAsServer();
    show();
    script.failingCall = u"AddSMS"_s;
    send();
    FatalReport::setTerminate(previous);
    EXPECT_EQ(exitCode, 1);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().title, u"Norvane SMS"_s);
}

} // namespace norvane
