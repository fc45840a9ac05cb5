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
#include <memory>
#include <utility>

namespace norvane {

Sender::Sender(MessageQueue &queue, Modem &modem, const Clock &clock, Outbox &outbox,
               DeviceKeeper &device, Scheduler &scheduler, const RunState &state,
               const RetryPolicy &retries, const DispatcherTimings &timings)
    : m_queue(queue), m_modem(modem), m_clock(clock), m_outbox(outbox), m_device(device),
      m_scheduler(scheduler), m_state(state), m_retries(retries),
      m_storeRetryMs(timings.storeAgainMs), m_maxSleepMs(timings.maxSleepMs),
      m_run(timings, clock.time()), m_wake(clock.time())
{
    connect(&m_run, &PacedRun::late, this, [this] { commit({}); });
    connect(&m_wake, &Timer::timeout, this, &Sender::wake);
    connect(&modem, &Modem::partAccepted, this, &Sender::onPartAccepted);
    connect(&modem, &Modem::partFailed, this, &Sender::onPartFailed);
}

void Sender::sendFirst()
{
    try {
        const std::optional<StoredMessage> message = m_queue.first();
        if (!message)
            return;
        if (!m_scheduler.isDue(*message)) {
            waitFor(*message);
            return;
        }
        auto result = m_scheduler.encoded(*message);
        if (const auto *const code = std::get_if<qint32>(&result)) {
            fail(*message, *code);
        } else if (!m_scheduler.limitsAllowPart()) {
            m_wake.start(m_maxSleepMs);
        } else {
            startRun(m_scheduler.beginRun(std::get<LeavingMessage>(result), m_run.maxLength()));
        }
    } catch (const StoreFailure &failure) {
        // Nothing leaves without its commit: the store is looked at again shortly.
        qCWarning(logDispatch) << "the queue can't be used:" << failure.text();
        m_outbox.noteStoreFailure(failure);
        m_wake.start(m_storeRetryMs);
    }
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

QList<LeavingMessage> Sender::beginFollowing()
{
    if (!mayBegin() || m_current)
        return {};
    const std::optional<StoredMessage> message = m_queue.first();
    if (!message || !m_scheduler.isDue(*message) || !m_scheduler.limitsAllowPart())
        return {};
    auto result = m_scheduler.encoded(*message);
    const auto *const first = std::get_if<LeavingMessage>(&result);
    return first == nullptr ? QList<LeavingMessage>()
                            : m_scheduler.beginRun(*first, m_run.maxLength());
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
    bool isFollowed = m_run.hasNext() || message.message.partsSent + 1 < message.parts.size();
    if (!isFollowed) {
        try {
            const std::optional<StoredMessage> next = m_queue.first();
            isFollowed = next && m_scheduler.isDue(*next);
        } catch (const StoreFailure &failure) {
            qCWarning(logDispatch) << "the queue can't be read:" << failure.text();
        }
    }
    return isFollowed ? Modem::Followers::Some : Modem::Followers::None;
}

void Sender::onPartAccepted(int reference)
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
        commit({[this, id = message.id, partsSent] { m_queue.endPart(id, partsSent); }, {}});
        return;
    }
    m_scheduler.setUnfinished(0);
    m_run.recordTaken({message, reference, m_clock.wallClockText()});
    if (m_run.hasNext() && mayBegin())
        send(m_run.takeNext());
    else
        commit({});
}

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
        fail(message, ErrorCode::noRespond);
    else if (isOfDevice(failure, message.id))
        giveUpDevice(current, failure);
    else if (failure.rule.treatment == Treatment::Permanent || !retry(message))
        fail(message, code);
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
    commit({[this, message, makesWay, begunAt = current.begunAt] {
                if (makesWay)
                    m_queue.postpone(message.id, message.attempts,
                                     m_clock.wallClockText(m_retries.messageDelay(1)));
                else
                    m_queue.cancelPart(message.id);
                m_scheduler.uncountPart(begunAt);
            },
            [this, makesWay] {
                if (makesWay)
                    m_outbox.reportQueueChange();
            }});
}

/// Reschedules the message.
/// @return false where it has no attempt or no time left
bool Sender::retry(const StoredMessage &message)
{
    const int attempts = message.attempts + 1;
    if (!m_retries.mayRetry(attempts))
        return false;
    const qint64 delay = m_retries.messageDelay(attempts);
    if (m_scheduler.isTooLate(message, m_clock.wallClockText(delay)))
        return false;
    commit({[this, id = message.id, attempts, delay] {
                m_queue.postpone(id, attempts, m_clock.wallClockText(delay));
            },
            [this] { m_outbox.reportQueueChange(); }});
    return true;
}

void Sender::fail(const StoredMessage &message, qint32 code)
{
    m_refused.remove(message.id);
    const auto outcome = std::make_shared<qint64>(0);
    commit({[this, id = message.id, code, outcome] {
                *outcome = m_queue.finish(id, code, std::nullopt, m_clock.wallClockText(), false);
            },
            [this, message, code, outcome] { m_outbox.reportFailed(message, *outcome, code); }});
}

bool Sender::mayBeInterrupted() const
{
    try {
        return !m_queue.interrupted().isEmpty();
    } catch (const StoreFailure &) {
        return true; // found out when the store can be read
    }
}

bool Sender::reportInterrupted()
{
    if (!mayBeInterrupted())
        return false;
    struct Report
    {
        QList<StoredMessage> messages;
        QList<qint64> outcomes;
    };
    const auto report = std::make_shared<Report>();
    commit({[this, report] {
                *report = {m_queue.interrupted(), {}};
                for (const StoredMessage &message : report->messages)
                    report->outcomes
                        << m_queue.finish(message.id, ErrorCode::noRespond, std::nullopt,
                                          m_clock.wallClockText(), false);
            },
            [this, report] {
                for (qsizetype i = 0; i < report->messages.size(); ++i)
                    m_outbox.reportFailed(report->messages.at(i), report->outcomes.at(i),
                                          ErrorCode::noRespond);
            }});
    return true;
}

void Sender::release()
{
    if (!m_releaseDue)
        return;
    try {
        m_queue.releaseBetweenParts();
        m_releaseDue = false;
        m_scheduler.setUnfinished(0);
    } catch (const StoreFailure &failure) {
        qCWarning(logDispatch) << "messages in progress could not be released:" << failure.text();
        m_outbox.noteStoreFailure(failure);
        m_wake.start(m_storeRetryMs);
    }
}

void Sender::forgetMessages()
{
    m_refused.clear();
    m_releaseDue = false;
    m_scheduler.setUnfinished(0);
}

Outbox::Entry Sender::entryOf(const SendingRun &run)
{
    return {[this, run] { run.keep(m_queue); },
            [this, taken = run.taken()] {
                auto others = m_queue.size() + static_cast<int>(taken.size());
                for (const SendingRun::Taken &each : taken)
                    m_outbox.reportSent(each.message, --others);
            }};
}

/// What the run leaves behind goes first.
void Sender::commit(const Outbox::Entry &entry)
{
    QList<LeavingMessage> next;
    const Outbox::FollowUp followUp = {[&] {
                                           next = beginFollowing();
                                           return !next.isEmpty();
                                       },
                                       [&] { startRun(next); }};
    m_outbox.commit(entryOf(m_run.end()).then(entry), followUp);
}

} // namespace norvane
