#pragma once

#include <QPlainTextEdit>

/// A text box of several lines for the message. A line break counts as the two characters CR and
/// LF; the text never grows past the limit, whether typed, pasted or dropped.
class MessageEdit : public QPlainTextEdit
{
    Q_OBJECT

public:
    static constexpr int MaxLength = 160;

    explicit MessageEdit(QWidget *parent = nullptr);

    /// The text with its line breaks as CR LF.
    QString text() const;
    void setText(const QString &text);

    /// Length of text() in UTF-16 units.
    int textLength() const;

Q_SIGNALS:
    /// The text is another one, and within the limit.
    void changed();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    struct Insertion;

    static Insertion insertion(const QString &before, const QString &after);
    int room() const;
    void cutToLimit();
    void removeEndOf(const Insertion &came);

    bool m_cutting = false;
    QString m_lastRawText; ///< as the document kept it after the last change
};
