#pragma once

#include "NorvaneHistory/HistorySource.h"

#include <QDBusConnection>
#include <QDBusPendingCall>

#include <memory>

class MessagesBusInterface;

namespace norvane {

class EngineLauncher;

/// The engine on the bus.
class BusHistorySource : public HistorySource
{
    Q_OBJECT

public:
    /// @param launcher  must outlive this object
    BusHistorySource(const QDBusConnection &bus, EngineLauncher &launcher,
                     QObject *parent = nullptr);
    ~BusHistorySource() override;

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
    void markRead(const QList<qint64> &ids) override;
    void fetchOptedOut(QObject *context, const QString &phone,
                       const SourceAnswer<bool> &answer) override;
    void setOptedOut(QObject *context, const QString &phone, bool isOptedOut,
                     const SourceAnswer<bool> &answer) override;
    void send(QObject *context, const QString &phone, const QString &text,
              const SourceAnswer<bool> &answer) override;

private:
    /// Starts the engine unless it is there.
    SourceResult<bool> ensureRunning();
    void engineChanged(const QString &owner);
    /// Gives what `read` makes of the answer to the call that `start` makes, or the failure.
    template <typename Value, typename Start, typename Read>
    void ask(QObject *context, const SourceAnswer<Value> &answer, Start start, Read read);
    template <typename Value, typename Read>
    void await(const QDBusPendingCall &call, QObject *context, const SourceAnswer<Value> &answer,
               Read read);
    QDBusPendingCall callManager(const QString &operation, const QVariantList &arguments = {});
    void startIfStopped();

    QDBusConnection m_bus;
    EngineLauncher &m_launcher;
    std::unique_ptr<MessagesBusInterface> m_messages;
    /// Another caller to the engine, whose questions don't take the place of those for the lists.
    const QString m_besideName;
    std::unique_ptr<MessagesBusInterface> m_beside;
};

} // namespace norvane
