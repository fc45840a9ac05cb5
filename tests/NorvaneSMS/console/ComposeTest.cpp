#include "NorvaneSMS/console/ConsoleFixture.h"

#include "common/NumberedFailure.h"
#include "foundation/Globals.h"
#include "foundation/ui/FatalReport.h"
#include "foundation/ui/MessageEdit.h"

#include <QDateEdit>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimeEdit>

#include <ctime>

namespace norvane {

using namespace Qt::StringLiterals;

class Compose : public ConsoleFixture
{
protected:
    void fill(const QString &phone, const QString &message)
    {
        control<QLineEdit>("txtPhone")->setText(phone);
        control<MessageEdit>("txtMessage")->setText(message);
    }
    void send() { QTest::mouseClick(control<QPushButton>("btnSend"), Qt::LeftButton); }
};

TEST_F(Compose, aSendOnAStoppedServerQueuesAndStarts)
{
    loadAsServer();
    show();
    takeCalls();
    fill(u"912345678"_s, u"Hola"_s);
    send();
    EXPECT_EQ(takeCalls(), (QStringList{u"AddSMS(912345678|Hola|2026-11-20T09:30:15)"_s,
                                        u"GetEngineStatus"_s, u"StartEngine"_s}));
}

TEST_F(Compose, aSendOnARunningServerOnlyQueues)
{
    script.status = 1;
    loadAsServer();
    show();
    takeCalls();
    fill(u"912345678"_s, u"Hola"_s);
    send();
    EXPECT_EQ(takeCalls(),
              (QStringList{u"AddSMS(912345678|Hola|2026-11-20T09:30:15)"_s, u"GetEngineStatus"_s}));
}

TEST_F(Compose, aStatusOfTwoShowsAsNotRunningAndIsNotStarted)
{
    script.status = 2;
    loadAsServer();
    show();
    EXPECT_TRUE(control("btnStart")->isEnabled());
    EXPECT_FALSE(control("btnStop")->isEnabled());
    EXPECT_EQ(text("lblEngineStatus"), GS(3760026));
    EXPECT_TRUE(control("imgEngineStatus(0)")->isVisible());
    EXPECT_FALSE(control("imgEngineStatus(1)")->isVisible());
    takeCalls();
    fill(u"912345678"_s, u"Hola"_s);
    send();
    EXPECT_EQ(takeCalls(),
              (QStringList{u"AddSMS(912345678|Hola|2026-11-20T09:30:15)"_s, u"GetEngineStatus"_s}))
        << "the status was looked at, and nothing started";
}

TEST_F(Compose, noStatusButZeroStartsTheEngine)
{
    loadAsServer();
    show();
    fill(u"1"_s, u"x"_s);
    for (const qint32 status : {1, 2, -1, 256}) {
        script.status = status;
        takeCalls();
        send();
        EXPECT_EQ(takeCalls(),
                  (QStringList{u"AddSMS(1|x|2026-11-20T09:30:15)"_s, u"GetEngineStatus"_s}))
            << status;
    }
}

TEST_F(Compose, theOperatorIsToldThatTheMessageIsQueued)
{
    loadAsServer();
    show();
    fill(u"912345678"_s, u"Hola"_s);
    send();
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first(),
              (RecordingMessageBoxes::Shown{GS(3760052), MessageBoxes::Icon::Information,
                                            MessageBoxes::Buttons::Ok, u"Norvane SMS"_s}));
}

TEST_F(Compose, anEmptyPhoneDoesNothingAtAll)
{
    for (const bool server : {true, false}) {
        storeMode(server);
        load();
        show();
        takeCalls();
        QApplication::setActiveWindow(console.get());
        fill(QString(), u"Hola"_s);
        control<QPushButton>("btnSend")->click();
        EXPECT_TRUE(control("btnSend")->hasFocus()) << "which the press gave it";
        EXPECT_TRUE(takeCalls().isEmpty());
        EXPECT_TRUE(boxes.shown.isEmpty());
    }
}

TEST_F(Compose, aPhoneOfBlanksIsNotEmptyAndGoesInAsItStands)
{
    loadAsServer();
    show();
    takeCalls();
    fill(u" 912-345 "_s, u"x"_s);
    send();
    EXPECT_EQ(takeCalls().constFirst(), u"AddSMS( 912-345 |x|2026-11-20T09:30:15)"_s);
}

TEST_F(Compose, theTextIsNormalised)
{
    loadAsServer();
    show();
    takeCalls();
    fill(u"1"_s, u"Coração à João"_s);
    send();
    EXPECT_EQ(takeCalls().constFirst(), u"AddSMS(1|Coracao a Joao|2026-11-20T09:30:15)"_s);
}

TEST_F(Compose, anEmptyMessageIsSent)
{
    loadAsServer();
    show();
    takeCalls();
    fill(u"1"_s, QString());
    send();
    EXPECT_EQ(takeCalls().constFirst(), u"AddSMS(1||2026-11-20T09:30:15)"_s);
    EXPECT_EQ(boxes.shown.size(), 1);
}

TEST_F(Compose, aMomentInThePastIsAccepted)
{
    loadAsServer();
    show();
    takeCalls();
    control<QDateEdit>("dtDeliveryDate")->setDate(QDate(1999, 12, 31));
    control<QTimeEdit>("tmDeliveryDate")->setTime(QTime(23, 59, 58));
    fill(u"1"_s, u"x"_s);
    send();
    EXPECT_EQ(takeCalls().constFirst(), u"AddSMS(1|x|1999-12-31T23:59:58)"_s);
}

TEST_F(Compose, dateAndTimeCantBeEmptied)
{
    loadAsServer();
    show();
    QApplication::setActiveWindow(console.get());
    takeCalls();
    for (const char *const name : {"dtDeliveryDate", "tmDeliveryDate"}) {
        auto *const box = control<QDateTimeEdit>(name);
        for (const Qt::Key key : {Qt::Key_Delete, Qt::Key_Backspace}) {
            box->setFocus();
            for (int section = 0; section < box->sectionCount(); ++section) {
                box->setSelectedSection(box->sectionAt(section));
                QTest::keyClick(box, key);
            }
            box->selectAll();
            QTest::keyClick(box, key);
            control("txtMessage")->setFocus();
            EXPECT_TRUE(box->dateTime().isValid()) << name;
            EXPECT_EQ(box->text(), box->dateTime().toString(box->displayFormat())) << name;
        }
    }
    const QString moment = control<QDateEdit>("dtDeliveryDate")->date().toString(Qt::ISODate) +
                           u'T' +
                           control<QTimeEdit>("tmDeliveryDate")->time().toString(u"HH:mm:ss"_s);
    fill(u"1"_s, u"x"_s);
    send();
    EXPECT_EQ(takeCalls().constFirst(), u"AddSMS(1|x|%1)"_s.arg(moment));
}

TEST_F(Compose, aMomentThatAClockChangeSkipsIsHandedOnAsItStands)
{
    qputenv("TZ", "Europe/Madrid");
    tzset();
    loadAsServer();
    show();
    takeCalls();
    control<QDateEdit>("dtDeliveryDate")->setDate(QDate(2026, 3, 29));
    control<QTimeEdit>("tmDeliveryDate")->setTime(QTime(2, 30));
    fill(u"1"_s, u"x"_s);
    send();
    EXPECT_EQ(takeCalls().constFirst(), u"AddSMS(1|x|2026-03-29T02:30:00)"_s);
    qunsetenv("TZ");
    tzset();
}

TEST_F(Compose, allFieldsStayAsTheyWereAfterASend)
{
    loadAsServer();
    show();
    fill(u"912345678"_s, u"Hola"_s);
    now = now.addSecs(3600);
    send();
    EXPECT_EQ(control<QLineEdit>("txtPhone")->text(), u"912345678"_s);
    EXPECT_EQ(control<MessageEdit>("txtMessage")->text(), u"Hola"_s);
    EXPECT_EQ(control<QTimeEdit>("tmDeliveryDate")->time(), QTime(9, 30, 15));
    EXPECT_EQ(control<QDateEdit>("dtDeliveryDate")->date(), QDate(2026, 11, 20));
}

TEST_F(Compose, anEngineCallThatFailsAsACallIsFatal)
{
    loadAsServer();
    show();
    int exitCode = 0;
    const auto previous = FatalReport::setTerminate([&](int code) { exitCode = code; });
    script.failingCalls.enqueue(4); // three calls were made at load
    fill(u"912345678"_s, u"Hola"_s);
    send();
    FatalReport::setTerminate(previous);
    EXPECT_EQ(exitCode, 1);
    ASSERT_EQ(boxes.shown.size(), 1); // the failure's, and no success after it
    EXPECT_EQ(boxes.shown.first().icon, MessageBoxes::Icon::Critical);
    EXPECT_TRUE(boxes.shown.first().text.endsWith(u" - 462"_s));
}

TEST_F(Compose, anEngineThatFailsToStartShowsNoSuccess)
{
    loadAsServer();
    show();
    int exitCode = 0;
    const auto previous = FatalReport::setTerminate([&](int code) { exitCode = code; });
    script.failingCalls.enqueue(6); // the start: three calls at load, AddSMS, GetEngineStatus
    fill(u"912345678"_s, u"Hola"_s);
    send();
    FatalReport::setTerminate(previous);
    EXPECT_EQ(exitCode, 1);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().icon, MessageBoxes::Icon::Critical);
}

TEST_F(Compose, theCounterShowsLengthAndLimit)
{
    loadAsServer();
    control<MessageEdit>("txtMessage")->setText(u"Hola"_s);
    EXPECT_EQ(text("lblSMSChars"), GS(3760027, 4, 160));
}

TEST_F(Compose, deletingTheWholeTextSetsTheCounterToZero)
{
    loadAsServer();
    show();
    auto *const message = control<MessageEdit>("txtMessage");
    message->setText(u"Hola"_s);
    message->selectAll();
    QTest::keyClick(message, Qt::Key_Delete);
    EXPECT_EQ(text("lblSMSChars"), GS(3760027, 0, 160));
}

TEST_F(Compose, aTextOf160CharactersIsShownWithTheLimitAndAFurtherKeyChangesNothing)
{
    loadAsServer();
    show();
    auto *const message = control<MessageEdit>("txtMessage");
    message->setText(QString(160, u'a'));
    EXPECT_EQ(text("lblSMSChars"), GS(3760027, 160, 160));
    message->moveCursor(QTextCursor::End);
    QTest::keyClick(message, Qt::Key_B);
    EXPECT_EQ(message->text(), QString(160, u'a'));
    EXPECT_EQ(text("lblSMSChars"), GS(3760027, 160, 160));
}

TEST_F(Compose, typing912Blank345Gives912345)
{
    loadAsServer();
    show();
    auto *const phone = control<QLineEdit>("txtPhone");
    QTest::keyClicks(phone, u"912 345"_s);
    EXPECT_EQ(phone->text(), u"912345"_s);
}

} // namespace norvane
