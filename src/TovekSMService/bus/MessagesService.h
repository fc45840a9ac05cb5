#pragma once

#include "TovekSMService/bus/HistoryCalls.h"
#include "TovekSMService/bus/HistoryChangePacer.h"
#include "TovekSMService/bus/StoreCalls.h"
#include "contract/BusTypes.h"

#include <QDBusContext>
#include <QObject>

namespace norvane {

class Clock;
class Dispatcher;
class Store;

/// The part of the engine's object on the bus that tells what became of messages, what was received
/// and who has opted out. A generated adaptor stands before it. What the store can't do at once is
/// retried for ten seconds before the call fails; the history is read in a thread of its own, and
/// fails at once.
class MessagesService : public QObject, protected QDBusContext
{
    Q_OBJECT

public:
    /// @param store, dispatcher, clock  must outlive this object
    MessagesService(const QDBusConnection &bus, Store &store, Dispatcher &dispatcher,
                    const Clock &clock, QObject *parent = nullptr);

    BusOutcomeRows GetOutcomes(const QString &from, const QString &to, const QString &text,
                               uint offset, uint limit);
    BusReceivedMessages GetReceived(const QString &from, const QString &to, const QString &text,
                                    uint offset, uint limit);
    void MarkRead(const QList<qlonglong> &ids);
    BusOptOuts GetOptOuts();
    bool AddOptOut(const QString &phone);
    bool RemoveOptOut(const QString &phone);
    BusHistoryRows GetHistory(const QString &from, const QString &to, const QString &text,
                              uint states, const QString &after, const QString &until, uint limit,
                              QString &next);
    BusHistoryRows GetHistoryOf(const QList<qlonglong> &ids);
    BusHistoryEvents GetSteps(qlonglong id);
    BusHistoryDays GetSummary(const QString &from, const QString &to, BusDeliveryDelays &delays,
                              BusFailureReasons &reasons);
    BusReceivedMessages GetInbox(const QString &from, const QString &to, const QString &text,
                                 bool unreadOnly, const QString &after, const QString &until,
                                 uint limit, QString &next);
    bool IsOptedOut(const QString &phone);

    /// Lets go of the store's file, which is set aside, and takes the next one.
    void suspendHistory() { m_history.suspend(); }
    void resumeHistory() { m_history.resume(); }

Q_SIGNALS:
    void HistoryChanged();
    void DeliveryChanged(qlonglong id, const QString &state, const QString &at);
    void Received(qlonglong id, const QString &phone, const QString &text, const QString &at);

protected:
    /// Carries out the present call, which answers with what the step gives; what the operation
    /// itself returns isn't sent.
    void carryOut(const StoreCalls::Step &step, const StoreCalls::Refusal &refusal = {});

    QDBusConnection m_bus;
    Store &m_store;
    Dispatcher &m_dispatcher;
    const Clock &m_clock;

private:
    /// Whether nothing of it is too long to be looked for.
    bool isSearchable(const QString &from, const QString &to, const QString &text) const;
    bool isUnderstood(bool isValid) const;
    bool accepts(bool isValid, const QString &reason) const;

    void askHistory(const QString &filter, const HistoryThread::Query &query);
    QVariantList changed(bool hasChanged);

    StoreCalls m_calls;
    HistoryChangePacer m_historyPacer;
    HistoryCalls m_history;
};

} // namespace norvane
