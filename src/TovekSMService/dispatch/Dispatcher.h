#pragma once

#include "TovekSMService/dispatch/DeviceKeeper.h"
#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "TovekSMService/dispatch/EnginePresence.h"
#include "TovekSMService/dispatch/EngineSettings.h"
#include "TovekSMService/dispatch/ListIntake.h"
#include "TovekSMService/dispatch/MailKeeper.h"
#include "TovekSMService/dispatch/Outbox.h"
#include "TovekSMService/dispatch/OutcomePruner.h"
#include "TovekSMService/dispatch/PartEncoder.h"
#include "TovekSMService/dispatch/RetryPolicy.h"
#include "TovekSMService/dispatch/RunState.h"
#include "TovekSMService/dispatch/Scheduler.h"
#include "TovekSMService/dispatch/Sender.h"
#include "TovekSMService/modem/device/Modem.h"
#include "TovekSMService/reports/OptOuts.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"

#include <QObject>

#include <optional>

namespace norvane {

/// Decides whose turn it is: that of the device (DeviceKeeper), of what waits for the store
/// (Outbox), or of messages (Sender). Puts these together, and is what the rest of the engine sees
/// of them.
///
/// One thing is on its way at a time. work() is the only place that begins something, and is run
/// after every change. What a step's outcome must leave in the store is retried until it is there,
/// and no other message begins before.
class Dispatcher : public QObject
{
    Q_OBJECT

public:
    using Warning = Outbox::Warning;
    using TestAnswer = DeviceTests::Answer;

    /// @param store, modem, clock  must outlive this object
    Dispatcher(Store &store, Modem &modem, const Clock &clock, const RetryPolicy &retries,
               const DispatcherTimings &timings = {}, const EngineSettings &settings = {},
               PartEncoder::Encode encode = encodeSubmit, QObject *parent = nullptr);

    /// The first step after the program's start: reports what the last run left in the middle, and
    /// starts if the engine was started.
    [[nodiscard]] StoreResult<> resume();

    qint32 status() const { return m_state.running ? 1 : 0; }
    /// Where it fails, the status is as it was.
    [[nodiscard]] StoreResult<> start();
    /// Where it fails, the status is as it was.
    [[nodiscard]] StoreResult<> stop();
    /// Puts the stored device settings in force, as start() does where they are other ones: the
    /// device is closed and opened anew. Where it fails, nothing has changed.
    [[nodiscard]] StoreResult<> applySettings();
    /// Asks the device when its turn comes, and gives 1 or the code of what stands in the way,
    /// within the time limit. The reason of a failure is raised as a warning before that. A device
    /// that answers stays open for a moment, as an engine that was stopped for the test is started
    /// again.
    void testDevice(TestAnswer answer);

    /// Queues the messages of a list, see ListIntake::add().
    [[nodiscard]] StoreResult<> addList(const QString &token, const QList<SMSList::Entry> &list,
                                        const QString &deliveryDate);
    OptOuts &optOuts() { return m_optOuts; }
    /// The queue was changed from outside. What is to be done about it begins from the event loop.
    void noticeQueueChange();
    /// Received messages or the list of opt-outs were changed from outside.
    void noticeHistoryChange();
    /// Tells that an edit or a deletion came after its message had begun to be sent.
    void warnTooLate();
    /// Raises a warning where someone listens, and keeps it until it is acknowledged.
    void warn(qint32 code, const QString &text) { m_outbox.warn(code, text); }
    /// The words of the warning for a message that may have been delivered.
    static QString doubtOf(const QString &phone) { return Outbox::doubtOf(phone); }

    /// Whether someone listens to the events. Where nobody does, failures and warnings are kept and
    /// not raised.
    void setHasListeners(bool heard) { m_outbox.setHasListeners(heard); }
    const AcknowledgedOutcomes &acknowledgedOutcomes() const
    {
        return m_outbox.acknowledgedOutcomes();
    }
    const UnacknowledgedWarnings &unacknowledgedWarnings() const
    {
        return m_outbox.unacknowledgedWarnings();
    }
    /// The failure or the warning of that number has been handled: it is not told again.
    void noteHandled(qint64 report) { m_outbox.noteHandled(report); }
    /// What keeps the started engine from its work at present, as it was warned of.
    QList<Warning> activeFaults() const;

    /// Whoever meets a failure of the store tells it here. One that lasts is told, and `storeLost`
    /// asks for the store to be opened anew.
    void noticeStoreFailure(const StoreFailure &failure) { m_outbox.noteStoreFailure(failure); }
    /// Warns of a store that can't be used. The trouble stands until clearStoreFault().
    void warnOfStore(const QString &reason) { m_outbox.storeMonitor().warn(reason); }
    void clearStoreFault() { m_outbox.storeMonitor().endFault(); }
    /// What keeps the store from being written at present; empty for nothing.
    QString storeFault() const { return m_outbox.storeMonitor().failure(); }
    /// A new store stands in the place of the one so far: the engine is stopped, with no device
    /// set.
    void storeReplaced();
    /// Whether the device has a part whose outcome isn't known yet.
    bool isSending() const { return m_sender.isSending(); }
    const std::optional<DeviceDetails> &knownDevice() const { return m_device.knownDevice(); }

    /// Ends as soon as the part in progress, if any, is finished and on disk.
    void finish();

    /// Looks for what is to be done; harmless at any time.
    void work();

Q_SIGNALS:
    void statusChanged(int status);
    void deviceInfo(const DeviceDetails &details);
    void queueChanged();
    /// Something in queue, outcomes, received messages or opt-outs became different.
    void historyChanged();
    /// The queue can be used, if it is shared.
    void queueOpened();
    void sent(const QString &phone, const QString &text, int queueCount);
    void sendingFailed(const QString &phone, const QString &text, int code);
    void warning(int code, const QString &text);
    /// Follows sendingFailed, with the warning that may belong to it, and every other warning: the
    /// number that noteHandled() takes. That of a failure is its outcome's id.
    void reportRaised(qint64 report);
    void warningHandled(int code, const QString &text);
    /// Comes with every warning, whether someone listens or not.
    void warned(int code, const QString &text);
    /// What the network says became of a message.
    void deliveryChanged(const DeliveryChange &change);
    /// Somebody sent a message to us.
    void received(const ReceivedMessage &message);
    /// The store has failed for some time, or is damaged.
    void storeLost(bool damaged);
    /// Comes after finish(), when nothing is on its way any more.
    void finished();

private:
    void workLater();
    StoreResult<> settleKept();
    StoreResult<> noteStart();

    Store &m_store;
    RunState m_state;
    Outbox m_outbox;
    DeviceKeeper m_device;
    Scheduler m_scheduler;
    OptOuts m_optOuts;
    ListIntake m_lists;
    DeliveryReports m_reports;
    Sender m_sender;
    EnginePresence m_presence;
    MailKeeper m_mail;
    OutcomePruner m_pruner;
    bool m_working = false; ///< work() is on the stack
};

} // namespace norvane
