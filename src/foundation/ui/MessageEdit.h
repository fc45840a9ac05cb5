#pragma once

#include <QPlainTextEdit>

namespace norvane {

/// A text box of several lines for the message. A line break counts as the two characters CR and
/// LF; the text never grows past the limit, whether typed, pasted or dropped: of what comes in, the
/// end that has no room is left out.
class MessageEdit : public QPlainTextEdit
{
    Q_OBJECT

public:
    static constexpr int maxLength = 160;

    explicit MessageEdit(QWidget *parent = nullptr);

    /// The text with its line breaks as CR LF.
    QString text() const;
    void setText(const QString &text);

    /// Length of text() in UTF-16 units.
    int textLength() const;

Q_SIGNALS:
    /// The text is another one.
    void changed();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    int room() const;
    void noticeChange();

    QString m_lastText;
};

} // namespace norvane
