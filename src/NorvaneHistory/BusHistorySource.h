#pragma once

#include "NorvaneHistory/EngineConnection.h"
#include "NorvaneHistory/HistorySource.h"

namespace norvane {

/// The engine on the bus.
class BusHistorySource : public HistorySource
{
    Q_OBJECT

public:
    /// @param launcher  must outlive this object
    BusHistorySource(const QDBusConnection &bus, EngineLauncher &launcher,
                     QObject *parent = nullptr);

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
                      const SourceAnswer<Page<ReceivedMessage>> &answer) override;
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
    /// Starts the engine unless it is there; else fails as the operator's request.
    /// @return whether it is there
    template <typename Value>
    bool ensureRunning(QObject *context, const SourceAnswer<Value> &answer);
    /// Gives what `read` makes of the answer to the call that `start` makes, or the failure. Fails
    /// while the engine is down.
    template <typename Value, typename Start, typename Read>
    void ask(EngineConnection::Caller caller, QObject *context, const SourceAnswer<Value> &answer,
             Start start, Read read);
    template <typename Value, typename Read>
    void await(const QDBusPendingCall &call, QObject *context, const SourceAnswer<Value> &answer,
               Read read);
    void askHistory(EngineConnection::Caller caller, QObject *context, const HistoryFilter &filter,
                    const PageRequest &request, const SourceAnswer<Page<HistoryRow>> &answer);
    void askInbox(EngineConnection::Caller caller, QObject *context, const InboxFilter &filter,
                  const PageRequest &request, const SourceAnswer<Page<ReceivedMessage>> &answer);
    void startSending(QObject *context, const SourceAnswer<Sending> &answer);

    EngineConnection m_engine;
};

} // namespace norvane
