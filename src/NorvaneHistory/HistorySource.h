#pragma once

#include "common/Result.h"
#include "contract/History.h"
#include "contract/Messages.h"

#include <QList>
#include <QObject>
#include <QString>

#include <functional>

namespace norvane {

/// Why the engine didn't answer.
struct SourceFailure
{
    enum class Kind {
        Superseded, ///< a newer question of the same kind took its place
        NoEngine,   ///< it is down, can't be started, or doesn't answer
        Refused,    ///< it answers that it can't
    };
    Kind kind = Kind::NoEngine;
    QString text; ///< for the operator
};

template <typename Value>
using SourceResult = Result<Value, SourceFailure>;

/// Takes an answer when it comes.
template <typename Value>
using SourceAnswer = std::function<void(const SourceResult<Value> &)>;

/// Which rows of a list are asked for.
struct PageRequest
{
    QString after; ///< the `next` of the page before; empty for the first page
    QString until; ///< the `next` of this page, if it was fetched before; else empty
    quint32 limit = 0;
};

/// Rows of a list, the latest first.
template <typename Row>
struct Page
{
    QList<Row> rows;
    QString next; ///< empty behind the last page
};

/// Which received messages are asked for; the members as in HistoryFilter.
struct InboxFilter
{
    QString from;
    QString to;
    QString text;
    bool unreadOnly = false;

    bool operator==(const InboxFilter &) const = default;
};

/// Numbers of a range of days, as GetSummary gives them.
struct Summary
{
    QList<HistoryDay> days;
    QList<DeliveryDelay> delays;
    QList<FailureReason> reasons;
};

/// What became of a message that was queued.
enum class Sending {
    Underway,
    NotStarted, ///< it waits: the sending was stopped, and couldn't be started
};

/// What the window asks of the engine. An answer comes later, on this thread, unless its context is
/// gone by then. While the engine is down, what only looks at something fails at once. What the
/// operator decides (connectToEngine(), setOptedOut() and send()) starts it, and blocks until it is
/// there.
class HistorySource : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Starts the engine if it is down. `connected()` or `failed()` follows.
    virtual void connectToEngine() = 0;

    virtual void fetchHistory(QObject *context, const HistoryFilter &filter,
                              const PageRequest &request,
                              const SourceAnswer<Page<HistoryRow>> &answer) = 0;
    virtual void fetchRows(QObject *context, const QList<qint64> &ids,
                           const SourceAnswer<QList<HistoryRow>> &answer) = 0;
    virtual void fetchSteps(QObject *context, qint64 message,
                            const SourceAnswer<QList<HistoryEvent>> &answer) = 0;
    virtual void fetchSummary(QObject *context, const QString &from, const QString &to,
                              const SourceAnswer<Summary> &answer) = 0;
    virtual void fetchInbox(QObject *context, const InboxFilter &filter, const PageRequest &request,
                            const SourceAnswer<Page<ReceivedMessage>> &answer) = 0;
    /// The same for a question that is asked beside those for the list, and takes the place of none
    /// of them.
    virtual void fetchAnswers(QObject *context, const InboxFilter &filter, quint32 limit,
                              const SourceAnswer<Page<ReceivedMessage>> &answer) = 0;
    /// As fetchHistory() and fetchInbox(), for a walk through a whole list: beside all others, and
    /// takes the place of none of them.
    virtual void walkHistory(QObject *context, const HistoryFilter &filter,
                             const PageRequest &request,
                             const SourceAnswer<Page<HistoryRow>> &answer) = 0;
    virtual void walkInbox(QObject *context, const InboxFilter &filter, const PageRequest &request,
                           const SourceAnswer<Page<ReceivedMessage>> &answer) = 0;
    /// @param answer  gets true, or why they are still unread
    virtual void markRead(QObject *context, const QList<qint64> &ids,
                          const SourceAnswer<bool> &answer) = 0;
    virtual void fetchOptedOut(QObject *context, const QString &phone,
                               const SourceAnswer<bool> &answer) = 0;
    /// @param answer  gets whether the list has changed
    virtual void setOptedOut(QObject *context, const QString &phone, bool isOptedOut,
                             const SourceAnswer<bool> &answer) = 0;
    /// Queues a message that is due at once, and starts the sending where it was stopped.
    /// @param text  as it is to be sent
    virtual void send(QObject *context, const QString &phone, const QString &text,
                      const SourceAnswer<Sending> &answer) = 0;

Q_SIGNALS:
    /// connectToEngine() has found or started the engine.
    void connected();
    /// The engine has gone, or can't be started.
    void failed(const SourceFailure &failure);
    /// The engine is there again, or another one, without connectToEngine().
    void returned();
    /// Something that was fetched is no longer true.
    void changed();
};

} // namespace norvane
