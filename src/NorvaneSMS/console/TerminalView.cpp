#include "NorvaneSMS/console/TerminalView.h"

#include <QKeyEvent>
#include <QWheelEvent>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

bool movesFocus(const QKeyEvent &event)
{
    return event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab;
}

/// Alt with a letter is another control's and no key of the log.
bool isAccessKey(const QKeyEvent &event)
{
    return event.modifiers().testFlag(Qt::AltModifier) &&
           !event.modifiers().testFlag(Qt::ControlModifier) &&
           !event.modifiers().testFlag(Qt::MetaModifier);
}

} // namespace

TerminalView::TerminalView(QWidget *parent) : QPlainTextEdit(parent)
{
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled, false);
}

void TerminalView::setText(const QString &text)
{
    m_text.clear();
    clear();
    append(text);
}

void TerminalView::append(const QString &text)
{
    m_text += text;
    moveCursor(QTextCursor::End);
    insertPlainText(text);
    moveCursor(QTextCursor::End);
    ensureCursorVisible();
}

void TerminalView::appendLine(const QString &line)
{
    append(line + u"\r\n"_s);
}

bool TerminalView::event(QEvent *event)
{
    // No other key of the log is a shortcut of the window's either.
    if (event->type() == QEvent::ShortcutOverride &&
        !isAccessKey(*static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    // A text that can be selected takes in what an input method or a dead key makes.
    if (event->type() == QEvent::InputMethod) {
        event->accept();
        return true;
    }
    return QPlainTextEdit::event(event);
}

void TerminalView::keyPressEvent(QKeyEvent *event)
{
    if (movesFocus(*event))
        event->ignore();
    else
        event->accept();
}

void TerminalView::wheelEvent(QWheelEvent *event)
{
    if (event->modifiers().testFlag(Qt::ControlModifier))
        event->accept(); // would change the size of the face
    else
        QPlainTextEdit::wheelEvent(event);
}

void TerminalView::keyReleaseEvent(QKeyEvent *event)
{
    event->accept();
}

} // namespace norvane
