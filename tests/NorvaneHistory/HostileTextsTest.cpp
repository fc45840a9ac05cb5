#include "NorvaneHistory/HistoryFixture.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QStringList hostileTexts()
{
    return {u"<h1>big</h1><img src=x>"_s,
            u"\u202Egnp.exe\u202C \u2067abc\u2069"_s,
            u"a\u200Bb\u200Dc\uFEFFd"_s,
            QString(5000, u'W'),
            u"a"_s + QChar(u'\0') + u"b"_s,
            QString(QChar(0xD800)) + u"x"_s,
            u"&amp; %1 %2 &x"_s,
            u"line\r\nline\u2028line"_s,
            QString(300, QChar(0x0301))};
}

class HistoryHostileTextsTest : public HistoryFixture
{
protected:
    void SetUp() override
    {
        for (const QString &text : hostileTexts()) {
            const HistoryRow row = source.addRow(MessageState::Failed, text, text);
            source.steps.insert(row.id, {{text, HistoryStep::Sent, 0, 1, text}});
            source.inbox.prepend({row.id, text, text, text, text, false});
        }
        open();
    }
};

TEST_F(HistoryHostileTextsTest, areShownAsTextInTheListAndInFull)
{
    const QStringList texts = hostileTexts();
    for (int row = 0; row < texts.size(); ++row) {
        const QString &text = texts.at(texts.size() - 1 - row);
        choose(messages(), row);
        const QWidget &tab = *tabOf(messages());
        QString shown = controlOf<QPlainTextEdit>(tab, "txtMessage")->document()->toRawText();
        EXPECT_GE(shown.size(), text.size() - 1) << row; // CR LF is one break
        EXPECT_EQ(shown.left(1), text.left(1)) << row;
        EXPECT_EQ(controlOf<QLabel>(tab, "lblMessage")->textFormat(), Qt::PlainText);
        const QString inList = cell(*messages(), row, 2);
        EXPECT_FALSE(inList.contains(u'\n') || inList.contains(QChar::LineSeparator)) << row;
        EXPECT_EQ(inList.left(1), text.left(1)) << row;
    }
    EXPECT_FALSE(window->grab().isNull());
}

TEST_F(HistoryHostileTextsTest, standInStepsAndReceivedMessagesAsText)
{
    for (int row = 0; row < source.rows.size(); ++row) {
        choose(messages(), row);
        auto *const steps = control<QTableWidget>("tblSteps");
        ASSERT_TRUE(waitUntil([&] { return steps->rowCount() >= 1; })) << row;
        EXPECT_LT(steps->item(0, 2)->text().size(), 1000) << row;
    }
    showTab(1);
    for (int row = 0; row < source.inbox.size(); ++row)
        choose(inbox(), row);
    EXPECT_EQ(source.markedRead.size(), hostileTexts().size());
    EXPECT_FALSE(window->grab().isNull());
}

TEST_F(HistoryHostileTextsTest, areAskedAboutOnOneLine)
{
    for (int row = 0; row < source.rows.size(); ++row) {
        choose(messages(), row);
        controlOf<QPushButton>(*tabOf(messages()), "btnSendAgain")->click();
    }
    ASSERT_EQ(boxes.shown.size(), source.rows.size());
    for (const auto &box : boxes.shown)
        EXPECT_LT(box.text.size(), 500);
    EXPECT_EQ(source.sent.size(), source.rows.size());
}

TEST_F(HistoryHostileTextsTest, aNameDoesNotTurnTheSentenceAroundIt)
{
    const QString turned = u"\u202E\u2069\u05D0b"_s;
    source.addRow(MessageState::Failed, turned, u"x"_s);
    source.inbox.prepend({1000, u"2030-01-01T00:00:00"_s, {}, turned, u"x"_s, true});
    source.connectToEngine();
    ASSERT_TRUE(
        waitUntil([&] { return phones().value(0) == turned && cell(*inbox(), 0, 1) == turned; }));
    choose(messages(), 0);
    EXPECT_EQ(controlOf<QLabel>(*tabOf(messages()), "lblMessage")->text(),
              u"\u2068\u05D0b\u2069 · Fallido"_s);
    controlOf<QPushButton>(*tabOf(messages()), "btnSendAgain")->click();
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.at(0).text, u"¿Enviar de nuevo el mensaje a \u2068\u05D0b\u2069?"_s);
    EXPECT_EQ(source.sent.value(0).phone, turned);
    choose(inbox(), 0);
    EXPECT_TRUE(controlOf<QLabel>(*tabOf(inbox()), "lblMessage")
                    ->text()
                    .startsWith(u"\u2068\u05D0b\u2069 · "_s));
}

TEST_F(HistoryHostileTextsTest, aSignOfAPlaceholderInAPhoneIsNotFilled)
{
    const auto row = std::find_if(source.rows.cbegin(), source.rows.cend(),
                                  [](const auto &each) { return each.phone.startsWith(u"&amp;"); });
    ASSERT_NE(row, source.rows.cend());
    choose(messages(), static_cast<int>(row - source.rows.cbegin()));
    EXPECT_EQ(controlOf<QLabel>(*tabOf(messages()), "lblMessage")->text(),
              u"&amp; %1 %2 &x · Fallido"_s);
}

} // namespace

} // namespace norvane
