#pragma once

#include "TovekSMService/bus/EngineState.h"
#include "TovekSMService/bus/MessagesService.h"
#include "TovekSMService/bus/QueueChangePacer.h"
#include "TovekSMService/bus/QueueSnapshots.h"
#include "TovekSMService/bus/ReportAcknowledgements.h"
#include "TovekSMService/dispatch/UnacknowledgedWarnings.h"

#include <QDBusServiceWatcher>

#include <QSet>

#include <optional>

namespace norvane {

struct DeviceDetails;

/// The engine's side of the contract: the object that the bus adaptor, which is generated, stands
/// before. Operations bear the contract's names. As there is one object, it has the second
/// interface too, which is MessagesService's.
class EngineService : public MessagesService
{
    Q_OBJECT

public:
    /// @param store, dispatcher, clock  must outlive this object
    EngineService(const QDBusConnection &bus, Store &store, Dispatcher &dispatcher,
                  const Clock &clock, QObject *parent = nullptr);

    void StartEngine();
    void StopEngine();
    int TestDevice();
    int GetEngineStatus() const;
    void AddSMS(const QString &phone, const QString &message, const QString &deliveryDate);
    void AddSMSList(const BusSMSList &list, const QString &deliveryDate);
    uint AddSMSBatch(const QString &batch, const BusQueueRows &messages);
    int GetQueueSize() const;
    void ClearQueue();
    qulonglong GetQueue(qulonglong snapshot, uint first, uint &total, BusQueueRows &rows);
    qulonglong GetQueueChanges(qulonglong revision, bool &whole, BusQueueRows &present,
                               QList<qlonglong> &gone);
    void UpdateQueue(const BusQueueRows &changed, const QList<qlonglong> &deleted);
    void ApplySettings();
    DeviceSettings GetDeviceSettings();
    bool SetDeviceSettings(const DeviceSettings &settings);
    void ReportState();
    void AcknowledgeReports(const QList<qlonglong> &reports);
    /// Beside the operations, for monitors: attaches nobody. See EngineState.
    QVariantMap GetState() const;

    // The contract's events, but for DeviceInfo, which reportDevice() sends.
Q_SIGNALS:
    void EngineStatus(int status);
    void SMSQueueChanged(int currentSize);
    void SMSSent(const QString &phone, const QString &Message, int QueueCount);
    void SMSSentFailed(const QString &phone, const QString &Message, int errorCode);
    void WarningError(int errCode, const QString &ExtraInfo);
    void ReportRaised(qlonglong report);

private:
    StoreResult<> addBatch(const QString &batch, const BusQueueRows &messages);
    StoreResult<QVariantList> queuePage(const QString &caller, quint64 snapshot, quint32 first);
    StoreResult<QVariantList> queueChanges(const QString &caller, quint64 revision);
    /// Sends an event to one listener, or to all of them where none is named.
    void reportTo(const QString &listener, const QString &event, const QVariantList &arguments);
    void reportDevice(const QString &listener, const DeviceDetails &details);
    void reportFailures(const QString &listener);
    void reportAwaitedFailures();
    void reportWarnings(const QString &listener);
    void reportWarning(const QString &listener, const UnacknowledgedWarnings::Warning &warning);
    /// Tells the number of the report that was raised to this listener alone.
    void numberReport(const QString &listener, qint64 report);
    void onReportRaised(qint64 report);
    /// Notices when the caller leaves the bus, also where it has left already.
    void watch(const QString &caller);
    void listenerLeft(const QString &listener);

    QDBusServiceWatcher m_callers;
    ReportAcknowledgements m_acknowledgements;
    QueueChangePacer m_pacer;
    QueueSnapshots m_snapshots;
    std::optional<EngineState::LastError> m_lastError;
    /// Who came while failures could not be read.
    QSet<QString> m_awaitingFailures;
    QSet<QString> m_listeners;
};

} // namespace norvane
