#include "TovekSMService/reports/DeliveryReports.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/reports/DeliveryStatus.h"
#include "TovekSMService/reports/PduDigest.h"
#include "TovekSMService/reports/PhoneNumber.h"
#include "TovekSMService/store/Store.h"

#include <QSet>

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString localText(const QDateTime &moment, const QString &now)
{
    return moment.isValid() ? moment.toLocalTime().toString(u"yyyy-MM-ddTHH:mm:ss"_s) : now;
}

/// Whether no part is missing: one that left without the request is not among them.
bool areAll(const QList<PartState> &parts)
{
    QSet<int> numbers;
    for (const PartState &part : parts)
        numbers.insert(part.number);
    return numbers.size() >= parts.constFirst().total;
}

/// What the parts of a message make of it: one that was refused is enough, and all must be
/// delivered. The moment is that of the last word about it.
struct Summary
{
    DeliveryState state = DeliveryState::None;
    QString at;
};

Summary summaryOf(const QList<PartState> &parts)
{
    if (parts.isEmpty())
        return {};
    const auto any = [&parts](DeliveryState state) {
        return std::any_of(parts.begin(), parts.end(),
                           [state](const PartState &part) { return part.state == state; });
    };
    Summary summary;
    for (const PartState &part : parts)
        summary.at = std::max(summary.at, part.reportedAt);
    if (any(DeliveryState::Refused))
        summary.state = DeliveryState::Refused;
    else if (any(DeliveryState::Pending))
        summary = {DeliveryState::Pending, {}};
    else if (any(DeliveryState::Unknown) || !areAll(parts))
        summary.state = DeliveryState::Unknown;
    else
        summary.state = DeliveryState::Delivered;
    return summary;
}

} // namespace

StoreResult<> DeliveryReports::keepSent(const std::optional<SentPart> &part)
{
    return part ? m_store.sentParts().add(*part) : StoreResult<>();
}

StoreResult<> DeliveryReports::keepOnlySent(qint64 message, const std::optional<SentPart> &part)
{
    if (!part)
        return {};
    return keepSent(part).and_then([&] { return m_store.outcomes().setPending(message); });
}

StoreResult<> DeliveryReports::keepLastSent(qint64 message, const std::optional<SentPart> &part)
{
    return keepSent(part).and_then([&]() -> StoreResult<> {
        const StoreResult<std::optional<DeliveryChange>> change =
            part && part->total == 1 ? put(message, {PartState()}) : refresh(message);
        return change ? StoreResult<>() : failed(change.error());
    });
}

StoreResult<std::optional<OpenPart>> DeliveryReports::partOf(const StatusReportPdu &report,
                                                             const QString &sim) const
{
    // A number that is the same to the letter goes before one that has a prefix more or less.
    SentParts &parts = m_store.sentParts();
    StoreResult<std::optional<OpenPart>> part =
        parts.latestOpen(sim, report.reference, report.recipient);
    if (!part || *part)
        return part;
    return parts.open(sim, report.reference).map([&](const QList<OpenPart> &others) {
        const auto found = std::find_if(others.begin(), others.end(), [&](const OpenPart &other) {
            return PhoneNumber::isSameRecipient(other.phone, report.recipient);
        });
        return found == others.end() ? std::nullopt : std::optional(*found);
    });
}

StoreResult<std::optional<DeliveryChange>> DeliveryReports::take(const QByteArray &pdu,
                                                                 const StatusReportPdu &report,
                                                                 const QString &sim,
                                                                 const QString &now)
{
    using Change = std::optional<DeliveryChange>;
    return m_store.database().together([&]() -> StoreResult<Change> {
        const StoreResult<std::optional<OpenPart>> part = partOf(report, sim);
        if (!part)
            return failed(part.error());
        const std::optional<qint64> id = *part ? std::optional((*part)->id) : std::nullopt;
        const StoreResult<bool> isNew =
            m_store.sentParts().keepReport(pduDigest(pdu, sim), now, id, pdu);
        if (!isNew)
            return failed(isNew.error());
        if (!*isNew)
            return Change();
        if (!*part) {
            qCInfo(logDispatch) << "a status report belongs to nothing that was sent: reference"
                                << report.reference << "status" << report.status;
            return Change();
        }
        return takeFor(**part, report, now);
    });
}

StoreResult<std::optional<DeliveryChange>>
DeliveryReports::takeFor(const OpenPart &part, const StatusReportPdu &report, const QString &now)
{
    const DeliveryStatus status = DeliveryStatus::of(report.status);
    const QString at = localText(report.at, now);
    const StoreResult<> set =
        m_store.sentParts().setState(part.id, status.state, status.isFinal(), report.status, at);
    if (!set)
        return failed(set.error());
    if (part.total > 1)
        return refresh(part.message);
    return put(part.message, {{1, 1, status.state, report.status, at}});
}

StoreResult<std::optional<DeliveryChange>> DeliveryReports::refresh(qint64 message)
{
    return m_store.sentParts().ofMessage(message).and_then(
        [&](const QList<PartState> &parts) { return put(message, parts); });
}

StoreResult<std::optional<DeliveryChange>> DeliveryReports::put(qint64 message,
                                                                const QList<PartState> &parts)
{
    using Change = std::optional<DeliveryChange>;
    const Summary summary = summaryOf(parts);
    return m_store.outcomes()
        .setDelivery(message, summary.state, summary.at)
        .map([&](bool changed) {
            return changed ? Change({message, summary.state, summary.at}) : Change();
        });
}

StoreResult<QList<DeliveryChange>> DeliveryReports::expire(const QString &before,
                                                           const QString &now, int max)
{
    return m_store.database().together([&]() -> StoreResult<QList<DeliveryChange>> {
        const StoreResult<QList<qint64>> messages = m_store.sentParts().overdue(before, max);
        if (!messages)
            return failed(messages.error());
        QList<DeliveryChange> changes;
        for (const qint64 message : *messages) {
            const auto change =
                m_store.sentParts().giveUp(message, now).and_then([&] { return refresh(message); });
            if (!change)
                return failed(change.error());
            if (*change)
                changes.append(**change);
        }
        return changes;
    });
}

} // namespace norvane
