#include "engine/contract/ErrorCodes.h"
#include "service/dispatch/Dispatcher.h"

#include <QCryptographicHash>
#include <QDebug>

#include <algorithm>
#include <utility>

namespace {

QDateTime momentOf(const QString &due)
{
    return {QDate::fromString(due.left(10), Qt::ISODate), QTime::fromString(due.mid(11)), Qt::UTC};
}

} // namespace

void Dispatcher::sendFirst()
{
    try {
        const std::optional<QString> due = m_store.firstDue();
        if (!due)
            return;
        if (*due > m_clock.wallClockText()) {
            waitForFirst();
            return;
        }
        if (const std::optional<StoredMessage> message = m_store.first())
            sendPart(*message);
    } catch (const StoreFailure &failure) {
        // Nothing leaves without its commit: the store is looked at again shortly.
        qWarning() << "the queue can't be used:" << failure.text();
        m_wake.start(m_timings.storeAgainMs);
    }
}

void Dispatcher::waitForFirst()
{
    const std::optional<QString> due = m_store.firstDue();
    const qint64 left = m_clock.wallClock().msecsTo(momentOf(due.value_or(QString())));
    m_wake.start(static_cast<int>(std::clamp<qint64>(left, 1, m_timings.longestSleepMs)));
}

std::optional<QList<SubmitPart>> Dispatcher::encoded(StoredMessage &message)
{
    EncodeRequest request;
    request.phone = message.phone;
    request.text = message.text;
    request.reference = message.reference.value_or(0);
    auto result = encodeSubmit(request);
    if (const auto *const error = std::get_if<EncodeError>(&result)) {
        failMessage(message, errorCode(*error));
        return std::nullopt;
    }
    auto parts = std::get<QList<SubmitPart>>(result);
    if (parts.size() > 1 && !message.reference) {
        message.reference = m_store.nextReference();
        request.reference = *message.reference;
        parts = std::get<QList<SubmitPart>>(encodeSubmit(request));
    }
    return parts;
}

void Dispatcher::sendPart(const StoredMessage &due)
{
    StoredMessage message = due;
    if (message.dateIsOdd) {
        failMessage(message, ErrorCode::MethodParam);
        return;
    }
    const std::optional<QList<SubmitPart>> parts = encoded(message);
    if (!parts)
        return;
    const SubmitPart &part = parts->at(std::min<qsizetype>(message.partsSent, parts->size() - 1));
    m_store.beginPart(message.id, message.reference,
                      QCryptographicHash::hash(part.hex, QCryptographicHash::Sha256));
    m_current = Current{message, *parts};
    m_modem.send(part);
}

void Dispatcher::onPartAccepted(int reference)
{
    if (!m_current)
        return;
    const Current current = *std::exchange(m_current, std::nullopt);
    const int partsSent = current.message.partsSent + 1;
    endTrouble();
    settle([this, message = current.message, partsSent, reference,
            isLast = partsSent >= current.parts.size()] {
        if (!isLast) {
            m_store.endPart(message.id, partsSent);
            return;
        }
        m_store.finish(message.id, ErrorCode::Ok, reference, m_clock.wallClockText(), true);
        Q_EMIT sent(message.phone, message.text, m_store.size());
        Q_EMIT queueChanged();
    });
}

void Dispatcher::onPartFailed(const SendFailure &failure)
{
    if (!m_current)
        return;
    const StoredMessage message = std::exchange(m_current, std::nullopt)->message;
    const qint32 code = failure.rule.code;
    qInfo().noquote() << "a part was not sent:" << code << failure.number << failure.text;

    if (failure.mayBeDelivered) {
        warn(ErrorCode::NoRespond,
             QStringLiteral("no answer for the message to %1; it may have been delivered")
                 .arg(message.phone));
        failMessage(message, ErrorCode::NoRespond);
    } else if (failure.rule.treatment == Treatment::Device) {
        m_modem.close();
        tryDeviceLater(code, failure.text);
        settle([this, id = message.id] { m_store.cancelPart(id); });
    } else if (failure.rule.treatment == Treatment::Temporary &&
               m_retries.mayTryAgain(message.attempts + 1)) {
        settle([this, message] {
            const int attempts = message.attempts + 1;
            m_store.postpone(message.id, attempts,
                             m_clock.wallClockText(m_retries.messageDelay(attempts)));
            Q_EMIT queueChanged();
        });
    } else {
        failMessage(message, code);
    }
}

void Dispatcher::failMessage(const StoredMessage &message, qint32 code)
{
    settle([this, message, code] {
        const bool heard = m_heard;
        m_store.finish(message.id, code, std::nullopt, m_clock.wallClockText(), heard);
        if (heard)
            Q_EMIT sendingFailed(message.phone, message.text, code);
        Q_EMIT queueChanged();
    });
}

void Dispatcher::settle(const std::function<void()> &step)
{
    m_unsettled = step;
    trySettling();
}

void Dispatcher::trySettling()
{
    try {
        const std::function<void()> step = m_unsettled;
        step();
        m_unsettled = nullptr;
    } catch (const StoreFailure &failure) {
        qWarning() << "an outcome waits for the store:" << failure.text();
        m_settleAgain.start(m_timings.storeAgainMs);
        return;
    }
    // The next step begins from the event loop, so that a long queue is no deep recursion and
    // calls from outside get their turn.
    QMetaObject::invokeMethod(this, &Dispatcher::work, Qt::QueuedConnection);
}
