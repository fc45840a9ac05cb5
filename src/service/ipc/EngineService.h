#pragma once

#include "engine/contract/BusTypes.h"
#include "service/ipc/QueueChangePacer.h"
#include "service/ipc/QueueSnapshots.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDeadlineTimer>
#include <QObject>
#include <QSet>

#include <functional>
#include <optional>

class Dispatcher;
class Store;
struct DeviceDetails;

/// The engine's side of the contract: the object that the bus adaptor stands before. Operations
/// bear the contract's names; what a database can't do at once is tried again for ten seconds
/// before the call fails.
class EngineService : public QObject, protected QDBusContext
{
    Q_OBJECT

public:
    /// @param store, dispatcher  must outlive this object
    EngineService(const QDBusConnection &bus, Store &store, Dispatcher &dispatcher,
                  QObject *parent = nullptr);

    void StartEngine();
    void StopEngine();
    int TestDevice();
    int GetEngineStatus() const;
    void AddSMS(const QString &phone, const QString &message, const QString &deliveryDate);
    void AddSMSList(const BusSMSList &list, const QString &deliveryDate);
    int GetQueueSize() const;
    void ClearQueue();
    qulonglong GetQueue(qulonglong snapshot, uint first, uint &total, BusQueueRows &rows);
    void UpdateQueue(const BusQueueRows &changed, const QList<qlonglong> &deleted);
    void ApplySettings();
    DeviceSettings GetDeviceSettings();
    bool SetDeviceSettings(const DeviceSettings &settings);
    void ReportState();

Q_SIGNALS:
    void DeviceInfo(const QString &Manufacturer, const QString &Model, const QString &IMEI,
                    const QString &NetworkInfo, int BatteryLevel, int SignalLevel,
                    const QString &FirmWare, const QString &Time, const QString &SMSCNumber,
                    const QString &Hardware);
    void EngineStatus(int status);
    void SMSQueueChanged(int currentSize);
    void SMSSent(const QString &phone, const QString &Message, int QueueCount);
    void SMSSentFailed(const QString &phone, const QString &Message, int errorCode);
    void WarningError(int errCode, const QString &ExtraInfo);

private:
    /// What a call gives that had to wait for the store.
    struct Answers
    {
        QVariantList done;
        std::optional<QVariantList> failed; ///< without it, the call fails as a call
    };

    /// Runs the step of the present call, again and again for ten seconds if the store fails.
    void carryOut(const std::function<void()> &step, const Answers &answers = {});
    void tryAgain(const QDBusMessage &call, const std::function<void()> &step,
                  const Answers &answers, const QDeadlineTimer &deadline);
    QDBusMessage failureOf(const QDBusMessage &call, const Answers &answers, const QString &reason);
    void reportTo(const QString &listener, const QString &event, const QVariantList &arguments);
    void reportUnheard(const QString &listener);
    void raiseDeviceInfo(const DeviceDetails &details);
    void listenerLeft(const QString &listener);

    QDBusConnection m_bus;
    Store &m_store;
    Dispatcher &m_dispatcher;
    QDBusServiceWatcher m_callers;
    QSet<QString> m_listeners;
    QueueChangePacer m_pacer;
    QueueSnapshots m_snapshots;
};
