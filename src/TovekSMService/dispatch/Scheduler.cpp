#include "TovekSMService/dispatch/Scheduler.h"

#include "TovekSMService/dispatch/ValidityPeriod.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"
#include "contract/ErrorCodes.h"

#include <QCryptographicHash>

#include <algorithm>
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

StoreResult<Scheduler::Next> Scheduler::beginNext(int maxLength)
{
    return m_store.database().together([&] {
        return m_store.queue()
            .first(isLimited() ? 1 : std::max(maxLength, 1))
            .and_then([&](const QList<StoredMessage> &messages) { return chosen(messages); })
            .and_then([&](Next next) { return begin(next.run).map([&] { return next; }); });
    });
}

StoreResult<Scheduler::Next> Scheduler::chosen(const QList<StoredMessage> &messages)
{
    Next next;
    if (messages.isEmpty())
        return next;
    next.first = messages.constFirst();
    next.isDue = isDue(*next.first);
    if (!next.isDue)
        return next;
    const auto result = encoded(*next.first);
    if (const auto *const code = std::get_if<qint32>(&result)) {
        next.failure = *code;
        return next;
    }
    const auto &leaving = std::get<LeavingMessage>(result);
    return limitsAllow(leaving.part().count()).map([&](bool isAllowed) {
        next.isLimited = !isAllowed;
        if (isAllowed)
            next.run.append(leaving);
        // Parts that are counted, or that others follow, begin one at a time.
        if (isAllowed && !isLimited() && leaving.parts.size() == 1)
            addSingles(next.run, messages);
        return next;
    });
}

/// Adds those messages to the run, behind the first, that go next, are due and of one part.
void Scheduler::addSingles(QList<LeavingMessage> &run, const QList<StoredMessage> &messages)
{
    const QString now = m_clock.wallClockText();
    for (qsizetype at = 1; at < messages.size(); ++at) {
        auto result = encoded(messages.at(at));
        auto *const next = std::get_if<LeavingMessage>(&result);
        if (!isDue(messages.at(at), now) || next == nullptr || next->parts.size() > 1)
            break;
        run.append(*next);
    }
}

StoreResult<> Scheduler::begin(QList<LeavingMessage> &run)
{
    QList<BegunPart> parts;
    for (LeavingMessage &leaving : run) {
        if (StoreResult<> tied = tieParts(leaving); !tied)
            return tied;
        if (StoreResult<> counted = count(leaving); !counted)
            return counted;
        parts.append({leaving.message.id, leaving.message.reference,
                      QCryptographicHash::hash(leaving.part().hex, QCryptographicHash::Sha256)});
    }
    return parts.isEmpty() ? StoreResult<>() : m_store.queue().begin(parts);
}

StoreResult<> Scheduler::count(LeavingMessage &leaving)
{
    if (!isLimited())
        return {};
    leaving.begunAt = m_clock.wallClockText();
    const int parts = leaving.part().count();
    // Counts lie in the engine's own file, which a shared database knows nothing of.
    if (m_store.isShared())
        m_store.database().onRollback([this, at = leaving.begunAt, parts] {
            static_cast<void>(m_store.parts().uncount(at, parts));
        });
    return m_store.parts().count(leaving.begunAt, parts);
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
    if (!isLimited())
        return {};
    const int parts = leaving.part().count();
    if (m_store.isShared())
        m_store.database().onRollback([this, at = leaving.begunAt, parts] {
            static_cast<void>(m_store.parts().count(at, parts));
        });
    return m_store.parts().uncount(leaving.begunAt, parts);
}

} // namespace norvane
