#include "NorvaneSMS/console/ConsoleFixture.h"

#include "NorvaneSMS/console/MessageEdit.h"
#include "NorvaneSMS/queue/Fixture.h"
#include "NorvaneSMS/queue/QueueFileReader.h"
#include "foundation/Globals.h"

#include <QClipboard>
#include <QDateEdit>
#include <QDir>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeEdit>

#include <cerrno>

class ClientSend : public ConsoleFixture
{
protected:
    void SetUp() override
    {
        storeQueueFolder(queue.path());
        loadAsClient();
        show();
    }

    void send(const QString &phone, const QString &message)
    {
        control<QLineEdit>("txtPhone")->setText(phone);
        control<MessageEdit>("txtMessage")->setText(message);
        QTest::mouseClick(control<QPushButton>("btnSend"), Qt::LeftButton);
    }
    QStringList files() const
    {
        return QDir(queue.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    }
    QByteArray file(const QString &name) const { return bytesOf(queue.filePath(name)); }

    static RecordingMessageBoxes::Shown box(const QString &text, MessageBoxes::Icon icon)
    {
        return {text, icon, MessageBoxes::Buttons::Ok, QStringLiteral("Norvane SMS")};
    }
    static RecordingMessageBoxes::Shown success()
    {
        return box(GS(3760052), MessageBoxes::Icon::Information);
    }

    const QTemporaryDir queue;
    const QByteArray moment = "20112026093015";
};

TEST_F(ClientSend, oneRecordIsWrittenAndTheOperatorIsTold)
{
    send(QStringLiteral("912345678"), QStringLiteral("Coração nº 1"));
    EXPECT_EQ(files(), QStringList{QStringLiteral("sms.0")});
    EXPECT_EQ(file(QStringLiteral("sms.0")), "912345678" + QByteArray(16, ' ') + moment +
                                                 "Coracao n\xA7 1" + QByteArray(148, ' '));
    EXPECT_EQ(boxes.shown, QList<RecordingMessageBoxes::Shown>{success()});
    EXPECT_TRUE(takeCalls().isEmpty()) << "a client has no engine to call";
}

TEST_F(ClientSend, twoSendsOfTheSameFieldsAreTwoFiles)
{
    send(QStringLiteral("912345678"), QStringLiteral("Hola"));
    QTest::mouseClick(control<QPushButton>("btnSend"), Qt::LeftButton);
    EXPECT_EQ(files(), (QStringList{QStringLiteral("sms.0"), QStringLiteral("sms.1")}));
    EXPECT_EQ(file(QStringLiteral("sms.0")), file(QStringLiteral("sms.1")));
    EXPECT_EQ(boxes.shown, (QList<RecordingMessageBoxes::Shown>{success(), success()}));
    EXPECT_EQ(control<QLineEdit>("txtPhone")->text(), QStringLiteral("912345678"));
    EXPECT_EQ(control<MessageEdit>("txtMessage")->text(), QStringLiteral("Hola"));
}

TEST_F(ClientSend, dateAndTimeAreNotBroughtUpToDateByASend)
{
    for (const QString &name : {QStringLiteral("sms.0"), QStringLiteral("sms.1")}) {
        now = now.addDays(1).addSecs(3601);
        send(QStringLiteral("912345678"), QStringLiteral("Hola"));
        EXPECT_EQ(file(name).mid(25, 14), moment) << "as the form was loaded";
        EXPECT_EQ(control<QDateEdit>("dtDeliveryDate")->date(), QDate(2026, 11, 20));
        EXPECT_EQ(control<QTimeEdit>("tmDeliveryDate")->time(), QTime(9, 30, 15));
    }
}

TEST_F(ClientSend, phoneIsWrittenWithItsPlusAndCutTo25Characters)
{
    const QList<std::pair<QString, QByteArray>> cases{
        {QStringLiteral("+34912345678"), "+34912345678             "},
        {QStringLiteral("+123456789012345678901234"), "+123456789012345678901234"},
        {QStringLiteral("+1234567890123456789012345"), "+123456789012345678901234"},
        {QString(40, u'7'), QByteArray(25, '7')},
    };
    auto *const phone = control<QLineEdit>("txtPhone");
    for (const auto &[typed, field] : cases) {
        phone->clear();
        QTest::keyClicks(phone, typed);
        QTest::mouseClick(control<QPushButton>("btnSend"), Qt::LeftButton);
        EXPECT_EQ(phone->text(), typed) << "it stays as it was typed";
        const QByteArray record = file(QStringLiteral("sms.0"));
        EXPECT_EQ(record.size(), 199);
        EXPECT_EQ(record.first(25), field);
        EXPECT_EQ(record.mid(25, 14), moment);
        ASSERT_TRUE(QFile::remove(queue.filePath(QStringLiteral("sms.0"))));
    }
    EXPECT_EQ(boxes.shown, QList<RecordingMessageBoxes::Shown>(4, success())) << "nothing warns";
}

TEST_F(ClientSend, emptyPhoneDoesNothing)
{
    send(QString(), QStringLiteral("Hola"));
    EXPECT_TRUE(files().isEmpty());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(ClientSend, emptyMessageAndAMomentInThePastAreWritten)
{
    control<QDateEdit>("dtDeliveryDate")->setDate(QDate(1999, 12, 31));
    control<QTimeEdit>("tmDeliveryDate")->setTime(QTime(23, 59, 58));
    send(QStringLiteral("1"), QString());
    EXPECT_EQ(file(QStringLiteral("sms.0")),
              "1" + QByteArray(24, ' ') + "31121999235958" + QByteArray(160, ' '));
}

TEST_F(ClientSend, textOf160CharactersWithALineBreakFillsTheField)
{
    const QString text = QString(79, u'a') + QStringLiteral("\r\n") + QString(79, u'b');
    send(QStringLiteral("1"), text);
    EXPECT_EQ(file(QStringLiteral("sms.0")).mid(39), text.toLatin1());
}

TEST_F(ClientSend, pastedDashIsWrittenAndTheReaderRemovesIt)
{
    auto *const phone = control<QLineEdit>("txtPhone");
    QGuiApplication::clipboard()->setText(QStringLiteral("912-345"));
    phone->paste();
    QTest::mouseClick(control<QPushButton>("btnSend"), Qt::LeftButton);
    EXPECT_EQ(file(QStringLiteral("sms.0")).first(25), "912-345" + QByteArray(18, ' '));

    RecordingEngine reader(script);
    takeCalls();
    ImportSMSFile(queue.filePath(QStringLiteral("sms.0")), reader, QString());
    EXPECT_EQ(takeCalls(), QStringList{QStringLiteral("AddSMS(912345||2026-11-20T09:30:15)")});
}

TEST_F(ClientSend, missingFolderIsToldAndNothingElseHappens)
{
    storeQueueFolder(queue.filePath(QStringLiteral("none")));
    console->ApplyOperationMode();
    send(QStringLiteral("1"), QStringLiteral("x"));
    EXPECT_EQ(boxes.shown, QList<RecordingMessageBoxes::Shown>{
                               box(GS(3760050), MessageBoxes::Icon::Exclamation)});
    EXPECT_TRUE(streams.calls.isEmpty());
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(ClientSend, fileInThePlaceOfTheFolderIsAMissingFolder)
{
    writeFile(queue.filePath(QStringLiteral("file")));
    storeQueueFolder(queue.filePath(QStringLiteral("file")));
    console->ApplyOperationMode();
    send(QStringLiteral("1"), QStringLiteral("x"));
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().text, GS(3760050));
}

TEST_F(ClientSend, writersFailureIsFollowedByTheSuccessAllTheSame)
{
    const QList<std::pair<int, QString>> cases{
        {EACCES, QStringLiteral("Permission denied - 70")},
        {EEXIST, QStringLiteral("File already exists - 58")}};
    for (const auto &[error, text] : cases) {
        boxes.shown.clear();
        streams.onCreate = [number = error](const QString &) { return number; };
        send(QStringLiteral("1"), QStringLiteral("x"));
        EXPECT_EQ(boxes.shown, (QList<RecordingMessageBoxes::Shown>{
                                   box(text, MessageBoxes::Icon::Information), success()}));
    }
    EXPECT_EQ(waiting.sleeps.size(), 3) << "a client that collides waits three times";
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(ClientSend, fullDiskLeavesAnEmptyFile)
{
    streams.onWrite = [](const QByteArray &) { return ENOSPC; };
    send(QStringLiteral("1"), QStringLiteral("x"));
    EXPECT_EQ(
        boxes.shown,
        (QList<RecordingMessageBoxes::Shown>{
            box(QStringLiteral("Disk full - 61"), MessageBoxes::Icon::Information), success()}));
    EXPECT_EQ(file(QStringLiteral("sms.0")), QByteArray());
}

TEST_F(ClientSend, folderFullOfFilesShowsTheOverflowAndThenTheSuccess)
{
    for (int number = 0; number <= 32767; ++number)
        writeFile(queue.filePath(QStringLiteral("sms.") + QString::number(number)));
    send(QStringLiteral("1"), QStringLiteral("x"));
    EXPECT_EQ(boxes.shown, (QList<RecordingMessageBoxes::Shown>{
                               box(QStringLiteral("Overflow - 6"), MessageBoxes::Icon::Information),
                               success()}));
    EXPECT_EQ(files().size(), 32768);
}
