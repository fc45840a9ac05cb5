#pragma once

#include "NorvaneHistory/HistorySource.h"

#include <QHash>
#include <QSet>

#include <functional>

namespace norvane {

/// An engine in memory. It answers when events are processed, or, while it holds, when it is told
/// to.
class FakeSource : public HistorySource
{
    Q_OBJECT

public:
    QList<HistoryRow> rows; ///< the latest first
    QList<ReceivedMessage> inbox;
    QHash<qint64, QList<HistoryEvent>> steps;
    Summary summary;
    QSet<QString> optOuts;
    bool isAway = false;      ///< every question fails
    bool isConnecting = true; ///< connectToEngine() succeeds
    int supersededPages = 0;  ///< of the next walk's pages
    Sending sending = Sending::Underway;

    struct Sent
    {
        QString phone;
        QString text;
        bool operator==(const Sent &) const = default;
    };
    QList<Sent> sent;
    QList<qint64> markedRead;
    QStringList calls;           ///< the names of all questions
    QList<PageRequest> requests; ///< of the history

    /// Rows with ids from `count` down to 1, a minute apart.
    void addRows(int count);
    /// A row on top of the others, with the next id.
    HistoryRow addRow(MessageState state, const QString &phone, const QString &text);

    /// Keeps answers back until release().
    void hold() { m_isHolding = true; }
    void release();
    bool hasHeld() const { return !m_held.isEmpty(); }

    void connectToEngine() override;
    void fetchHistory(QObject *context, const HistoryFilter &filter, const PageRequest &request,
                      const SourceAnswer<Page<HistoryRow>> &answer) override;
    void fetchRows(QObject *context, const QList<qint64> &ids,
                   const SourceAnswer<QList<HistoryRow>> &answer) override;
    void fetchSteps(QObject *context, qint64 message,
                    const SourceAnswer<QList<HistoryEvent>> &answer) override;
    void fetchSummary(QObject *context, const QString &from, const QString &to,
                      const SourceAnswer<Summary> &answer) override;
    void fetchInbox(QObject *context, const InboxFilter &filter, const PageRequest &request,
                    const SourceAnswer<Page<ReceivedMessage>> &answer) override;
    void fetchAnswers(QObject *context, const InboxFilter &filter, quint32 limit,
                      const SourceAnswer<Page<ReceivedMessage>> &answer) override
    {
        fetchInbox(context, filter, {{}, {}, limit}, answer);
    }
    void walkHistory(QObject *context, const HistoryFilter &filter, const PageRequest &request,
                     const SourceAnswer<Page<HistoryRow>> &answer) override;
    void walkInbox(QObject *context, const InboxFilter &filter, const PageRequest &request,
                   const SourceAnswer<Page<ReceivedMessage>> &answer) override;
    void markRead(QObject *context, const QList<qint64> &ids,
                  const SourceAnswer<bool> &answer) override;
    void fetchOptedOut(QObject *context, const QString &phone,
                       const SourceAnswer<bool> &answer) override;
    void setOptedOut(QObject *context, const QString &phone, bool isOptedOut,
                     const SourceAnswer<bool> &answer) override;
    void send(QObject *context, const QString &phone, const QString &text,
              const SourceAnswer<Sending> &answer) override;

private:
    Page<HistoryRow> historyPage(const HistoryFilter &filter, const PageRequest &request) const;
    Page<ReceivedMessage> inboxPage(const InboxFilter &filter, const PageRequest &request) const;
    template <typename Value>
    void answerLater(QObject *context, const SourceAnswer<Value> &answer, const Value &value);

    bool m_isHolding = false;
    QList<std::function<void()>> m_held;
};

} // namespace norvane
