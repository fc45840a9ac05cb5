#include "TovekSMService/dispatch/Scheduler.h"

#include "TovekSMService/dispatch/ValidityPeriod.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"
#include "contract/ErrorCodes.h"

#include <QCryptographicHash>

#include <utility>

namespace norvane {

Scheduler::Scheduler(Store &store, const Clock &clock, const EngineSettings &settings,
                     PartEncoder::Encode encode)
    : m_store(store), m_clock(clock), m_settings(settings),
      m_encoder(relativeValidity(settings.validityPeriod), std::move(encode))
{}

bool Scheduler::isDue(const StoredMessage &message) const
{
    return isDue(message, m_clock.wallClockText());
}

bool Scheduler::isDue(const StoredMessage &message, const QString &at)
{
    return message.dateIsOdd || message.deliveryDate <= at;
}

bool Scheduler::isTooLate(const StoredMessage &message, const QString &at) const
{
    return m_settings.maxLateness > 0 &&
           momentOf(message.originalDate).secsTo(momentOf(at)) > m_settings.maxLateness;
}

bool Scheduler::isLimited() const
{
    return m_settings.partsPerMinute > 0 || m_settings.partsPerDay > 0;
}

bool Scheduler::limitsAllowPart() const
{
    if (!isLimited())
        return true;
    const PartCounts counts = m_store.parts().counts(m_clock.wallClockText());
    return (m_settings.partsPerMinute == 0 || counts.inMinute < m_settings.partsPerMinute) &&
           (m_settings.partsPerDay == 0 || counts.inDay < m_settings.partsPerDay);
}

std::variant<LeavingMessage, qint32> Scheduler::encoded(const StoredMessage &message)
{
    if (message.dateIsOdd)
        return ErrorCode::methodParam;
    // A message that is on its way part by part is not cut off between two of them.
    if (message.id != m_unfinished && m_settings.maxLateness > 0 &&
        isTooLate(message, m_clock.wallClockText()))
        return ErrorCode::protocolTimeout;
    auto result = m_encoder.parts(message);
    if (const auto *const error = std::get_if<EncodeError>(&result))
        return errorCode(*error);
    return LeavingMessage{message, std::get<QList<SubmitPart>>(result), {}};
}

QList<LeavingMessage> Scheduler::beginRun(LeavingMessage first, int maxLength)
{
    QList<LeavingMessage> run;
    m_store.database().together([&] { run = begin(std::move(first), maxLength); });
    return run;
}

QList<LeavingMessage> Scheduler::begin(LeavingMessage first, int maxLength)
{
    begin(first);
    QList<LeavingMessage> run = {first};
    // Parts that are counted, or that others follow, begin one at a time.
    if (isLimited() || first.parts.size() > 1 || maxLength == 1)
        return run;
    const QString now = m_clock.wallClockText();
    for (const StoredMessage &message : m_store.queue().first(maxLength - 1)) {
        auto result = encoded(message);
        auto *const next = std::get_if<LeavingMessage>(&result);
        if (!isDue(message, now) || next == nullptr || next->parts.size() > 1)
            break;
        begin(*next);
        run.append(*next);
    }
    return run;
}

void Scheduler::begin(LeavingMessage &leaving)
{
    StoredMessage &message = leaving.message;
    if (leaving.parts.size() > 1 && !message.reference) {
        message.reference = m_store.settings().nextReference();
        setReference(leaving.parts, *message.reference);
    }
    m_store.queue().beginPart(
        message.id, message.reference,
        QCryptographicHash::hash(leaving.part().hex, QCryptographicHash::Sha256));
    if (isLimited()) {
        leaving.begunAt = m_clock.wallClockText();
        m_store.parts().count(leaving.begunAt);
    }
}

void Scheduler::uncountPart(const QString &begunAt)
{
    if (isLimited())
        m_store.parts().uncount(begunAt);
}

} // namespace norvane
