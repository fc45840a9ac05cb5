#include "NorvaneSMS/console/MessageEdit.h"

#include "support/Allocations.h"

#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

void paste(MessageEdit &box, const QString &text)
{
    QApplication::clipboard()->setText(text);
    box.paste();
}

} // namespace

TEST(MessageEdit, aLineBreakCountsAsTwoCharacters)
{
    MessageEdit box;
    QTest::keyClicks(&box, QStringLiteral("ab"));
    QTest::keyClick(&box, Qt::Key_Return);
    QTest::keyClicks(&box, QStringLiteral("c"));
    EXPECT_EQ(box.text(), QStringLiteral("ab\r\nc"));
    EXPECT_EQ(box.textLength(), 5);
}

TEST(MessageEdit, aShiftedLineBreakIsOneToo)
{
    MessageEdit box;
    QTest::keyClicks(&box, QStringLiteral("a"));
    QTest::keyClick(&box, Qt::Key_Return, Qt::ShiftModifier);
    QTest::keyClicks(&box, QStringLiteral("b"));
    EXPECT_EQ(box.text(), QStringLiteral("a\r\nb"));
}

TEST(MessageEdit, typingStopsAt160)
{
    MessageEdit box;
    QTest::keyClicks(&box, QString(170, u'x'));
    EXPECT_EQ(box.text(), QString(160, u'x'));
}

TEST(MessageEdit, aLineBreakNeedsRoomForTwo)
{
    MessageEdit box;
    box.setText(QString(159, u'x'));
    box.moveCursor(QTextCursor::End);
    QTest::keyClick(&box, Qt::Key_Return);
    EXPECT_EQ(box.textLength(), 159);
}

TEST(MessageEdit, aPastedTextIsCutToWhatFits)
{
    MessageEdit box;
    box.setText(QString(150, u'x'));
    box.moveCursor(QTextCursor::End);
    paste(box, QString(20, u'y'));
    EXPECT_EQ(box.text(), QString(150, u'x') + QString(10, u'y'));
}

TEST(MessageEdit, aPasteInTheMiddleLosesItsOwnEndAndNotTheTextsEnd)
{
    MessageEdit box;
    box.setText(QString(155, u'x'));
    box.moveCursor(QTextCursor::Start);
    paste(box, QStringLiteral("abcdefgh"));
    EXPECT_EQ(box.text(), QStringLiteral("abcde") + QString(155, u'x'));
}

TEST(MessageEdit, aPasteThatBeginsLikeTheTextAtTheCaretDoesNotDamageIt)
{
    MessageEdit box;
    const QString before = QStringLiteral("Hola amigo ") + QString(144, u'z');
    box.setText(before);
    box.moveCursor(QTextCursor::Start);
    paste(box, QStringLiteral("Hola a todos "));
    EXPECT_EQ(box.text(), QStringLiteral("Hola ") + before);
}

TEST(MessageEdit, aHugePasteIsTakenInAtOnce)
{
    MessageEdit box;
    const QString text = QStringLiteral("a line of a log file\n").repeated(50'000);
    const Allocations made = allocationsOf([&] { paste(box, text); });
    EXPECT_LT(made.count, 10'000) << "what doesn't fit is cut off before it is laid out";
    EXPECT_LE(box.textLength(), 160);
    EXPECT_GE(box.textLength(), 159);
}

TEST(MessageEdit, aDroppedTextIsHeldToTheLimit)
{
    MessageEdit box;
    box.resize(200, 100);
    box.setText(QString(158, u'x'));
    QMimeData dropped;
    dropped.setText(QStringLiteral("abcdef"));
    const QPointF place(3, 3);
    QDragEnterEvent enter(place.toPoint(), Qt::CopyAction, &dropped, Qt::LeftButton,
                          Qt::NoModifier);
    QApplication::sendEvent(box.viewport(), &enter);
    QDropEvent drop(place, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(box.viewport(), &drop);
    EXPECT_EQ(box.textLength(), 160);
    EXPECT_TRUE(box.text().contains(QStringLiteral("ab")));
}

TEST(MessageEdit, aPasteIntoAFullTextChangesNothing)
{
    MessageEdit box;
    box.setText(QString(160, u'x'));
    QSignalSpy changed(&box, &MessageEdit::changed);
    box.moveCursor(QTextCursor::Start);
    paste(box, QStringLiteral("abc"));
    EXPECT_EQ(box.text(), QString(160, u'x'));
    EXPECT_EQ(changed.count(), 0);
}

TEST(MessageEdit, aSelectionMakesRoomForWhatReplacesIt)
{
    MessageEdit box;
    box.setText(QString(160, u'x'));
    box.selectAll();
    QTest::keyClick(&box, Qt::Key_A);
    EXPECT_EQ(box.text(), QStringLiteral("a"));
}

TEST(MessageEdit, aSurrogatePairIsNeverCutInHalf)
{
    MessageEdit box;
    box.setText(QString(159, u'x'));
    box.moveCursor(QTextCursor::End);
    paste(box, QStringLiteral("\U0001F600"));
    EXPECT_EQ(box.text(), QString(159, u'x'));
}

TEST(MessageEdit, pastedLineBreaksOfAnyKindCountAsTwo)
{
    MessageEdit box;
    paste(box, QStringLiteral("a\nb\r\nc"));
    EXPECT_EQ(box.text(), QStringLiteral("a\r\nb\r\nc"));
    EXPECT_EQ(box.textLength(), 7);
}

TEST(MessageEdit, aTextOfManyLinesIsHeldToTheLimitToo)
{
    MessageEdit box;
    paste(box, QStringLiteral("a\n").repeated(100));
    EXPECT_LE(box.textLength(), 160);
    EXPECT_GE(box.textLength(), 159);
}

TEST(MessageEdit, whatAnInputMethodCommitsIsHeldToTheLimitToo)
{
    MessageEdit box;
    box.setText(QString(158, u'x'));
    box.moveCursor(QTextCursor::End);
    QInputMethodEvent typed;
    typed.setCommitString(QStringLiteral("abc"));
    QApplication::sendEvent(&box, &typed);
    EXPECT_EQ(box.text(), QString(158, u'x') + QStringLiteral("ab"));
}

TEST(MessageEdit, aLineBreakOfAnInputMethodNeedsRoomForTwo)
{
    for (const QString &lineBreak :
         {QStringLiteral("\r"), QStringLiteral("\n"), QStringLiteral("\r\n")}) {
        MessageEdit box;
        box.setText(QString(158, u'x'));
        box.moveCursor(QTextCursor::End);
        for (const int length : {160, 160}) {
            QInputMethodEvent typed;
            typed.setCommitString(lineBreak);
            QApplication::sendEvent(&box, &typed);
            EXPECT_EQ(box.textLength(), length);
        }
        box.setText(QString(159, u'x'));
        box.moveCursor(QTextCursor::End);
        QInputMethodEvent typed;
        typed.setCommitString(lineBreak);
        QApplication::sendEvent(&box, &typed);
        EXPECT_EQ(box.textLength(), 159);
    }
}

TEST(MessageEdit, whatTheDocumentTakesForALineBreakNeedsRoomForTwo)
{
    for (const char16_t character : {u'\u2028', u'\u2029', u'\uFDD0', u'\uFDD1'}) {
        MessageEdit box;
        box.setText(QString(159, u'x'));
        box.moveCursor(QTextCursor::End);
        paste(box, QChar(character));
        EXPECT_EQ(box.textLength(), 159) << std::hex << int(character);
        QKeyEvent key(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, QChar(character));
        QApplication::sendEvent(&box, &key);
        EXPECT_EQ(box.textLength(), 159) << std::hex << int(character);
    }
}

TEST(MessageEdit, noBreakSpacesStayWhatTheyAre)
{
    MessageEdit box;
    paste(box, QStringLiteral("a\u00A0b"));
    EXPECT_EQ(box.text(), QStringLiteral("a\u00A0b"));
}

TEST(MessageEdit, aPasteThatWasCutIsUndoneInOneStep)
{
    MessageEdit box;
    QTest::keyClicks(&box, QStringLiteral("x"));
    paste(box, QString(200, u'y'));
    box.undo();
    EXPECT_EQ(box.text(), QStringLiteral("x"));
}

TEST(MessageEdit, tabMovesTheFocusOn)
{
    MessageEdit box;
    QTest::keyClick(&box, Qt::Key_Tab);
    EXPECT_EQ(box.text(), QString());
}
