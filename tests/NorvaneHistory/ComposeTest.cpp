#include "NorvaneHistory/HistoryFixture.h"

#include "foundation/Normalisation.h"
#include "foundation/ui/MessageEdit.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class HistoryComposeTest : public HistoryFixture
{
protected:
    void SetUp() override
    {
        source.addRow(MessageState::Delivered, u"+34600111222"_s, u"question"_s);
        open();
        choose(messages(), 0);
    }

    /// Presses the button for an answer and does that in the sheet.
    void answer(const std::function<void(QWidget &)> &act)
    {
        bool wasOpen = false;
        QTimer::singleShot(0, window.get(), [&] {
            QWidget *const sheet = QApplication::activeModalWidget();
            ASSERT_NE(sheet, nullptr);
            wasOpen = true;
            act(*sheet);
        });
        controlOf<QPushButton>(*tabOf(messages()), "btnAnswer")->click();
        EXPECT_TRUE(wasOpen);
    }

    static MessageEdit *textOf(QWidget &sheet)
    {
        return controlOf<MessageEdit>(sheet, "txtMessage");
    }
    static void press(QWidget &sheet, const char *button)
    {
        controlOf<QPushButton>(sheet, button)->click();
    }
};

TEST_F(HistoryComposeTest, theNumberStandsInTheSheetAndTheAnswerIsNormalisedAsTheConsoleDoes)
{
    answer([&](QWidget &sheet) {
        EXPECT_EQ(controlOf<QLineEdit>(sheet, "txtPhone")->text(), u"+34600111222"_s);
        EXPECT_FALSE(controlOf<QPushButton>(sheet, "btnSend")->isEnabled());
        textOf(sheet)->setText(u"Sí, mañana € 10"_s);
        press(sheet, "btnSend");
    });
    ASSERT_EQ(source.sent.size(), 1);
    EXPECT_EQ(source.sent.at(0).phone, u"+34600111222"_s);
    EXPECT_EQ(source.sent.at(0).text, NormalizeSMSText(false, u"Sí, mañana € 10"_s));
    EXPECT_EQ(boxes.shown.at(0).text, u"¿Enviar este mensaje a +34600111222?"_s);
}

TEST_F(HistoryComposeTest, theAnswerHasTheConsolesLimit)
{
    answer([&](QWidget &sheet) {
        textOf(sheet)->setText(QString(500, u'x'));
        EXPECT_EQ(textOf(sheet)->textLength(), 160);
        EXPECT_EQ(controlOf<QLabel>(sheet, "lblLength")->text(), u"Caracteres: 160 / 160"_s);
        press(sheet, "btnCancel");
    });
    EXPECT_TRUE(source.sent.isEmpty());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(HistoryComposeTest, onlyWhatANumberIsMadeOfIsTypedIntoIt)
{
    answer([&](QWidget &sheet) {
        auto *const phone = controlOf<QLineEdit>(sheet, "txtPhone");
        phone->clear();
        QTest::keyClicks(phone, u"6a0-0"_s);
        EXPECT_EQ(phone->text(), u"600"_s);
        press(sheet, "btnCancel");
    });
}

TEST_F(HistoryComposeTest, nothingIsSentWithoutANumber)
{
    answer([&](QWidget &sheet) {
        textOf(sheet)->setText(u"x"_s);
        EXPECT_TRUE(controlOf<QPushButton>(sheet, "btnSend")->isEnabled());
        controlOf<QLineEdit>(sheet, "txtPhone")->setText(u"  "_s);
        EXPECT_FALSE(controlOf<QPushButton>(sheet, "btnSend")->isEnabled());
        press(sheet, "btnCancel");
    });
}

TEST_F(HistoryComposeTest, anAnswerThatIsNotTakenIsOpenedAgain)
{
    QStringList kept;
    boxes.whileShown = [&] {
        if (boxes.shown.size() != 2) // the first one asks whether to send
            return;
        QTimer::singleShot(0, window.get(), [&] {
            QWidget *const sheet = QApplication::activeModalWidget();
            ASSERT_NE(sheet, nullptr);
            kept << controlOf<QLineEdit>(*sheet, "txtPhone")->text() << textOf(*sheet)->text();
            press(*sheet, "btnCancel");
        });
    };
    source.isAway = true;
    answer([&](QWidget &sheet) {
        controlOf<QLineEdit>(sheet, "txtPhone")->setText(u"600999"_s);
        textOf(sheet)->setText(u"una respuesta larga, mañana"_s);
        press(sheet, "btnSend");
    });
    EXPECT_TRUE(waitUntil([&] { return !kept.isEmpty(); }));
    EXPECT_EQ(kept, (QStringList{u"600999"_s, u"una respuesta larga, mañana"_s}));
    ASSERT_EQ(boxes.shown.size(), 2);
    EXPECT_EQ(boxes.shown.at(1).text, u"the engine is away"_s);
}

TEST_F(HistoryComposeTest, aNoGoesBackToWhatWasWritten)
{
    boxes.yesNoAnswer = MessageBoxes::Answer::No;
    QString kept;
    boxes.whileShown = [&] {
        QTimer::singleShot(0, window.get(), [&] {
            QWidget *const sheet = QApplication::activeModalWidget();
            ASSERT_NE(sheet, nullptr);
            kept = textOf(*sheet)->text();
            press(*sheet, "btnCancel");
        });
    };
    answer([&](QWidget &sheet) {
        textOf(sheet)->setText(u"a long answer"_s);
        press(sheet, "btnSend");
    });
    EXPECT_EQ(kept, u"a long answer"_s);
    EXPECT_TRUE(source.sent.isEmpty());
    EXPECT_EQ(boxes.shown.size(), 1);
}

} // namespace

} // namespace norvane
