#include "TovekSMService/history/HistorySteps.h"

#include "TovekSMService/store/StoreDatabase.h"
#include "contract/DeliveryState.h"
#include "contract/ErrorCodes.h"

#include <algorithm>
#include <limits>
#include <tuple>

namespace norvane {

namespace {

constexpr qint32 unknownStatus = -1;

QString numberOf(const QVariant &value)
{
    return value.isNull() ? QString() : QString::number(value.toInt());
}

HistoryStep stepOf(DeliveryState state)
{
    switch (state) {
    case DeliveryState::Delivered:
        return HistoryStep::Delivered;
    case DeliveryState::Refused:
        return HistoryStep::Refused;
    case DeliveryState::Pending:
        return HistoryStep::Pending;
    case DeliveryState::None:
    case DeliveryState::Unknown:
        break;
    }
    return HistoryStep::Unknown;
}

HistoryEvent queuedAt(const StoreRow &row)
{
    return {row.value(0).toString(), HistoryStep::Queued, 0, 0, {}};
}

} // namespace

StoreResult<QList<HistoryEvent>> HistorySteps::of(qint64 message) const
{
    if (message == 0 || message == std::numeric_limits<qint64>::min())
        return QList<HistoryEvent>();
    const auto steps = [&] { return message > 0 ? collected(message) : ofOutcome(-message); };
    return m_database.look(steps).map([](QList<HistoryEvent> events) {
        std::stable_sort(events.begin(), events.end(),
                         [](const HistoryEvent &one, const HistoryEvent &other) {
                             return std::tie(one.at, one.step, one.part) <
                                    std::tie(other.at, other.step, other.part);
                         });
        return events;
    });
}

StoreResult<QList<HistoryEvent>> HistorySteps::collected(qint64 message) const
{
    const auto queued = m_database.row("SELECT queued_at FROM message WHERE id = ? UNION ALL "
                                       "SELECT queued_at FROM outcome WHERE message_id = ?",
                                       {message, message}, queuedAt);
    if (!queued)
        return failed(queued.error());
    QList<HistoryEvent> events;
    if (!*queued)
        return events;
    events.append(**queued);
    return addAttempts(message, events)
        .and_then([&] { return addParts(message, events); })
        .and_then([&] {
            return addOutcome("SELECT at, code, network_reference FROM outcome "
                              "WHERE message_id = ?",
                              message, events);
        })
        .map([&] { return events; });
}

/// Of a message that never had an id here nothing else is known.
StoreResult<QList<HistoryEvent>> HistorySteps::ofOutcome(qint64 outcome) const
{
    QList<HistoryEvent> events;
    return m_database
        .each("SELECT queued_at FROM outcome WHERE id = ? AND message_id = 0", {outcome},
              [&events](const StoreRow &row) {
                  events.append(queuedAt(row));
                  return true;
              })
        .and_then([&] {
            return addOutcome("SELECT at, code, network_reference FROM outcome "
                              "WHERE id = ? AND message_id = 0",
                              outcome, events);
        })
        .map([&] { return events; });
}

StoreResult<> HistorySteps::addAttempts(qint64 message, QList<HistoryEvent> &events) const
{
    return m_database.each("SELECT at, part, code FROM attempt WHERE message_id = ?", {message},
                           [&events](const StoreRow &row) {
                               events.append({row.value(0).toString(),
                                              HistoryStep::Attempt,
                                              row.value(1).toInt(),
                                              row.value(2).toInt(),
                                              {}});
                               return true;
                           });
}

StoreResult<> HistorySteps::addParts(qint64 message, QList<HistoryEvent> &events) const
{
    return m_database.each(
        "SELECT at, number, reference, state, status, reported_at FROM sent_part "
        "WHERE message_id = ? ORDER BY id",
        {message}, [&events](const StoreRow &row) {
            const int number = row.value(1).toInt();
            const QString reference = numberOf(row.value(2));
            events.append(
                {row.value(0).toString(), HistoryStep::Part, number, ErrorCode::ok, reference});
            const QString reportedAt = row.value(5).toString();
            if (!reportedAt.isEmpty())
                events.append({reportedAt, stepOf(static_cast<DeliveryState>(row.value(3).toInt())),
                               number, row.value(4).isNull() ? unknownStatus : row.value(4).toInt(),
                               reference});
            return true;
        });
}

StoreResult<> HistorySteps::addOutcome(const char *statement, qint64 id,
                                       QList<HistoryEvent> &events) const
{
    return m_database.each(statement, {id}, [&events](const StoreRow &row) {
        const qint32 code = row.value(1).toInt();
        events.append({row.value(0).toString(),
                       code == ErrorCode::ok ? HistoryStep::Sent : HistoryStep::Failed, 0, code,
                       numberOf(row.value(2))});
        return true;
    });
}

} // namespace norvane
