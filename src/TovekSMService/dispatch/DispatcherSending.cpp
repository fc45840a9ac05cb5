#include "TovekSMService/dispatch/Dispatcher.h"
#include "contract/ErrorCodes.h"

#include <QCryptographicHash>
#include <QDebug>

#include <algorithm>
#include <memory>
#include <utility>

void Dispatcher::sendFirst()
{
    try {
        const std::optional<StoredMessage> message = m_store.first();
        if (!message)
            return;
        if (!isDue(*message)) {
            waitFor(*message);
            return;
        }
        auto result = encoded(*message);
        if (const auto *const code = std::get_if<qint32>(&result)) {
            failMessage(*message, *code);
        } else if (!limitsAllowPart()) {
            m_wake.start(m_timings.longestSleepMs);
        } else {
            QList<LeavingMessage> run;
            m_store.together([&] { run = beginRun(std::get<LeavingMessage>(result)); });
            startRun(run);
        }
    } catch (const StoreFailure &failure) {
        // Nothing leaves without its commit: the store is looked at again shortly.
        qWarning() << "the queue can't be used:" << failure.text();
        noticeStoreFailure(failure);
        m_wake.start(m_timings.storeAgainMs);
    }
}

bool Dispatcher::isDue(const StoredMessage &message) const
{
    return isDue(message, m_clock.wallClockText());
}

bool Dispatcher::isDue(const StoredMessage &message, const QString &at)
{
    return message.dateIsOdd || message.deliveryDate <= at;
}

void Dispatcher::waitFor(const StoredMessage &message)
{
    const qint64 left = m_clock.wallClock().msecsTo(momentOf(message.deliveryDate));
    m_wake.start(static_cast<int>(std::clamp<qint64>(left, 1, m_timings.longestSleepMs)));
}

bool Dispatcher::isTooLate(const StoredMessage &message, const QString &at) const
{
    return m_settings.mostLate > 0 &&
           momentOf(message.originalDate).secsTo(momentOf(at)) > m_settings.mostLate;
}

bool Dispatcher::isLimited() const
{
    return m_settings.partsPerMinute > 0 || m_settings.partsPerDay > 0;
}

bool Dispatcher::limitsAllowPart() const
{
    if (!isLimited())
        return true;
    const PartCounts counts = m_store.partCounts(m_clock.wallClockText());
    return (m_settings.partsPerMinute == 0 || counts.inMinute < m_settings.partsPerMinute) &&
           (m_settings.partsPerDay == 0 || counts.inDay < m_settings.partsPerDay);
}

std::variant<LeavingMessage, qint32> Dispatcher::encoded(const StoredMessage &message)
{
    if (message.dateIsOdd)
        return ErrorCode::MethodParam;
    // A message that is on its way part by part is not cut off between two of them.
    if (message.id != m_unfinished && m_settings.mostLate > 0 &&
        isTooLate(message, m_clock.wallClockText()))
        return ErrorCode::ProtocolTimeout;
    auto result = m_encoder.parts(message);
    if (const auto *const error = std::get_if<EncodeError>(&result))
        return errorCode(*error);
    return LeavingMessage{message, std::get<QList<SubmitPart>>(result), {}};
}

void Dispatcher::begin(LeavingMessage &current)
{
    StoredMessage &message = current.message;
    if (current.parts.size() > 1 && !message.reference) {
        message.reference = m_store.nextReference();
        setReference(current.parts, *message.reference);
    }
    m_store.beginPart(message.id, message.reference,
                      QCryptographicHash::hash(current.part().hex, QCryptographicHash::Sha256));
    if (isLimited()) {
        current.begunAt = m_clock.wallClockText();
        m_store.countPart(current.begunAt);
    }
}

/// What leaves next: the first message, and behind it those that the device takes in a moment. They
/// are noted as leaving together.
QList<LeavingMessage> Dispatcher::beginRun(LeavingMessage first)
{
    begin(first);
    QList<LeavingMessage> run = {first};
    // Parts that are counted, or that others follow, begin one at a time.
    if (isLimited() || first.parts.size() > 1 || m_runPace.length() == 1)
        return run;
    const QString now = m_clock.wallClockText();
    for (const StoredMessage &message : m_store.first(m_runPace.length() - 1)) {
        auto result = encoded(message);
        auto *const next = std::get_if<LeavingMessage>(&result);
        if (!isDue(message, now) || next == nullptr || next->parts.size() > 1)
            break;
        begin(*next);
        run.append(*next);
    }
    return run;
}

QList<LeavingMessage> Dispatcher::beginFollowing()
{
    if (!mayBegin() || m_current)
        return {};
    const std::optional<StoredMessage> message = m_store.first();
    if (!message || !isDue(*message) || !limitsAllowPart())
        return {};
    auto result = encoded(*message);
    const auto *const first = std::get_if<LeavingMessage>(&result);
    return first == nullptr ? QList<LeavingMessage>() : beginRun(*first);
}

/// Whether nothing but messages has its turn.
bool Dispatcher::mayBegin() const
{
    return m_state.running && !m_state.finishing && m_device.isFree();
}

void Dispatcher::startRun(const QList<LeavingMessage> &messages)
{
    m_run = SendingRun(messages);
    m_runLength = static_cast<int>(messages.size());
    if (m_runLength > 1)
        m_runLate.start(m_timings.runLateMs);
    m_runFor.start();
    send(m_run.takeNext());
}

void Dispatcher::send(const LeavingMessage &message)
{
    m_current = message;
    m_modem.send(message.part(), followersOf(message));
}

/// Whether parts of this message or other messages are due behind the part. Where the modem has no
/// use for that, as in the middle of a row of messages, the store isn't asked.
Modem::Followers Dispatcher::followersOf(const LeavingMessage &message) const
{
    if (!m_modem.asksForFollowers())
        return Modem::Followers::None;
    bool isFollowed = m_run.hasNext() || message.message.partsSent + 1 < message.parts.size();
    if (!isFollowed) {
        try {
            const std::optional<StoredMessage> next = m_store.first();
            isFollowed = next && isDue(*next);
        } catch (const StoreFailure &failure) {
            qWarning() << "the queue can't be read:" << failure.text();
        }
    }
    return isFollowed ? Modem::Followers::Some : Modem::Followers::None;
}

void Dispatcher::onPartAccepted(int reference)
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
        m_unfinished = message.id;
        commit({[this, id = message.id, partsSent] { m_store.endPart(id, partsSent); }, {}});
        return;
    }
    m_unfinished = 0;
    m_run.noteTaken({message, reference, m_clock.wallClockText()});
    if (m_run.hasNext() && mayBegin()) {
        send(m_run.takeNext());
        return;
    }
    if (!m_run.hasNext())
        m_runPace.noteTaken(m_runLength, m_runFor.nsecsElapsed());
    commit({});
}

void Dispatcher::onPartFailed(const SendFailure &failure)
{
    if (!m_current)
        return;
    const LeavingMessage current = *std::exchange(m_current, std::nullopt);
    const StoredMessage &message = current.message;
    const qint32 code = failure.rule.code;
    m_unfinished = 0;
    m_runPace.forget();
    qInfo().noquote() << "a part was not sent:" << code << failure.number << failure.text;
    m_device.noteFailed(failure, isOfDevice(failure, message.id));

    if (failure.mayBeDelivered) {
        failMessage(message, ErrorCode::NoRespond);
    } else if (isOfDevice(failure, message.id)) {
        giveUpDevice(current, failure);
    } else if (failure.rule.treatment != Treatment::Permanent && tryAgain(message)) {
        return;
    } else {
        failMessage(message, code);
    }
}

/// Whether the failure says that the device would take no message. One that has taken others since
/// it refused this one refuses this one alone.
bool Dispatcher::isOfDevice(const SendFailure &failure, qint64 id) const
{
    const Treatment treatment = failure.rule.treatment;
    return treatment == Treatment::Device ||
           (treatment == Treatment::DeviceOrMessage && !m_refused.value(id, false));
}

/// The message keeps its attempts. Where it may be what the device refuses, it makes way for
/// another one, with which that shows.
void Dispatcher::giveUpDevice(const LeavingMessage &current, const SendFailure &failure)
{
    const StoredMessage &message = current.message;
    const bool isPaused = m_device.giveUp(failure);
    const bool makesWay = failure.rule.treatment == Treatment::DeviceOrMessage && isPaused;
    if (makesWay)
        m_refused.insert(message.id, false);
    commit({[this, message, makesWay, begunAt = current.begunAt] {
                if (makesWay)
                    m_store.postpone(message.id, message.attempts,
                                     m_clock.wallClockText(m_retries.messageDelay(1)));
                else
                    m_store.cancelPart(message.id);
                if (isLimited())
                    m_store.uncountPart(begunAt);
            },
            [this, makesWay] {
                if (makesWay)
                    Q_EMIT queueChanged();
            }});
}

bool Dispatcher::tryAgain(const StoredMessage &message)
{
    const int attempts = message.attempts + 1;
    if (!m_retries.mayTryAgain(attempts))
        return false;
    const qint64 delay = m_retries.messageDelay(attempts);
    if (isTooLate(message, m_clock.wallClockText(delay)))
        return false;
    commit({[this, id = message.id, attempts, delay] {
                m_store.postpone(id, attempts, m_clock.wallClockText(delay));
            },
            [this] { Q_EMIT queueChanged(); }});
    return true;
}

void Dispatcher::failMessage(const StoredMessage &message, qint32 code)
{
    m_refused.remove(message.id);
    const auto outcome = std::make_shared<qint64>(0);
    commit({[this, id = message.id, code, outcome] {
                *outcome = m_store.finish(id, code, std::nullopt, m_clock.wallClockText(), false);
            },
            [this, message, code, outcome] { m_outbox.reportFailed(message, *outcome, code); }});
}

Outbox::Entry Dispatcher::entryOf(const SendingRun &run)
{
    return {[this, run] { run.keep(m_store); },
            [this, taken = run.taken()] {
                auto others = m_store.size() + static_cast<int>(taken.size());
                for (const SendingRun::Taken &each : taken)
                    m_outbox.reportSent(each.message, --others);
            }};
}

/// What the run leaves behind goes first.
void Dispatcher::commit(const Outbox::Entry &entry)
{
    m_runLate.stop();
    const SendingRun run = std::exchange(m_run, {});
    QList<LeavingMessage> next;
    m_outbox.commit(entryOf(run).then(entry), {[&] {
                                                   next = beginFollowing();
                                                   return !next.isEmpty();
                                               },
                                               [&] { startRun(next); }});
}
