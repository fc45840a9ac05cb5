#include "TovekSMService/dispatch/Settler.h"

#include "TovekSMService/reports/DeliveryReports.h"
#include "TovekSMService/store/MessageQueue.h"

#include <QScopeGuard>

namespace norvane {

namespace {

using Fate = Settlement::Fate;

/// Settlements one behind the other that can be carried out as one: of the same fate and epoch.
qsizetype endOfRow(const QList<Settlement> &settlements, qsizetype first)
{
    qsizetype end = first + 1;
    while (end < settlements.size() && settlements.at(end).fate == settlements.at(first).fate &&
           settlements.at(end).epoch == settlements.at(first).epoch)
        ++end;
    return end;
}

} // namespace

StoreResult<QList<qint64>> Settler::settle(const QList<Settlement> &settlements)
{
    const auto present = qScopeGuard([this] { m_queue.settleAs(0); });
    QList<qint64> outcomes(settlements.size(), 0);
    for (qsizetype first = 0; first < settlements.size();) {
        const qsizetype end = endOfRow(settlements, first);
        const QList<Settlement> row = settlements.sliced(first, end - first);
        m_queue.settleAs(row.constFirst().epoch);
        if (row.constFirst().fate == Fate::Sent) {
            if (const StoreResult<> settled = settleSent(row); !settled)
                return failed(settled.error());
        } else {
            for (qsizetype at = 0; at < row.size(); ++at) {
                const StoreResult<qint64> outcome = settleOther(row.at(at));
                if (!outcome)
                    return failed(outcome.error());
                outcomes[first + at] = *outcome;
            }
        }
        first = end;
    }
    return outcomes;
}

StoreResult<> Settler::settleSent(const QList<Settlement> &settlements)
{
    QList<SentMessage> sent;
    for (const Settlement &each : settlements)
        sent.append({each.message, each.networkReference, each.at});
    StoreResult<> settled = m_queue.finishSent(sent);
    for (auto each = settlements.cbegin(); settled && each != settlements.cend(); ++each)
        settled = each->partsSent > 0 ? m_reports.keepLastSent(each->message, each->part)
                                      : m_reports.keepOnlySent(each->message, each->part);
    return settled;
}

/// One that was kept at home by an earlier version doesn't say why.
StoreResult<> Settler::keepAttempt(const Settlement &settlement)
{
    if (settlement.code == 0)
        return {};
    return m_queue.keepAttempt(settlement.message,
                               {settlement.at, settlement.partsSent + 1, settlement.code});
}

StoreResult<qint64> Settler::settleOther(const Settlement &settlement)
{
    const auto noOutcome = [] { return qint64{0}; };
    const qint64 id = settlement.message;
    switch (settlement.fate) {
    case Fate::Sent:
        break;
    case Fate::PartTaken:
        return m_queue.endPart(id, settlement.partsSent)
            .and_then([&] { return m_reports.keepSent(settlement.part); })
            .map(noOutcome);
    case Fate::Failed:
        return m_queue.finish(id, settlement.code, std::nullopt, settlement.at, false);
    case Fate::Postponed:
        return m_queue.postpone(id, settlement.attempts, settlement.nextAttempt)
            .and_then([&] { return keepAttempt(settlement); })
            .map(noOutcome);
    case Fate::MadeWay:
        return m_queue.makeWay(id, settlement.attempts, settlement.nextAttempt)
            .and_then([&] { return keepAttempt(settlement); })
            .map(noOutcome);
    case Fate::Returned:
        return m_queue.cancel({id}).map(noOutcome);
    }
    return qint64{0};
}

} // namespace norvane
