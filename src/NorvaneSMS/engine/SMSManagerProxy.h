#pragma once

#include "NorvaneSMS/engine/QueueReplica.h"
#include "contract/SMSManager.h"
#include "foundation/EngineLauncher.h"

#include <memory>
#include <optional>

class SMSManagerBusInterface; // generated from com.tovek.SMService.xml

namespace norvane {

/// The engine process as an engine object of the console: each operation is a blocking call over
/// the session bus, each event a signal that waits for the event loop.
///
/// A call to an engine that has vanished starts it again once. An engine that dies in the call, or
/// hangs past its time limit, turns the call into NumberedFailure 462.
///
/// When the engine leaves the bus, this object raises EngineStatus 0, as the engine no longer can.
///
/// A report of the engine is acknowledged once its handlers have returned. Reports that this object
/// has not handled when it is destroyed are repeated by the engine to the next one.
class SMSManagerProxy : public SMSManager
{
    Q_OBJECT

public:
    /// Starts the engine if need be and asks it, without waiting, to report its state. The object
    /// has a connection to the session bus of its own, so that the engine notices when it goes.
    /// @param launcher  must outlive this object
    /// @throws NumberedFailure 429 when no engine can be had
    explicit SMSManagerProxy(EngineLauncher &launcher, QObject *parent = nullptr);
    ~SMSManagerProxy() override;

    void StartEngine() override;
    void StopEngine() override;
    qint32 TestDevice() override;
    qint32 GetEngineStatus() override;
    void AddSMS(const QString &phone, const QString &message,
                const QDateTime &deliveryDate) override;
    void AddSMSList(const SMSList &list, const QDateTime &deliveryDate) override;
    qint32 GetQueueSize() override;
    void ClearQueue() override;
    QueueRecordSet GetQueue() override;
    void UpdateQueue(const QueueRecordSet &records) override;
    void ApplySettings() override;
    DeviceSettings GetDeviceSettings() override;
    bool SetDeviceSettings(const DeviceSettings &settings) override;

    void BeginBatch() override;
    qsizetype CommitBatch() override;
    void DeliverPendingEvents() override;

    /// The time limit of every call but TestDevice, in milliseconds; Bus::callTimeout at first.
    void setCallTimeout(int milliseconds) { m_callTimeout = milliseconds; }

private:
    void connectEvents();
    void engineChanged(const QString &name, const QString &formerOwner, const QString &owner);
    /// The engine's own name on the bus; empty where there is none.
    QString engineOwner() const;
    /// Connects to the signals of the engine of that name, unless that is done already.
    void attachTo(const QString &owner);
    void attach();
    /// Raises an event whose handling is acknowledged later.
    template <typename Raise>
    void deliver(Raise &&raise);
    void acknowledge(qlonglong report);
    /// The whole queue, page by page.
    QList<QueueRow> fetchQueue();
    /// Hands the messages to an engine that knows no batches.
    /// @return how many it took before it failed for one
    qsizetype addOneByOne(const QList<QueueRow> &messages);
    void addNow(const QueueRow &message);
    /// Makes a call and waits for its answer or error. If the engine had vanished, it is started
    /// and the call is repeated.
    template <typename Call>
    auto ask(int timeLimit, Call &&start);
    /// As ask(), but an error is a failure.
    template <typename Call>
    auto call(const char *operation, int timeLimit, Call &&start);
    template <typename Call>
    auto call(const char *operation, Call &&start);

    EngineLauncher &m_launcher;
    QString m_connectionName;
    QString m_attachedTo; ///< the engine's own name on the bus
    std::unique_ptr<SMSManagerBusInterface> m_engine;
    int m_callTimeout;
    QueueReplica m_replica;
    std::optional<QList<QueueRow>> m_batch; ///< what is held back, while a batch is open
    int m_handlersRunning = 0;              ///< of what is to be acknowledged
};

} // namespace norvane
