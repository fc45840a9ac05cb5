#include "foundation/ui/MessageEdit.h"

#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QTextDocument>

#include <algorithm>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// What the document breaks a line at: it takes two noncharacters for the edges of a frame.
bool isBreak(QChar character)
{
    return character == u'\n' || character == QChar::LineSeparator ||
           character == QChar::ParagraphSeparator || character == u'\uFDD0' ||
           character == u'\uFDD1';
}

/// `text` with each of its line breaks, of whatever kind, as the document takes it.
QString withPlainBreaks(QString text)
{
    text.replace(u"\r\n"_s, u"\n"_s);
    return text.replace(u'\r', u'\n');
}

/// Length of `text` in the message, where a line break is two characters.
qsizetype lengthInMessage(const QString &text)
{
    return text.size() + std::count_if(text.cbegin(), text.cend(), isBreak);
}

/// As much of the beginning of `text` as `room` characters hold, a break being two of them and a
/// surrogate pair staying whole.
QString fitting(const QString &text, int room)
{
    qsizetype end = 0;
    while (end < text.size()) {
        const bool isPair = text.at(end).isHighSurrogate() && end + 1 < text.size() &&
                            text.at(end + 1).isLowSurrogate();
        room -= isPair || isBreak(text.at(end)) ? 2 : 1;
        if (room < 0)
            break;
        end += isPair ? 2 : 1;
    }
    return text.left(end);
}

/// `raw` as the document keeps it, with each line break as CR LF.
QString withLineEnds(QString raw)
{
    raw.replace(QChar::LineSeparator, QChar::ParagraphSeparator);
    return raw.replace(QChar::ParagraphSeparator, u"\r\n"_s);
}

/// Characters that a key press is about to add.
qsizetype lengthOfTyping(const QKeyEvent &event)
{
    if (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter)
        return 2;
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    if (modifiers.testFlag(Qt::ControlModifier) && !modifiers.testFlag(Qt::AltModifier))
        return 0;
    const QString typed = event.text();
    return !typed.isEmpty() && typed.at(0).category() != QChar::Other_Control
               ? lengthInMessage(typed)
               : 0;
}

} // namespace

MessageEdit::MessageEdit(QWidget *parent) : QPlainTextEdit(parent)
{
    setTabChangesFocus(true);
    connect(this, &QPlainTextEdit::textChanged, this, &MessageEdit::noticeChange);
}

QString MessageEdit::text() const
{
    // The raw text, as the plain one turns no-break spaces into spaces.
    return withLineEnds(document()->toRawText());
}

void MessageEdit::setText(const QString &text)
{
    setPlainText(fitting(withPlainBreaks(text), maxLength));
}

int MessageEdit::textLength() const
{
    return static_cast<int>(text().size());
}

int MessageEdit::room() const
{
    const QString replaced = withLineEnds(textCursor().selectedText());
    return maxLength - textLength() + static_cast<int>(replaced.size());
}

void MessageEdit::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab) {
        event->ignore();
        return;
    }
    if (lengthOfTyping(*event) > room()) {
        event->accept();
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

void MessageEdit::inputMethodEvent(QInputMethodEvent *event)
{
    const QString typed = fitting(withPlainBreaks(event->commitString()), room());
    event->setCommitString(typed, event->replacementStart(), event->replacementLength());
    QPlainTextEdit::inputMethodEvent(event);
}

void MessageEdit::insertFromMimeData(const QMimeData *source)
{
    if (!source->hasText())
        return;
    // One step of its own for undo.
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.insertText(fitting(withPlainBreaks(source->text()), room()));
    cursor.endEditBlock();
    ensureCursorVisible();
}

void MessageEdit::noticeChange()
{
    QString now = text();
    if (now == m_lastText)
        return; // the format alone
    m_lastText = std::move(now);
    Q_EMIT changed();
}

} // namespace norvane
