#include "foundation/ui/MessageEdit.h"

#include "support/Allocations.h"

#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

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
    QTest::keyClicks(&box, u"ab"_s);
    QTest::keyClick(&box, Qt::Key_Return);
    QTest::keyClicks(&box, u"c"_s);
    EXPECT_EQ(box.text(), u"ab\r\nc"_s);
    EXPECT_EQ(box.textLength(), 5);
}

TEST(MessageEdit, aShiftedLineBreakIsOneToo)
{
    MessageEdit box;
    QTest::keyClicks(&box, u"a"_s);
    QTest::keyClick(&box, Qt::Key_Return, Qt::ShiftModifier);
    QTest::keyClicks(&box, u"b"_s);
    EXPECT_EQ(box.text(), u"a\r\nb"_s);
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
    paste(box, u"abcdefgh"_s);
    EXPECT_EQ(box.text(), u"abcde"_s + QString(155, u'x'));
}

TEST(MessageEdit, aPasteThatBeginsLikeTheTextAtTheCaretDoesNotDamageIt)
{
    MessageEdit box;
    const QString before = u"Hola amigo "_s + QString(144, u'z');
    box.setText(before);
    box.moveCursor(QTextCursor::Start);
    paste(box, u"Hola a todos "_s);
    EXPECT_EQ(box.text(), u"Hola "_s + before);
}

TEST(MessageEdit, aHugePasteIsTakenInAtOnce)
{
    MessageEdit box;
    const QString text = u"a line of a log file\n"_s.repeated(50'000);
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
    dropped.setText(u"abcdef"_s);
    const QPointF place(3, 3);
    QDragEnterEvent enter(place.toPoint(), Qt::CopyAction, &dropped, Qt::LeftButton,
                          Qt::NoModifier);
    QApplication::sendEvent(box.viewport(), &enter);
    QDropEvent drop(place, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(box.viewport(), &drop);
    EXPECT_EQ(box.textLength(), 160);
    EXPECT_TRUE(box.text().contains(u"ab"_s));
}

TEST(MessageEdit, aPasteIntoAFullTextChangesNothing)
{
    MessageEdit box;
    box.setText(QString(160, u'x'));
    QSignalSpy changed(&box, &MessageEdit::changed);
    box.moveCursor(QTextCursor::Start);
    paste(box, u"abc"_s);
    EXPECT_EQ(box.text(), QString(160, u'x'));
    EXPECT_EQ(changed.count(), 0);
}

TEST(MessageEdit, aSelectionMakesRoomForWhatReplacesIt)
{
    MessageEdit box;
    box.setText(QString(160, u'x'));
    box.selectAll();
    QTest::keyClick(&box, Qt::Key_A);
    EXPECT_EQ(box.text(), u"a"_s);
}

TEST(MessageEdit, aSurrogatePairIsNeverCutInHalf)
{
    MessageEdit box;
    box.setText(QString(159, u'x'));
    box.moveCursor(QTextCursor::End);
    paste(box, u"\U0001F600"_s);
    EXPECT_EQ(box.text(), QString(159, u'x'));
}

TEST(MessageEdit, pastedLineBreaksOfAnyKindCountAsTwo)
{
    MessageEdit box;
    paste(box, u"a\nb\r\nc"_s);
    EXPECT_EQ(box.text(), u"a\r\nb\r\nc"_s);
    EXPECT_EQ(box.textLength(), 7);
}

TEST(MessageEdit, aTextOfManyLinesIsHeldToTheLimitToo)
{
    MessageEdit box;
    paste(box, u"a\n"_s.repeated(100));
    EXPECT_LE(box.textLength(), 160);
    EXPECT_GE(box.textLength(), 159);
}

TEST(MessageEdit, whatAnInputMethodCommitsIsHeldToTheLimitToo)
{
    MessageEdit box;
    box.setText(QString(158, u'x'));
    box.moveCursor(QTextCursor::End);
    QInputMethodEvent typed;
    typed.setCommitString(u"abc"_s);
    QApplication::sendEvent(&box, &typed);
    EXPECT_EQ(box.text(), QString(158, u'x') + u"ab"_s);
}

TEST(MessageEdit, aLineBreakOfAnInputMethodNeedsRoomForTwo)
{
    for (const QString &lineBreak : {u"\r"_s, u"\n"_s, u"\r\n"_s}) {
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
    paste(box, u"a\u00A0b"_s);
    EXPECT_EQ(box.text(), u"a\u00A0b"_s);
}

TEST(MessageEdit, aPasteThatWasCutIsUndoneInOneStep)
{
    MessageEdit box;
    QTest::keyClicks(&box, u"x"_s);
    paste(box, QString(200, u'y'));
    box.undo();
    EXPECT_EQ(box.text(), u"x"_s);
}

TEST(MessageEdit, tabMovesTheFocusOn)
{
    MessageEdit box;
    QTest::keyClick(&box, Qt::Key_Tab);
    EXPECT_EQ(box.text(), QString());
}

} // namespace norvane
