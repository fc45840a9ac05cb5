#pragma once

#include "NorvaneHistory/HistorySource.h"

#include <QObject>

#include <functional>

class QWidget;

namespace norvane {

/// What can be done about a message, each after a question. It is done to the message that the
/// question named, also if the caller's variable changes while that stands.
class MessageActions : public QObject
{
    Q_OBJECT

public:
    /// @param source  must outlive this object
    /// @param window  in front of which the questions stand
    MessageActions(HistorySource &source, QWidget *window);

    /// Whether a message can be sent again: it failed, was refused, or nobody knows.
    static bool canSendAgain(MessageState state);

    /// Queues the message as it was queued before: its text has been normalised then.
    void sendAgain(const HistoryRow &message);
    /// Lets the operator write to that number.
    void answer(const QString &phone);
    void setOptedOut(const QString &phone, bool isOptedOut);

Q_SIGNALS:
    /// The list of those who want no campaigns has changed.
    void optOutsChanged();

private:
    /// Lets the operator write, beginning with `text`.
    void compose(const QString &phone, const QString &text);
    /// @param onFailure  is called behind the box that tells of a failure
    void send(const QString &phone, const QString &text, const std::function<void()> &onFailure);
    void showFailure(const SourceFailure &failure);

    HistorySource &m_source;
    QWidget *m_window;
};

} // namespace norvane
