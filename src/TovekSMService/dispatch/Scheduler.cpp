#include "TovekSMService/dispatch/Scheduler.h"

#include "TovekSMService/dispatch/ValidityPeriod.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"
#include "contract/ErrorCodes.h"

#include <QCryptographicHash>

#include <utility>

namespace norvane {

Scheduler::Scheduler(Store &store, const Clock &clock, const EngineSettings &settings,
                     PartEncoder::Encode encode, Unit unit)
    : m_store(store), m_clock(clock), m_settings(settings),
      m_encoder(relativeValidity(settings.validityPeriod), std::move(encode),
                settings.delivery ? PartEncoder::Reports::Asked : PartEncoder::Reports::None),
      m_unit(std::move(unit))
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

StoreResult<bool> Scheduler::limitsAllow(int parts) const
{
    if (!isLimited())
        return true;
    const auto fits = [parts](qint64 count, qint64 max) {
        return max == 0 || count == 0 || count + parts <= max;
    };
    return m_store.parts().counts(m_clock.wallClockText()).map([&](const PartCounts &counts) {
        return fits(counts.inMinute, m_settings.partsPerMinute) &&
               fits(counts.inDay, m_settings.partsPerDay);
    });
}

std::variant<LeavingMessage, qint32> Scheduler::encoded(const StoredMessage &message)
{
    if (message.dateIsOdd)
        return ErrorCode::methodParam;
    // A message that is on its way part by part is not cut off between two of them.
    if (message.id != m_unfinished && m_settings.maxLateness > 0 &&
        isTooLate(message, m_clock.wallClockText()))
        return ErrorCode::protocolTimeout;
    const auto parts = m_encoder.parts(message);
    if (!parts)
        return errorCode(parts.error());
    const bool isWhole = m_unit() == Modem::Unit::Message;
    if (isWhole && message.partsSent > 0) // another device sent some of it
        return ErrorCode::noRespond;
    return LeavingMessage{message, isWhole ? QList{wholeOf(message, *parts)} : *parts, {}};
}

SubmitPart Scheduler::wholeOf(const StoredMessage &message, const QList<SubmitPart> &parts) const
{
    const std::optional<quint8> validity = relativeValidity(m_settings.validityPeriod);
    SubmitPart whole;
    for (const SubmitPart &part : parts)
        whole.hex += part.hex;
    whole.asksForReport = m_settings.delivery;
    whole.whole =
        WholeMessage{message.phone, message.text, validity ? validityMinutes(*validity) : 0,
                     static_cast<int>(parts.size())};
    return whole;
}

StoreResult<QList<LeavingMessage>> Scheduler::beginRun(const LeavingMessage &first, int maxLength)
{
    QList<LeavingMessage> run = {first};
    // Parts that are counted, or that others follow, begin one at a time.
    const bool isAlone = isLimited() || first.parts.size() > 1;
    return m_store.database()
        .together([&] {
            return begin(run.first()).and_then([&] {
                return isAlone ? StoreResult<>() : beginSingles(run, maxLength - 1);
            });
        })
        .map([&] { return run; });
}

/// Adds those messages to the run, `max` at most, that go next, are due and of one part.
StoreResult<> Scheduler::beginSingles(QList<LeavingMessage> &run, int max)
{
    if (max < 1)
        return {};
    const StoreResult<QList<StoredMessage>> messages = m_store.queue().first(max);
    if (!messages)
        return failed(messages.error());
    const QString now = m_clock.wallClockText();
    for (const StoredMessage &message : *messages) {
        auto result = encoded(message);
        auto *const next = std::get_if<LeavingMessage>(&result);
        if (!isDue(message, now) || next == nullptr || next->parts.size() > 1)
            break;
        if (StoreResult<> begun = begin(*next); !begun)
            return begun;
        run.append(*next);
    }
    return {};
}

StoreResult<> Scheduler::begin(LeavingMessage &leaving)
{
    return tieParts(leaving)
        .and_then([&] {
            const StoredMessage &message = leaving.message;
            const QByteArray hash =
                QCryptographicHash::hash(leaving.part().hex, QCryptographicHash::Sha256);
            return m_store.queue().beginPart(message.id, message.reference, hash);
        })
        .and_then([&]() -> StoreResult<> {
            if (!isLimited())
                return {};
            leaving.begunAt = m_clock.wallClockText();
            return m_store.parts().count(leaving.begunAt, leaving.part().count());
        });
}

StoreResult<> Scheduler::tieParts(LeavingMessage &leaving)
{
    if (leaving.parts.size() < 2 || leaving.message.reference)
        return {};
    return m_store.settings().nextReference().map([&](quint16 reference) {
        leaving.message.reference = reference;
        setReference(leaving.parts, reference);
    });
}

StoreResult<> Scheduler::uncount(const LeavingMessage &leaving)
{
    return isLimited() ? m_store.parts().uncount(leaving.begunAt, leaving.part().count())
                       : StoreResult<>();
}

} // namespace norvane
