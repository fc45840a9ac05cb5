#include "console/MessageEdit.h"

#include <QKeyEvent>
#include <QTextDocument>

#include <algorithm>

namespace {

/// `raw` as the document keeps it, with each line break as CR LF.
QString withLineEnds(QString raw)
{
    raw.replace(QChar::LineSeparator, QChar::ParagraphSeparator);
    return raw.replace(QChar::ParagraphSeparator, QStringLiteral("\r\n"));
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
    return !typed.isEmpty() && typed.at(0).isPrint() ? typed.size() : 0;
}

} // namespace

/// What stands in a text that did not stand in it before, between the parts that both share.
struct MessageEdit::Insertion
{
    int position;
    int length;
};

MessageEdit::Insertion MessageEdit::insertion(const QString &before, const QString &after)
{
    const qsizetype shorter = std::min(before.size(), after.size());
    qsizetype prefix = 0;
    while (prefix < shorter && before.at(prefix) == after.at(prefix))
        ++prefix;
    qsizetype suffix = 0;
    while (suffix < shorter - prefix &&
           before.at(before.size() - 1 - suffix) == after.at(after.size() - 1 - suffix))
        ++suffix;
    return {static_cast<int>(prefix), static_cast<int>(after.size() - suffix - prefix)};
}

MessageEdit::MessageEdit(QWidget *parent) : QPlainTextEdit(parent)
{
    setTabChangesFocus(true);
    connect(this, &QPlainTextEdit::textChanged, this, &MessageEdit::cutToLimit);
}

QString MessageEdit::text() const
{
    // The raw text, as the plain one turns no-break spaces into spaces.
    return withLineEnds(document()->toRawText());
}

void MessageEdit::setText(const QString &text)
{
    setPlainText(text);
}

int MessageEdit::textLength() const
{
    return static_cast<int>(text().size());
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

int MessageEdit::room() const
{
    return MaxLength - textLength() +
           static_cast<int>(withLineEnds(textCursor().selectedText()).size());
}

void MessageEdit::cutToLimit()
{
    if (m_cutting)
        return;
    m_cutting = true;
    const QString before = m_lastRawText;
    while (textLength() > MaxLength) {
        const Insertion came = insertion(before, document()->toRawText());
        if (came.length == 0)
            break;
        removeEndOf(came);
    }
    m_cutting = false;

    m_lastRawText = document()->toRawText();
    if (m_lastRawText != before)
        Q_EMIT changed();
}

/// Takes the last character of what came in out again, a surrogate pair as a whole.
void MessageEdit::removeEndOf(const Insertion &came)
{
    const int end = came.position + came.length;
    int from = end - 1;
    if (came.length > 1 && document()->characterAt(from).isLowSurrogate() &&
        document()->characterAt(from - 1).isHighSurrogate())
        --from;
    QTextCursor cut(document());
    cut.setPosition(from);
    cut.setPosition(end, QTextCursor::KeepAnchor);
    cut.joinPreviousEditBlock();
    cut.removeSelectedText();
    cut.endEditBlock();
}
