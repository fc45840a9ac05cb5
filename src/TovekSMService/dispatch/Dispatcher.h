#pragma once

#include "TovekSMService/dispatch/DeviceKeeper.h"
#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "TovekSMService/dispatch/EngineSettings.h"
#include "TovekSMService/dispatch/Outbox.h"
#include "TovekSMService/dispatch/OutcomePruner.h"
#include "TovekSMService/dispatch/PartEncoder.h"
#include "TovekSMService/dispatch/RetryPolicy.h"
#include "TovekSMService/dispatch/RunPace.h"
#include "TovekSMService/dispatch/RunState.h"
#include "TovekSMService/dispatch/SendingRun.h"
#include "TovekSMService/modem/device/Modem.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"
#include "TovekSMService/time/Stopwatch.h"
#include "TovekSMService/time/Timer.h"

#include <QHash>
#include <QObject>
#include <QSet>

#include <functional>
#include <optional>
#include <variant>

/// Decides what the device does next: sends what is due, in the order of delivery date and
/// queueing, opens the device while the engine is started, and tests it on request.
///
/// One thing is on its way at a time. work() is the only place that begins something, and is run
/// after every change. What a step's outcome must leave in the store is tried again until it is
/// there, and no other message begins before.
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
    /// @throws StoreFailure
    void resume();

    qint32 status() const { return m_state.running ? 1 : 0; }
    /// @throws StoreFailure; the status is as it was then
    void start();
    /// @throws StoreFailure; the status is as it was then
    void stop();
    /// Puts the stored device settings in force, as start() does where they are other ones: the
    /// device is closed and opened anew.
    /// @throws StoreFailure; nothing has changed then
    void applySettings();
    /// Asks the device when its turn comes, and gives 1 or the code of what stands in the way,
    /// within the time limit. The reason of a failure is raised as a warning before that. A device
    /// that answers stays open for a moment, as an engine that was stopped for the test is started
    /// again.
    void testDevice(TestAnswer answer);

    /// The queue was changed from outside. What is to be done about it begins from the event loop.
    void noticeQueueChange();
    /// Tells that an edit or a deletion came after its message had begun to be sent.
    void warnTooLate();
    /// Raises a warning where someone listens, and keeps it until it is acknowledged.
    void warn(qint32 code, const QString &text) { m_outbox.warn(code, text); }
    /// The words of the warning for a message that may have been delivered.
    static QString doubtOf(const QString &phone) { return Outbox::doubtOf(phone); }

    /// Whether someone listens to the events. Where nobody does, failures and warnings are kept and
    /// not raised.
    void setHeard(bool heard) { m_outbox.setHeard(heard); }
    const HeardOutcomes &heardOutcomes() const { return m_outbox.heardOutcomes(); }
    const UnacknowledgedWarnings &unacknowledgedWarnings() const
    {
        return m_outbox.unacknowledgedWarnings();
    }
    /// The failure or the warning of that number has been handled: it is not told again.
    void noteHandled(qint64 report) { m_outbox.noteHandled(report); }
    /// What keeps the started engine from its work at present, as it was warned of.
    QList<Warning> standingTroubles() const;

    /// Whoever meets a failure of the store tells it here. One that lasts is told, and `storeLost`
    /// asks for the store to be opened anew.
    void noticeStoreFailure(const StoreFailure &failure) { m_outbox.noteStoreFailure(failure); }
    /// Warns of a store that can't be used. The trouble stands until endStoreTrouble().
    void warnOfStore(const QString &reason) { m_outbox.storeMonitor().warn(reason); }
    void endStoreTrouble() { m_outbox.storeMonitor().endFault(); }
    /// What keeps the store from being written at present; empty for nothing.
    QString storeTrouble() const { return m_outbox.storeMonitor().failure(); }
    /// A new store stands in the place of the one so far: the engine is stopped, with no device
    /// set.
    void storeReplaced();
    /// Whether the device has a part whose outcome isn't known yet.
    bool isSending() const { return m_current.has_value(); }
    const std::optional<DeviceDetails> &knownDevice() const { return m_device.knownDevice(); }

    /// Ends as soon as the part in progress, if any, is finished and on disk.
    void finish();

    /// Looks for what is to be done; harmless at any time.
    void work();

Q_SIGNALS:
    void statusChanged(int status);
    void deviceInfo(const DeviceDetails &details);
    void queueChanged();
    void sent(const QString &phone, const QString &text, int queueCount);
    void sendingFailed(const QString &phone, const QString &text, int code);
    void warning(int code, const QString &text);
    /// Follows sendingFailed, with the warning that may belong to it, and every other warning: the
    /// number that noteHandled() takes. That of a failure is its outcome's id.
    void reportRaised(qint64 report);
    void warningHandled(int code, const QString &text);
    /// Comes with every warning, whether someone listens or not.
    void warned(int code, const QString &text);
    /// The store has failed for some time, or is damaged.
    void storeLost(bool damaged);
    /// Comes after finish(), when nothing is on its way any more.
    void finished();

private:
    void leaveAll();
    void releaseMessages();

    // Sending
    void sendFirst();
    bool isDue(const StoredMessage &message) const;
    static bool isDue(const StoredMessage &message, const QString &at);
    void waitFor(const StoredMessage &message);
    bool isTooLate(const StoredMessage &message, const QString &at) const;
    bool isLimited() const;
    bool limitsAllowPart() const;
    std::variant<LeavingMessage, qint32> encoded(const StoredMessage &message);
    void begin(LeavingMessage &message);
    QList<LeavingMessage> beginRun(LeavingMessage first);
    QList<LeavingMessage> beginFollowing();
    bool mayBegin() const;
    void startRun(const QList<LeavingMessage> &messages);
    void send(const LeavingMessage &message);
    Modem::Followers followersOf(const LeavingMessage &message) const;
    void onPartAccepted(int reference);
    void onPartFailed(const SendFailure &failure);
    bool isOfDevice(const SendFailure &failure, qint64 id) const;
    void giveUpDevice(const LeavingMessage &current, const SendFailure &failure);
    bool tryAgain(const StoredMessage &message);
    void failMessage(const StoredMessage &message, qint32 code);
    bool mayBeInterrupted() const;
    void reportInterrupted();
    Outbox::Entry entryOf(const SendingRun &run);
    void commit(const Outbox::Entry &entry);

    Store &m_store;
    Modem &m_modem;
    const Clock &m_clock;
    RetryPolicy m_retries;
    const DispatcherTimings m_timings;
    const EngineSettings m_settings;
    PartEncoder m_encoder;
    RunState m_state;
    Outbox m_outbox;
    DeviceKeeper m_device;

    bool m_release = false; ///< messages in progress are to wait again, as the engine was stopped
    bool m_working = false; ///< work() is on the stack

    std::optional<LeavingMessage> m_current;
    SendingRun m_run; ///< that m_current belongs to
    RunPace m_runPace;
    int m_runLength = 0;
    Stopwatch m_runFor;
    Timer m_runLate;         ///< runs until the rest of a run is to wait again
    qint64 m_unfinished = 0; ///< the message of which the last part sent was not the last
    /// Messages that the device refused, and whether it has taken another one since.
    QHash<qint64, bool> m_refused;
    Timer m_wake; ///< runs until the first message may be due

    OutcomePruner m_pruner;
};
