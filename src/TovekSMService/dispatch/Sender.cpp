#include "TovekSMService/dispatch/Sender.h"

#include "TovekSMService/dispatch/DeviceKeeper.h"
#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "TovekSMService/dispatch/RunState.h"
#include "TovekSMService/dispatch/Scheduler.h"
#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/MessageQueue.h"
#include "TovekSMService/time/Clock.h"
#include "contract/ErrorCodes.h"

#include <algorithm>
#include <utility>

namespace norvane {

Sender::Sender(MessageQueue &queue, DeliveryReports &reports, Modem &modem, const Clock &clock,
               Outbox &outbox, DeviceKeeper &device, Scheduler &scheduler, const RunState &state,
               const RetryPolicy &retries, const DispatcherTimings &timings)
    : m_queue(queue), m_entries(queue, reports, clock, outbox), m_modem(modem), m_clock(clock),
      m_outbox(outbox), m_device(device), m_scheduler(scheduler), m_state(state),
      m_retries(retries), m_storeRetryMs(timings.storeRetryMs), m_maxSleepMs(timings.maxSleepMs),
      m_run(timings, clock.time()), m_wake(clock.time())
{
    connect(&m_run, &PacedRun::late, this, [this] { commit({}); });
    connect(&m_wake, &Timer::timeout, this, &Sender::wake);
    connect(&modem, &Modem::partAccepted, this, &Sender::onPartAccepted);
    connect(&modem, &Modem::partFailed, this, &Sender::onPartFailed);
}

void Sender::sendFirst()
{
    if (m_isHeldBack)
        return;
    const StoreResult<> tried = m_queue.first().and_then(
        [this](const std::optional<StoredMessage> &message) -> StoreResult<> {
            if (!message)
                return {};
            if (m_scheduler.isDue(*message))
                return sendNext();
            waitFor(*message);
            return {};
        });
    // Nothing leaves without its commit: the store is looked at again shortly.
    if (!tried)
        retryLater("the queue can't be used:", tried.error());
}

bool Sender::recover()
{
    if (!m_queue.needsRecovery())
        return true;
    if (const StoreResult<> recovered = m_queue.recover(); !recovered) {
        retryLater("the queue can't be used:", recovered.error());
        return false;
    }
    return !reportInterrupted();
}

/// Others may have begun meanwhile what was the first.
StoreResult<> Sender::sendNext()
{
    return m_scheduler.beginNext(m_run.maxLength()).map([this](const Scheduler::Next &next) {
        if (!next.run.isEmpty())
            startRun(next.run);
        else if (next.failure)
            failWaiting(*next.first, *next.failure);
        else if (next.isLimited || !next.first)
            m_wake.start(m_maxSleepMs);
        else
            waitFor(*next.first);
    });
}

void Sender::retryLater(const char *words, const StoreFailure &failure)
{
    qCWarning(logDispatch) << words << failure.text();
    m_outbox.noteStoreFailure(failure);
    m_wake.start(m_storeRetryMs);
}

void Sender::waitFor(const StoredMessage &message)
{
    const qint64 left = m_clock.wallClock().msecsTo(momentOf(message.deliveryDate));
    m_wake.start(static_cast<int>(std::clamp<qint64>(left, 1, m_maxSleepMs)));
}

/// Nothing but messages has its turn.
bool Sender::mayBegin() const
{
    return m_state.running && !m_state.finishing && m_device.isFree();
}

StoreResult<QList<LeavingMessage>> Sender::beginFollowing()
{
    if (!mayBegin() || m_current || m_isHeldBack || m_queue.needsRecovery())
        return QList<LeavingMessage>();
    return m_scheduler.beginNext(m_run.maxLength()).map([](const Scheduler::Next &next) {
        return next.run;
    });
}

void Sender::startRun(const QList<LeavingMessage> &messages)
{
    m_run.start(messages);
    send(m_run.takeNext());
}

void Sender::send(const LeavingMessage &message)
{
    m_current = message;
    m_modem.send(message.part(), followersOf(message));
}

/// Whether parts of this message or other messages are due behind the part. Where the modem has no
/// use for that, as in the middle of a row of messages, the store isn't asked.
Modem::Followers Sender::followersOf(const LeavingMessage &message) const
{
    if (!m_modem.asksForFollowers())
        return Modem::Followers::None;
    if (m_run.hasNext() || message.message.partsSent + 1 < message.parts.size())
        return Modem::Followers::Some;
    const StoreResult<std::optional<StoredMessage>> next = m_queue.first();
    if (!next)
        qCWarning(logDispatch) << "the queue can't be read:" << next.error().text();
    const bool isFollowed = next && *next && m_scheduler.isDue(**next);
    return isFollowed ? Modem::Followers::Some : Modem::Followers::None;
}

/// The part that has just been taken, if the network will report about it.
std::optional<SentPart> Sender::reportedPart(const LeavingMessage &leaving, int reference,
                                             ReportRequest report) const
{
    if (report == ReportRequest::None)
        return std::nullopt;
    const SubmitPart &part = leaving.part();
    return SentPart{leaving.message.id,
                    part.number,
                    part.total,
                    reference >= 0 ? std::optional(reference & 0xFF) : std::nullopt,
                    leaving.message.phone,
                    m_modem.details().simId,
                    m_clock.wallClockText()};
}

void Sender::onPartAccepted(int reference, ReportRequest report)
{
    if (!m_current)
        return;
    const LeavingMessage current = *std::exchange(m_current, std::nullopt);
    const StoredMessage &message = current.message;
    const int partsSent = message.partsSent + 1;
    m_refused.remove(message.id);
    for (bool &takesOthers : m_refused)
        takesOthers = true;
    m_device.endFault();
    if (partsSent < current.parts.size()) {
        m_scheduler.setUnfinished(message.id);
        Settlement taken = m_entries.settlementOf(message, Settlement::Fate::PartTaken);
        taken.partsSent = partsSent;
        taken.part = reportedPart(current, reference, report);
        commit(m_entries.entryOf({taken}, {}));
        return;
    }
    m_scheduler.setUnfinished(0);
    m_run.recordTaken(
        {message, reference, m_clock.wallClockText(), reportedPart(current, reference, report)});
    if (m_run.hasNext() && mayBegin())
        send(m_run.takeNext());
    else
        commit({});
}

/// Decides whether the message is sent again.
void Sender::onPartFailed(const SendFailure &failure)
{
    if (!m_current)
        return;
    const LeavingMessage current = *std::exchange(m_current, std::nullopt);
    const StoredMessage &message = current.message;
    const qint32 code = failure.rule.code;
    m_scheduler.setUnfinished(0);
    m_run.forgetPace();
    qCInfo(logDispatch).noquote() << "a part was not sent:" << code << failure.number
                                  << failure.text;
    m_device.noteFailed(failure, isOfDevice(failure, message.id));

    if (failure.mayBeDelivered)
        failLeaving(message, ErrorCode::noRespond);
    else if (isOfDevice(failure, message.id))
        giveUpDevice(current, failure);
    else if (failure.rule.treatment == Treatment::Permanent || !retry(message, code))
        failLeaving(message, code);
}

/// Whether the failure says that the device would take no message. One that has taken others since
/// it refused this one refuses this one alone.
bool Sender::isOfDevice(const SendFailure &failure, qint64 id) const
{
    const Treatment treatment = failure.rule.treatment;
    return treatment == Treatment::Device ||
           (treatment == Treatment::DeviceOrMessage && !m_refused.value(id, false));
}

/// The message keeps its attempts. Where it may be what the device refuses, it makes way for
/// another one, with which that shows.
void Sender::giveUpDevice(const LeavingMessage &current, const SendFailure &failure)
{
    const StoredMessage &message = current.message;
    const bool breakerIsOpen = m_device.giveUp(failure);
    const bool makesWay = failure.rule.treatment == Treatment::DeviceOrMessage && breakerIsOpen;
    if (makesWay)
        m_refused.insert(message.id, false);
    Settlement settlement = makesWay
                                ? m_entries.postponed(message, Settlement::Fate::MadeWay,
                                                      message.attempts, m_retries.messageDelay(1))
                                : m_entries.settlementOf(message, Settlement::Fate::Returned);
    settlement.code = failure.rule.code;
    Outbox::Entry entry = m_entries.entryOf({settlement}, [this, makesWay](const QList<qint64> &) {
        if (makesWay)
            m_outbox.reportQueueChange();
    });
    entry.write = [this, current, write = entry.write] {
        return write().and_then([&] { return m_scheduler.uncount(current); });
    };
    commit(entry);
}

/// Reschedules the message.
/// @return false where it has no attempt or no time left
bool Sender::retry(const StoredMessage &message, qint32 code)
{
    const int attempts = message.attempts + 1;
    if (!m_retries.mayRetry(attempts))
        return false;
    const qint64 delay = m_retries.messageDelay(attempts);
    if (m_scheduler.isTooLate(message, m_clock.wallClockText(delay)))
        return false;
    Settlement later = m_entries.postponed(message, Settlement::Fate::Postponed, attempts, delay);
    later.code = code;
    commit(m_entries.entryOf({later},
                             [this](const QList<qint64> &) { m_outbox.reportQueueChange(); }));
    return true;
}

void Sender::failLeaving(const StoredMessage &message, qint32 code)
{
    m_refused.remove(message.id);
    commit(m_entries.entryOfFailed(message, code));
}

void Sender::failWaiting(const StoredMessage &message, qint32 code)
{
    m_refused.remove(message.id);
    commit(m_entries.entryOfUnsendable(message, code));
}

void Sender::settleKept(const QList<Settlement> &settlements)
{
    m_outbox.commitKept(m_entries.entryOfKept(settlements));
}

bool Sender::mayBeInterrupted() const
{
    const StoreResult<QList<StoredMessage>> messages = m_queue.interrupted();
    return !messages || !messages->isEmpty(); // found out when the store can be read
}

bool Sender::reportInterrupted()
{
    if (!mayBeInterrupted())
        return false;
    commit(m_entries.entryOfInterrupted());
    return true;
}

void Sender::release()
{
    if (!m_releaseDue)
        return;
    if (const StoreResult<> released = m_queue.releaseBetweenParts(); !released) {
        retryLater("messages in progress could not be released:", released.error());
        return;
    }
    m_releaseDue = false;
    m_scheduler.setUnfinished(0);
}

void Sender::forgetMessages()
{
    m_refused.clear();
    m_releaseDue = false;
    m_scheduler.setUnfinished(0);
}

/// What the run leaves behind goes first.
void Sender::commit(const Outbox::Entry &entry)
{
    QList<LeavingMessage> next;
    const Outbox::FollowUp followUp = {[&] {
                                           return beginFollowing().map(
                                               [&](const QList<LeavingMessage> &run) {
                                                   next = run;
                                                   return !run.isEmpty();
                                               });
                                       },
                                       [&] { startRun(next); }};
    m_outbox.commit(m_entries.entryOf(m_run.end()).then(entry), followUp);
    m_run.noteCommitted();
}

} // namespace norvane
