#pragma once

#include <QPlainTextEdit>

namespace norvane {

/// The log of communications. Every key is swallowed but Tab, which moves the focus on, and the
/// access keys of other controls; the text can be selected and copied with the mouse, and the
/// program alone writes it.
class TerminalView : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit TerminalView(QWidget *parent = nullptr);

    /// The whole text as it was written, with CR LF behind each line.
    const QString &text() const { return m_text; }

    /// Replaces the text. The caret goes behind the last character.
    void setText(const QString &text);
    /// Adds `text` as it stands at the end. The caret goes behind the last character.
    void append(const QString &text);
    /// Adds `line` and CR LF at the end. The caret goes behind the last character.
    void appendLine(const QString &line);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    QString m_text;
};

} // namespace norvane
