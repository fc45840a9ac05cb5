#include "TovekSMService/store/Outcomes.h"

#include "TovekSMService/store/FilteredPage.h"
#include "TovekSMService/store/StoreDatabase.h"
#include "TovekSMService/store/StoreQueries.h"

namespace norvane {

namespace {

Outcome outcomeOf(const StoreRow &row)
{
    return {row.value(0).toLongLong(), row.value(1).toString(), row.value(2).toString(),
            row.value(3).toInt()};
}

OutcomeRow outcomeRowOf(const StoreRow &row)
{
    OutcomeRow outcome{row.value(0).toLongLong(),
                       row.value(1).toString(),
                       row.value(2).toString(),
                       row.value(3).toString(),
                       row.value(4).toString(),
                       row.value(5).toInt(),
                       row.value(6).toString(),
                       static_cast<DeliveryState>(row.value(7).toInt()),
                       {}};
    if (outcome.delivery == DeliveryState::Delivered)
        outcome.deliveredAt = row.value(8).toString();
    return outcome;
}

LastFailure failureOf(const StoreRow &row)
{
    return {row.value(0).toString(), row.value(1).toInt()};
}

} // namespace

StoreResult<qint64> Outcomes::keep(qint64 message, qint32 code, std::optional<int> networkReference,
                                   const QString &at, bool reported)
{
    return m_database.insert(StoreQueries::keepOutcome,
                             {code, networkReference ? QVariant(*networkReference) : QVariant(), at,
                              reported ? 1 : 0, message});
}

StoreResult<bool> Outcomes::setDelivery(qint64 message, DeliveryState state, const QString &at)
{
    return m_database
        .writeAndCount("UPDATE outcome SET delivery = ?, delivered_at = ? WHERE message_id = ? AND "
                       "code = 1 AND delivery <> ? AND (delivery = 0 OR ? <> 1)",
                       {static_cast<int>(state), at, message, static_cast<int>(state),
                        static_cast<int>(state)})
        .map([](int rows) { return rows > 0; });
}

StoreResult<> Outcomes::setPending(qint64 message)
{
    return m_database.write(
        "UPDATE outcome SET delivery = ? WHERE message_id = ? AND code = 1 AND delivery = 0",
        {static_cast<int>(DeliveryState::Pending), message});
}

StoreResult<QList<Outcome>> Outcomes::unreportedFailures() const
{
    if (m_reporter)
        return m_database.rows("SELECT id, phone, text, code FROM outcome "
                               "WHERE reported = 0 AND reporter = ? ORDER BY id",
                               {m_reporter()}, outcomeOf);
    return m_database.rows(StoreQueries::unreportedFailures, {}, outcomeOf);
}

StoreResult<> Outcomes::markReported(const QList<qint64> &outcomes)
{
    if (outcomes.isEmpty())
        return {};
    return m_database.together([&] {
        StoreResult<> marked;
        for (auto id = outcomes.cbegin(); marked && id != outcomes.cend(); ++id)
            marked = m_database.write("UPDATE outcome SET reported = 1 WHERE id = ?", {*id});
        return marked;
    });
}

StoreResult<int> Outcomes::prune(const QString &before, int max)
{
    return m_database.together([&] {
        return m_database.write(StoreQueries::noteForgotten, {before, max}).and_then([&] {
            return m_database.writeAndCount(StoreQueries::pruneOutcomes, {before, max});
        });
    });
}

StoreResult<std::optional<LastFailure>> Outcomes::lastFailure() const
{
    // A look back of bounded length: the log is not in the order of codes.
    return m_database.row("SELECT at, code FROM outcome WHERE code <> 1 AND "
                          "id > (SELECT MAX(id) FROM outcome) - 1000 ORDER BY id DESC LIMIT 1",
                          {}, failureOf);
}

StoreResult<QList<OutcomeRow>> Outcomes::list(const MessageFilter &filter, qint64 offset,
                                              qint64 limit) const
{
    return m_database.rows(
        "SELECT message_id, at, delivery_date, phone, text, code, network_reference, delivery, "
        "delivered_at FROM outcome " NORVANE_FILTERED_PAGE,
        filteredPage(filter, offset, limit), outcomeRowOf);
}

StoreResult<int> Outcomes::count(DeliveryState state) const
{
    // The index holds what was asked about alone; the second condition tells that it will do.
    return m_database
        .row("SELECT COUNT(*) FROM outcome WHERE delivery = ? AND delivery > 1",
             {static_cast<int>(state)}, [](const StoreRow &row) { return row.value(0).toInt(); })
        .map([](std::optional<int> count) { return count.value_or(0); });
}

} // namespace norvane
