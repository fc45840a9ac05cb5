#include "TovekSMService/dispatch/OutcomeEntries.h"

#include "TovekSMService/dispatch/SendingRun.h"
#include "TovekSMService/store/MessageQueue.h"
#include "TovekSMService/time/Clock.h"
#include "contract/ErrorCodes.h"

#include <memory>

namespace norvane {

Settlement OutcomeEntries::settlementOf(const StoredMessage &message, Settlement::Fate fate) const
{
    Settlement settlement;
    settlement.message = message.id;
    settlement.fate = fate;
    settlement.epoch = message.epoch;
    settlement.phone = message.phone;
    settlement.text = message.text;
    settlement.partsSent = message.partsSent;
    settlement.at = m_clock.wallClockText();
    return settlement;
}

Settlement OutcomeEntries::postponed(const StoredMessage &message, Settlement::Fate fate,
                                     int attempts, qint64 delay) const
{
    Settlement settlement = settlementOf(message, fate);
    settlement.attempts = attempts;
    settlement.nextAttempt = m_clock.wallClockText(delay);
    return settlement;
}

Outbox::Entry
OutcomeEntries::entryOf(QList<Settlement> settlements,
                        const std::function<void(const QList<qint64> &outcomes)> &report)
{
    const auto outcomes = std::make_shared<QList<qint64>>();
    return {[this, settlements, outcomes] {
                return m_settler.settle(settlements).map([&](const QList<qint64> &kept) {
                    *outcomes = kept;
                });
            },
            [report, outcomes] {
                if (report)
                    report(*outcomes);
            },
            settlements};
}

Outbox::Entry OutcomeEntries::entryOf(const SendingRun &run)
{
    return entryOf(run.settlements(), [this, taken = run.taken()](const QList<qint64> &) {
        auto others = m_queue.size() + static_cast<int>(taken.size());
        for (const SendingRun::Taken &each : taken)
            m_outbox.reportSent(each.message, --others);
    });
}

Outbox::Entry OutcomeEntries::entryOfFailed(const StoredMessage &message, qint32 code)
{
    Settlement failed = settlementOf(message, Settlement::Fate::Failed);
    failed.code = code;
    return entryOf({failed}, [this, message, code](const QList<qint64> &outcomes) {
        // Whoever has taken over from this engine reports it.
        if (outcomes.constFirst() != 0)
            m_outbox.reportFailed(message, outcomes.constFirst(), code);
    });
}

Outbox::Entry OutcomeEntries::entryOfUnsendable(const StoredMessage &message, qint32 code)
{
    const auto outcome = std::make_shared<qint64>(0);
    return {[this, id = message.id, code, outcome] {
                return m_queue.finish(id, code, std::nullopt, m_clock.wallClockText(), false)
                    .map([&](qint64 kept) { *outcome = kept; });
            },
            [this, message, code, outcome] {
                if (*outcome != 0)
                    m_outbox.reportFailed(message, *outcome, code);
            }};
}

Outbox::Entry OutcomeEntries::entryOfKept(const QList<Settlement> &settlements)
{
    return entryOf(settlements, [this, settlements](const QList<qint64> &outcomes) {
        for (qsizetype at = 0; at < settlements.size(); ++at) {
            StoredMessage message;
            message.phone = settlements.at(at).phone;
            message.text = settlements.at(at).text;
            if (settlements.at(at).fate == Settlement::Fate::Sent)
                m_outbox.reportSent(message, m_queue.size());
            else if (outcomes.at(at) != 0)
                m_outbox.reportFailed(message, outcomes.at(at), settlements.at(at).code);
        }
    });
}

Outbox::Entry OutcomeEntries::entryOfInterrupted()
{
    const auto ended = std::make_shared<QList<Interrupted>>();
    return {[this, ended] {
                return finishInterrupted().map(
                    [&](const QList<Interrupted> &finished) { *ended = finished; });
            },
            [this, ended] {
                for (const Interrupted &each : *ended)
                    m_outbox.reportFailed(each.message, each.outcome, ErrorCode::noRespond);
            }};
}

StoreResult<QList<OutcomeEntries::Interrupted>> OutcomeEntries::finishInterrupted()
{
    const StoreResult<QList<StoredMessage>> messages = m_queue.interrupted();
    if (!messages)
        return failed(messages.error());
    QList<Interrupted> finished;
    for (const StoredMessage &message : *messages) {
        const StoreResult<qint64> outcome = m_queue.finish(
            message.id, ErrorCode::noRespond, std::nullopt, m_clock.wallClockText(), false);
        if (!outcome)
            return failed(outcome.error());
        finished.append({message, *outcome});
    }
    return finished;
}

} // namespace norvane
