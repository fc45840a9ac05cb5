#pragma once

#include "TovekSMService/dispatch/OutcomeEntries.h"
#include "TovekSMService/dispatch/PacedRun.h"
#include "TovekSMService/dispatch/RetryPolicy.h"
#include "TovekSMService/dispatch/SendingRun.h"
#include "TovekSMService/modem/device/Modem.h"
#include "TovekSMService/time/Timer.h"

#include <QHash>
#include <QList>
#include <QObject>

#include <optional>

namespace norvane {

class Clock;
class DeviceKeeper;
class Scheduler;
class MessageQueue;
struct DispatcherTimings;
struct RunState;

/// Hands the parts of the messages that the Scheduler lets go to the device, one at a time, and
/// decides by the device's answer what becomes of a message: sent, sent again later (by the
/// RetryPolicy), failed, or waiting for another attempt of the device.
class Sender : public QObject
{
    Q_OBJECT

public:
    /// @param queue, reports, modem, clock, outbox, device, scheduler, state  must outlive this
    /// object
    Sender(MessageQueue &queue, DeliveryReports &reports, Modem &modem, const Clock &clock,
           Outbox &outbox, DeviceKeeper &device, Scheduler &scheduler, const RunState &state,
           const RetryPolicy &retries, const DispatcherTimings &timings);

    /// Settles what an earlier run of the program kept at home.
    void settleKept(const QList<Settlement> &settlements);
    /// The queue can't be used at present, for another reason than its own.
    void setHeldBack(bool isHeldBack) { m_isHeldBack = isHeldBack; }

    /// Whether the device has a part whose outcome isn't known yet.
    bool isSending() const { return m_current.has_value(); }
    /// Makes sure that what the queue holds as leaving is on its way. Needs an empty outbox.
    /// @return false where the store must be waited for, or an outcome
    bool recover();
    /// Sends the first message, if it is due. Needs a device that is free, and an empty outbox.
    void sendFirst();

    /// Reports what the last run of the program left in the middle, as failed.
    /// @return false where there is nothing of that kind
    bool reportInterrupted();
    /// Messages in progress are to wait again, as the engine was stopped.
    void requestRelease() { m_releaseDue = true; }
    void cancelRelease() { m_releaseDue = false; }
    /// Lets them wait again, if that was requested.
    void release();
    /// The messages are those of another store.
    void forgetMessages();

Q_SIGNALS:
    /// The first message may be due, or the store be usable again.
    void wake();

private:
    StoreResult<> sendNext();
    /// The store has failed: looks at the queue again shortly.
    void retryLater(const char *words, const StoreFailure &failure);
    bool mayBegin() const;
    void waitFor(const StoredMessage &message);
    StoreResult<QList<LeavingMessage>> beginFollowing();
    void startRun(const QList<LeavingMessage> &messages);
    void send(const LeavingMessage &message);
    Modem::Followers followersOf(const LeavingMessage &message) const;
    void onPartAccepted(int reference, ReportRequest report);
    std::optional<SentPart> reportedPart(const LeavingMessage &leaving, int reference,
                                         ReportRequest report) const;
    void onPartFailed(const SendFailure &failure);
    bool isOfDevice(const SendFailure &failure, qint64 id) const;
    void giveUpDevice(const LeavingMessage &current, const SendFailure &failure);
    bool retry(const StoredMessage &message, qint32 code);
    void failLeaving(const StoredMessage &message, qint32 code);
    void failWaiting(const StoredMessage &message, qint32 code);
    bool mayBeInterrupted() const;
    void commit(const Outbox::Entry &entry);

    MessageQueue &m_queue;
    OutcomeEntries m_entries;
    Modem &m_modem;
    const Clock &m_clock;
    Outbox &m_outbox;
    DeviceKeeper &m_device;
    Scheduler &m_scheduler;
    const RunState &m_state;
    const RetryPolicy m_retries;
    const int m_storeRetryMs; ///< until a store that has failed is asked again
    const int m_maxSleepMs;
    std::optional<LeavingMessage> m_current;
    PacedRun m_run; ///< that m_current belongs to
    /// Messages that the device refused, and whether it has taken another one since.
    QHash<qint64, bool> m_refused;
    bool m_releaseDue = false;
    bool m_isHeldBack = false;
    Timer m_wake; ///< runs until the first message may be due
};

} // namespace norvane
