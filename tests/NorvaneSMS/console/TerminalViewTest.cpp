#include "NorvaneSMS/console/TerminalView.h"

#include "support/Allocations.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QInputMethodEvent>
#include <QMimeData>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Counts the keys that its children let through.
class KeysOfTheWindow : public QWidget
{
public:
    int keys = 0;

protected:
    void keyPressEvent(QKeyEvent *) override { ++keys; }
    void keyReleaseEvent(QKeyEvent *) override { ++keys; }
};

} // namespace

TEST(TerminalView, everyKeyIsSwallowed)
{
    KeysOfTheWindow window;
    auto *const terminal = new TerminalView(&window);
    terminal->resize(200, 100);
    window.show();
    for (int i = 0; i < 100; ++i)
        terminal->appendLine(QString::number(i));
    const QString shown = terminal->toPlainText();
    const int line = terminal->verticalScrollBar()->value();
    ASSERT_GT(line, 0);
    QApplication::clipboard()->setText(u"pasted"_s);

    for (const Qt::Key key : {Qt::Key_A, Qt::Key_1, Qt::Key_Space, Qt::Key_Delete,
                              Qt::Key_Backspace, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape,
                              Qt::Key_Home, Qt::Key_Up, Qt::Key_Left, Qt::Key_PageUp, Qt::Key_F4})
        QTest::keyClick(terminal, key);
    for (const Qt::Key key : {Qt::Key_A, Qt::Key_C, Qt::Key_V, Qt::Key_X, Qt::Key_Home})
        QTest::keyClick(terminal, key, Qt::ControlModifier);
    QTest::keyClick(terminal, Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(window.keys, 0) << "none goes on to the window either";
    EXPECT_EQ(terminal->toPlainText(), shown);
    EXPECT_FALSE(terminal->textCursor().hasSelection());
    EXPECT_TRUE(terminal->textCursor().atEnd());
    EXPECT_EQ(terminal->verticalScrollBar()->value(), line);
    EXPECT_EQ(QApplication::clipboard()->text(), u"pasted"_s);
}

TEST(TerminalView, neitherPastingNorDroppingNorAnInputMethodWritesToIt)
{
    TerminalView terminal;
    terminal.appendLine(u"line"_s);
    terminal.resize(200, 100);
    terminal.show();
    QMimeData text;
    text.setText(u"foreign"_s);
    QApplication::clipboard()->setText(text.text());
    terminal.paste();
    EXPECT_EQ(terminal.toPlainText(), u"line\n"_s) << "pasted";
    QInputMethodEvent typed;
    typed.setCommitString(text.text());
    QApplication::sendEvent(&terminal, &typed);
    EXPECT_FALSE(terminal.testAttribute(Qt::WA_InputMethodEnabled));
    EXPECT_EQ(terminal.toPlainText(), u"line\n"_s) << "typed";
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(terminal.viewport(), &enter);
    QDropEvent drop({5, 5}, Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(terminal.viewport(), &drop);
    EXPECT_EQ(terminal.toPlainText(), u"line\n"_s) << "dropped";
    terminal.selectAll();
    terminal.cut();
    EXPECT_EQ(terminal.toPlainText(), u"line\n"_s);
    EXPECT_EQ(terminal.text(), u"line\r\n"_s);
}

TEST(TerminalView, accessKeysReachTheirButtonsAndNoOtherShortcutDoes)
{
    QWidget window;
    auto *const layout = new QVBoxLayout(&window);
    auto *const terminal = new TerminalView;
    auto *const button = new QPushButton(u"&Go"_s);
    auto *const other = new QPushButton;
    other->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_G));
    for (QWidget *const control : std::initializer_list<QWidget *>{terminal, button, other})
        layout->addWidget(control);
    int pressed = 0;
    QObject::connect(button, &QPushButton::clicked, &window, [&] { ++pressed; });
    QObject::connect(other, &QPushButton::clicked, &window, [&] { pressed += 100; });
    window.show();
    QApplication::setActiveWindow(&window);
    terminal->setFocus();
    QTest::keyClick(terminal, Qt::Key_G, Qt::ControlModifier);
    QTest::keyClick(terminal, Qt::Key_G);
    EXPECT_TRUE(terminal->hasFocus());
    QTest::keyClick(terminal, Qt::Key_G, Qt::AltModifier);
    EXPECT_TRUE(waitUntil([&] { return pressed > 0; }));
    EXPECT_EQ(pressed, 1);
    EXPECT_EQ(terminal->text(), QString());
}

TEST(TerminalView, altWithAnotherModifierIsNoAccessKey)
{
    QWidget window;
    auto *const layout = new QVBoxLayout(&window);
    auto *const terminal = new TerminalView;
    layout->addWidget(terminal);
    int pressed = 0;
    for (const Qt::KeyboardModifier other : {Qt::ControlModifier, Qt::MetaModifier}) {
        auto *const button = new QPushButton;
        button->setShortcut(QKeyCombination(Qt::AltModifier | other, Qt::Key_G));
        QObject::connect(button, &QPushButton::pressed, &window, [&] { ++pressed; });
        layout->addWidget(button);
    }
    window.show();
    QApplication::setActiveWindow(&window);
    terminal->setFocus();
    QTest::keyClick(terminal, Qt::Key_G, Qt::AltModifier | Qt::ControlModifier);
    QTest::keyClick(terminal, Qt::Key_G, Qt::AltModifier | Qt::MetaModifier);
    QCoreApplication::processEvents();
    EXPECT_EQ(pressed, 0);
    EXPECT_TRUE(terminal->hasFocus());
}

TEST(TerminalView, tabLetsTheFocusLeave)
{
    QWidget window;
    auto *const layout = new QVBoxLayout(&window);
    auto *const terminal = new TerminalView;
    auto *const next = new QPushButton;
    layout->addWidget(terminal);
    layout->addWidget(next);
    window.show();
    QApplication::setActiveWindow(&window);
    terminal->setFocus();
    QTest::keyClick(terminal, Qt::Key_Tab);
    EXPECT_TRUE(next->hasFocus());
    QTest::keyClick(next, Qt::Key_Backtab);
    EXPECT_TRUE(terminal->hasFocus());
}

TEST(TerminalView, theFaceKeepsItsSizeUnderControlAndWheel)
{
    TerminalView terminal;
    terminal.show();
    const qreal before = terminal.font().pointSizeF();
    QWheelEvent turn({5, 5}, {5, 5}, {}, {0, 240}, Qt::NoButton, Qt::ControlModifier,
                     Qt::NoScrollPhase, false);
    QApplication::sendEvent(terminal.viewport(), &turn);
    EXPECT_DOUBLE_EQ(terminal.font().pointSizeF(), before);
}

TEST(TerminalView, theCaretGoesBehindTheLastCharacter)
{
    TerminalView terminal;
    terminal.appendLine(u"a"_s);
    terminal.moveCursor(QTextCursor::Start);
    terminal.appendLine(u"b"_s);
    EXPECT_TRUE(terminal.textCursor().atEnd());
    EXPECT_EQ(terminal.text(), u"a\r\nb\r\n"_s);
}

TEST(TerminalView, theNewestLineIsInView)
{
    TerminalView terminal;
    terminal.resize(200, 100);
    terminal.show();
    for (int i = 0; i < 200; ++i)
        terminal.appendLine(QString::number(i));
    EXPECT_TRUE(terminal.viewport()->rect().intersects(terminal.cursorRect()));
}

TEST(TerminalView, aHundredThousandLinesDontSlowItDown)
{
    TerminalView terminal;
    terminal.resize(530, 117);
    terminal.show();
    const auto append = [&terminal](int lines) {
        return allocationsOf([&] {
            for (int i = 0; i < lines; ++i)
                terminal.appendLine(u"a line of the log"_s);
        });
    };
    const Allocations first = append(2000);
    append(96'000);
    const Allocations last = append(2000);
    EXPECT_LT(last.count, 2 * first.count);
    // What grows does so at times, and then by a part of what it is.
    EXPECT_LT(last.bytes, 2 * first.bytes + 100 * terminal.text().size());
    EXPECT_EQ(terminal.text().count(u"\r\n"_s), 100'000);
    EXPECT_EQ(terminal.blockCount(), 100'001);
    EXPECT_TRUE(terminal.textCursor().atEnd());
}

TEST(TerminalView, aLineIsAddedWhereTheCaretStandsNowhereElse)
{
    TerminalView terminal;
    terminal.appendLine(u"first"_s);
    terminal.selectAll(); // a selection of the operator's is not overwritten
    terminal.appendLine(u"second"_s);
    EXPECT_EQ(terminal.toPlainText(), u"first\nsecond\n"_s);
}

TEST(TerminalView, textCanBeSelectedWithTheMouseAndCopied)
{
    TerminalView terminal;
    terminal.resize(300, 100);
    terminal.setText(u"word\r\n"_s);
    terminal.show();
    const QPoint inWord =
        terminal.cursorRect(QTextCursor(terminal.document())).center() + QPoint(5, 0);
    QTest::mouseDClick(terminal.viewport(), Qt::LeftButton, Qt::NoModifier, inWord);
    EXPECT_EQ(terminal.textCursor().selectedText(), u"word"_s);
    terminal.copy();
    EXPECT_EQ(QApplication::clipboard()->text(), u"word"_s);
}

} // namespace norvane
