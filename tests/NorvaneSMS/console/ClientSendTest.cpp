#include "NorvaneSMS/console/ConsoleFixture.h"

#include "NorvaneSMS/queue/Fixture.h"
#include "NorvaneSMS/queue/QueueFileReader.h"
#include "foundation/Globals.h"
#include "foundation/ui/MessageEdit.h"

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

namespace norvane {

using namespace Qt::StringLiterals;

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
        return {text, icon, MessageBoxes::Buttons::Ok, u"Norvane SMS"_s};
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
    send(u"912345678"_s, u"Coração nº 1"_s);
    EXPECT_EQ(files(), QStringList{u"sms.0"_s});
    EXPECT_EQ(file(u"sms.0"_s), "912345678" + QByteArray(16, ' ') + moment + "Coracao n\xA7 1" +
                                    QByteArray(148, ' '));
    EXPECT_EQ(boxes.shown, QList<RecordingMessageBoxes::Shown>{success()});
    EXPECT_TRUE(takeCalls().isEmpty()) << "a client has no engine to call";
}

TEST_F(ClientSend, twoSendsOfTheSameFieldsAreTwoFiles)
{
    send(u"912345678"_s, u"Hola"_s);
    QTest::mouseClick(control<QPushButton>("btnSend"), Qt::LeftButton);
    EXPECT_EQ(files(), (QStringList{u"sms.0"_s, u"sms.1"_s}));
    EXPECT_EQ(file(u"sms.0"_s), file(u"sms.1"_s));
    EXPECT_EQ(boxes.shown, (QList<RecordingMessageBoxes::Shown>{success(), success()}));
    EXPECT_EQ(control<QLineEdit>("txtPhone")->text(), u"912345678"_s);
    EXPECT_EQ(control<MessageEdit>("txtMessage")->text(), u"Hola"_s);
}

TEST_F(ClientSend, dateAndTimeAreNotBroughtUpToDateByASend)
{
    for (const QString &name : {u"sms.0"_s, u"sms.1"_s}) {
        now = now.addDays(1).addSecs(3601);
        send(u"912345678"_s, u"Hola"_s);
        EXPECT_EQ(file(name).mid(25, 14), moment) << "as the form was loaded";
        EXPECT_EQ(control<QDateEdit>("dtDeliveryDate")->date(), QDate(2026, 11, 20));
        EXPECT_EQ(control<QTimeEdit>("tmDeliveryDate")->time(), QTime(9, 30, 15));
    }
}

TEST_F(ClientSend, phoneIsWrittenWithItsPlusAndCutTo25Characters)
{
    const QList<std::pair<QString, QByteArray>> cases{
        {u"+34912345678"_s, "+34912345678             "},
        {u"+123456789012345678901234"_s, "+123456789012345678901234"},
        {u"+1234567890123456789012345"_s, "+123456789012345678901234"},
        {QString(40, u'7'), QByteArray(25, '7')},
    };
    auto *const phone = control<QLineEdit>("txtPhone");
    for (const auto &[typed, field] : cases) {
        phone->clear();
        QTest::keyClicks(phone, typed);
        QTest::mouseClick(control<QPushButton>("btnSend"), Qt::LeftButton);
        EXPECT_EQ(phone->text(), typed) << "it stays as it was typed";
        const QByteArray record = file(u"sms.0"_s);
        EXPECT_EQ(record.size(), 199);
        EXPECT_EQ(record.first(25), field);
        EXPECT_EQ(record.mid(25, 14), moment);
        ASSERT_TRUE(QFile::remove(queue.filePath(u"sms.0"_s)));
    }
    EXPECT_EQ(boxes.shown, QList<RecordingMessageBoxes::Shown>(4, success())) << "nothing warns";
}

TEST_F(ClientSend, emptyPhoneDoesNothing)
{
    send(QString(), u"Hola"_s);
    EXPECT_TRUE(files().isEmpty());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(ClientSend, emptyMessageAndAMomentInThePastAreWritten)
{
    control<QDateEdit>("dtDeliveryDate")->setDate(QDate(1999, 12, 31));
    control<QTimeEdit>("tmDeliveryDate")->setTime(QTime(23, 59, 58));
    send(u"1"_s, QString());
    EXPECT_EQ(file(u"sms.0"_s),
              "1" + QByteArray(24, ' ') + "31121999235958" + QByteArray(160, ' '));
}

TEST_F(ClientSend, textOf160CharactersWithALineBreakFillsTheField)
{
    const QString text = QString(79, u'a') + u"\r\n"_s + QString(79, u'b');
    send(u"1"_s, text);
    EXPECT_EQ(file(u"sms.0"_s).mid(39), text.toLatin1());
}

TEST_F(ClientSend, pastedDashIsWrittenAndTheReaderRemovesIt)
{
    auto *const phone = control<QLineEdit>("txtPhone");
    QGuiApplication::clipboard()->setText(u"912-345"_s);
    phone->paste();
    QTest::mouseClick(control<QPushButton>("btnSend"), Qt::LeftButton);
    EXPECT_EQ(file(u"sms.0"_s).first(25), "912-345" + QByteArray(18, ' '));

    RecordingEngine reader(script);
    takeCalls();
    ImportSMSFile(queue.filePath(u"sms.0"_s), reader, QString());
    EXPECT_EQ(takeCalls(), QStringList{u"AddSMS(912345||2026-11-20T09:30:15)"_s});
}

TEST_F(ClientSend, missingFolderIsToldAndNothingElseHappens)
{
    storeQueueFolder(queue.filePath(u"none"_s));
    console->ApplyOperationMode();
    send(u"1"_s, u"x"_s);
    EXPECT_EQ(boxes.shown, QList<RecordingMessageBoxes::Shown>{
                               box(GS(3760050), MessageBoxes::Icon::Exclamation)});
    EXPECT_TRUE(streams.calls.isEmpty());
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(ClientSend, fileInThePlaceOfTheFolderIsAMissingFolder)
{
    writeFile(queue.filePath(u"file"_s));
    storeQueueFolder(queue.filePath(u"file"_s));
    console->ApplyOperationMode();
    send(u"1"_s, u"x"_s);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().text, GS(3760050));
}

TEST_F(ClientSend, writersFailureIsFollowedByTheSuccessAllTheSame)
{
    const QList<std::pair<int, QString>> cases{{EACCES, u"Permission denied - 70"_s},
                                               {EEXIST, u"File already exists - 58"_s}};
    for (const auto &[error, text] : cases) {
        boxes.shown.clear();
        streams.onCreate = [number = error](const QString &) { return number; };
        send(u"1"_s, u"x"_s);
        EXPECT_EQ(boxes.shown, (QList<RecordingMessageBoxes::Shown>{
                                   box(text, MessageBoxes::Icon::Information), success()}));
    }
    EXPECT_EQ(waiting.sleeps.size(), 3) << "a client that collides waits three times";
    EXPECT_TRUE(files().isEmpty());
}

TEST_F(ClientSend, fullDiskLeavesAnEmptyFile)
{
    streams.onWrite = [](const QByteArray &) { return ENOSPC; };
    send(u"1"_s, u"x"_s);
    EXPECT_EQ(boxes.shown,
              (QList<RecordingMessageBoxes::Shown>{
                  box(u"Disk full - 61"_s, MessageBoxes::Icon::Information), success()}));
    EXPECT_EQ(file(u"sms.0"_s), QByteArray());
}

TEST_F(ClientSend, folderFullOfFilesShowsTheOverflowAndThenTheSuccess)
{
    for (int number = 0; number <= 32767; ++number)
        writeFile(queue.filePath(u"sms."_s + QString::number(number)));
    send(u"1"_s, u"x"_s);
    EXPECT_EQ(boxes.shown,
              (QList<RecordingMessageBoxes::Shown>{
                  box(u"Overflow - 6"_s, MessageBoxes::Icon::Information), success()}));
    EXPECT_EQ(files().size(), 32768);
}

} // namespace norvane
