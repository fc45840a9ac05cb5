#pragma once

#include <QList>
#include <QString>
#include <QWidget>

#include <optional>

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace norvane {

class ReadOnlyTable;

/// One message in full, what happened to it, and what can be done about it.
class DetailsPane : public QWidget
{
    Q_OBJECT

public:
    /// A line of what happened.
    struct Step
    {
        QString moment;
        QString what;
        QString detail;
    };

    enum class Kind { Sent, Received };

    explicit DetailsPane(Kind kind, QWidget *parent = nullptr);

    /// @param title  phone and state, as plain text
    void showMessage(const QString &title, const QString &text);
    void showNothing();
    void showSteps(const QList<Step> &steps);
    void setSendAgainEnabled(bool isEnabled);
    /// @param isOptedOut  nothing while it isn't known
    void setOptedOut(std::optional<bool> isOptedOut);

Q_SIGNALS:
    void sendAgainRequested();
    void answerRequested();
    void optOutRequested(bool isOptedOut);

private:
    QPushButton *addButton(const QString &name, qint32 textId);

    QLabel *m_title;
    QPlainTextEdit *m_text;
    ReadOnlyTable *m_steps = nullptr; ///< null for received messages
    QPushButton *m_sendAgain = nullptr;
    QPushButton *m_answer;
    QPushButton *m_optOut;
    bool m_isOptedOut = false;
};

} // namespace norvane
