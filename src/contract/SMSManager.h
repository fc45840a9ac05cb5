#pragma once

#include "contract/DeviceSettings.h"
#include "contract/QueueRecordSet.h"
#include "contract/SMSList.h"

#include <QDateTime>
#include <QObject>
#include <QString>

namespace norvane {

/// The SMS engine as seen from outside: thirteen operations and six events. In the console it is an
/// SMSManagerProxy; in the engine, EngineService answers its calls.
///
/// The operations block until the engine has answered and run no event loop meanwhile. One that
/// fails as a call raises a NumberedFailure: 429 when no engine can be had, 462 when it went away
/// or did not answer within its time. No operation fails for its content: what can't be sent is
/// queued and reported by SMSSentFailed.
///
/// A delivery date is a wall-clock moment without a zone. It is carried in a QDateTime in Qt::UTC,
/// so that no zone's rules apply to it, and is never converted.
class SMSManager : public QObject
{
    Q_OBJECT

public:
    /// The one status value that means "running"; 0 is stopped, any other value is not running.
    static constexpr qint32 running = 1;
    static constexpr qint32 stopped = 0;
    /// The one answer of TestDevice that means success.
    static constexpr qint32 deviceAnswered = 1;

    using QObject::QObject;

    virtual void StartEngine() = 0;
    virtual void StopEngine() = 0;
    /// Asks the device itself. @return 1 when it answered, anything else when it didn't
    virtual qint32 TestDevice() = 0;
    virtual qint32 GetEngineStatus() = 0;
    virtual void AddSMS(const QString &phone, const QString &message,
                        const QDateTime &deliveryDate) = 0;
    virtual void AddSMSList(const SMSList &list, const QDateTime &deliveryDate) = 0;
    virtual qint32 GetQueueSize() = 0;
    virtual void ClearQueue() = 0;
    virtual QueueRecordSet GetQueue() = 0;
    /// Carries the edits and deletions of `records` to the queue; rows that were queued since it
    /// was handed out are left alone.
    virtual void UpdateQueue(const QueueRecordSet &records) = 0;
    virtual void ApplySettings() = 0;
    virtual DeviceSettings GetDeviceSettings() = 0;
    virtual bool SetDeviceSettings(const DeviceSettings &settings) = 0;

    /// Begins a batch: until CommitBatch, the messages of AddSMS may be held back and reach the
    /// engine together. Nothing but AddSMS is called meanwhile.
    virtual void BeginBatch() = 0;
    /// Ends the batch. What was held back is on the engine's disk when it returns.
    /// @return how many messages of the batch are in the queue, counted from its first; fewer than
    ///         all where the engine failed for the one behind them
    /// @throws NumberedFailure as any operation; how many are in the queue isn't known then
    virtual qsizetype CommitBatch() = 0;

    /// Handles the events that have arrived so far, in their order, without running an event loop.
    /// The device test alone calls this, after each of its calls.
    virtual void DeliverPendingEvents() = 0;

Q_SIGNALS:
    void DeviceInfo(const QString &Manufacturer, const QString &Model, const QString &IMEI,
                    const QString &NetworkInfo, qint32 BatteryLevel, qint32 SignalLevel,
                    const QString &FirmWare, const QString &Time, const QString &SMSCNumber,
                    const QString &Hardware);
    void EngineStatus(qint32 status);
    void SMSQueueChanged(qint32 currentSize);
    /// @param QueueCount  messages still waiting after the one just sent
    void SMSSent(const QString &phone, const QString &Message, qint32 QueueCount);
    void SMSSentFailed(const QString &phone, const QString &Message, qint32 errorCode);
    void WarningError(qint32 errCode, const QString &ExtraInfo);
};

} // namespace norvane
