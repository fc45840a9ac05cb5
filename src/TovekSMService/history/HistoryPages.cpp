#include "TovekSMService/history/HistoryPages.h"

#include "TovekSMService/history/HistoryBounds.h"
#include "TovekSMService/history/SearchedText.h"
#include "contract/DeliveryState.h"

#include <algorithm>

namespace norvane {

namespace {

// The state of an outcome, as MessageState.
#define NORVANE_STATE                                                                              \
    "CASE WHEN code = -39 THEN 32 WHEN code <> 1 THEN 16 WHEN delivery = 2 THEN 4 "                \
    "WHEN delivery = 3 THEN 8 ELSE 2 END"
#define NORVANE_WINDOW(table, more)                                                                \
    "SELECT min(id), count(*) FROM (SELECT id FROM " table " WHERE id < ? AND id >= ?" more        \
    " ORDER BY id DESC LIMIT ?) AS newest"
#define NORVANE_WAITING                                                                            \
    "SELECT id, id, queued_at, delivery_date, phone, text, 1, 0, '' FROM message WHERE "
#define NORVANE_OUTCOME                                                                            \
    "SELECT id, message_id, at, delivery_date, phone, text, " NORVANE_STATE                        \
    ", code, delivered_at FROM outcome WHERE "
#define NORVANE_OUTCOMES(more)                                                                     \
    NORVANE_OUTCOME "id < ? AND id >= ? AND at >= ? AND (? = '' OR at < ?) AND (" NORVANE_STATE    \
                    ") & ? <> 0" more " ORDER BY id DESC"
// As the index has it that holds these alone.
#define NORVANE_UNSUCCESSFUL " AND (code <> 1 OR delivery = 3)"

constexpr NewestFirst::Statements waitingMessages = {
    NORVANE_WINDOW("message", ""),
    NORVANE_WAITING "id < ? AND id >= ? AND queued_at >= ? AND (? = '' OR queued_at < ?) "
                    "ORDER BY id DESC"};
constexpr NewestFirst::Statements allOutcomes = {NORVANE_WINDOW("outcome", ""),
                                                 NORVANE_OUTCOMES("")};
constexpr NewestFirst::Statements unsuccessfulOutcomes = {
    NORVANE_WINDOW("outcome", NORVANE_UNSUCCESSFUL), NORVANE_OUTCOMES(NORVANE_UNSUCCESSFUL)};

constexpr char waitingMessage[] = NORVANE_WAITING "id = ?";
constexpr char outcomeOfMessage[] = NORVANE_OUTCOME "message_id = ?";

constexpr MessageStates unsuccessful =
    MessageStates(MessageState::Refused) | MessageState::Failed | MessageState::InDoubt;

constexpr MessageStates left = unsuccessful | MessageState::Sent | MessageState::Delivered;

NewestFirst::Range cut(NewestFirst::Range range, const NewestFirst::Range &other)
{
    return {std::min(range.below, other.below), std::max(range.low, other.low)};
}

} // namespace

HistoryRow HistoryPages::rowOf(const StoreRow &row)
{
    HistoryRow message{row.value(1).toLongLong(), row.value(2).toString(),
                       row.value(3).toString(),   row.value(4).toString(),
                       row.value(5).toString(),   static_cast<MessageState>(row.value(6).toUInt()),
                       row.value(7).toInt(),      {}};
    if (message.state == MessageState::Delivered)
        message.deliveredAt = row.value(8).toString();
    return message;
}

HistoryPages::Found HistoryPages::foundOf(const StoreRow &row)
{
    return {row.value(0).toLongLong(), rowOf(row)};
}

StoreResult<HistoryPage> HistoryPages::page(const HistoryFilter &filter, const HistoryCursor &after,
                                            const std::optional<HistoryCursor> &until,
                                            int maxRows) const
{
    // A message that goes from the queue to the outcomes meanwhile is in one of them.
    return m_database.look([&] {
        return merged(filter, after, until.value_or(HistoryCursor{0, 0}), maxRows);
    });
}

/// Of two lists the later moment goes first. A clock that was put back makes no difference to what
/// comes before what within each of them.
StoreResult<HistoryPage> HistoryPages::merged(const HistoryFilter &filter,
                                              const HistoryCursor &after,
                                              const HistoryCursor &until, int maxRows) const
{
    const StoreResult<Finds> queue = waiting(filter, {after.queue, until.queue}, maxRows + 1);
    if (!queue)
        return failed(queue.error());
    const StoreResult<Finds> gone = outcomes(filter, {after.outcomes, until.outcomes}, maxRows + 1);
    if (!gone)
        return failed(gone.error());
    HistoryPage page;
    auto first = queue->rows.cbegin();
    auto second = gone->rows.cbegin();
    const auto ended = [&] { return first == queue->rows.cend() && second == gone->rows.cend(); };
    while (page.rows.size() < maxRows && !ended()) {
        const bool isWaiting = second == gone->rows.cend() ||
                               (first != queue->rows.cend() && first->row.at >= second->row.at);
        page.rows.append(isWaiting ? (first++)->row : (second++)->row);
    }
    if (!ended())
        page.next = HistoryCursor{first == queue->rows.cend() ? queue->end : first->place + 1,
                                  second == gone->rows.cend() ? gone->end : second->place + 1};
    return page;
}

StoreResult<HistoryPages::Finds> HistoryPages::waiting(const HistoryFilter &filter,
                                                       NewestFirst::Range range, int maxRows) const
{
    Finds finds{{}, range.low};
    if (!filter.states.testFlag(MessageState::Waiting))
        return finds;
    const SearchedText text(filter.text);
    const NewestFirst scan(m_database, waitingMessages, {filter.from, filter.to, filter.to},
                           m_limit);
    return scan
        .walk(range,
              [&](const StoreRow &row) {
                  Found found = foundOf(row);
                  if (text.isIn(found.row.phone, found.row.text))
                      finds.rows.append(std::move(found));
                  return finds.rows.size() < maxRows;
              })
        .map([&](const auto &) { return finds; });
}

StoreResult<HistoryPages::Finds> HistoryPages::outcomes(const HistoryFilter &filter,
                                                        NewestFirst::Range range, int maxRows) const
{
    Finds finds{{}, range.low};
    const MessageStates states = filter.states & left;
    if (!states)
        return finds;
    const StoreResult<NewestFirst::Range> bounds =
        HistoryBounds(m_database, HistoryBounds::Table::Outcomes).of(filter.from, filter.to);
    if (!bounds)
        return failed(bounds.error());
    const SearchedText text(filter.text);
    const NewestFirst scan(m_database,
                           (states & ~unsuccessful) ? allOutcomes : unsuccessfulOutcomes,
                           {filter.from, filter.to, filter.to, states.toInt()}, m_limit);
    return scan
        .walk(cut(range, *bounds),
              [&](const StoreRow &row) {
                  Found found = foundOf(row);
                  if (text.isIn(found.row.phone, found.row.text))
                      finds.rows.append(std::move(found));
                  return finds.rows.size() < maxRows;
              })
        .map([&](const auto &) { return finds; });
}

StoreResult<QList<HistoryRow>> HistoryPages::of(const QList<qint64> &ids) const
{
    return m_database.look([&]() -> StoreResult<QList<HistoryRow>> {
        QList<HistoryRow> rows;
        for (const qint64 id : ids) {
            if (id <= 0) // of messages that never had one here
                continue;
            StoreResult<std::optional<HistoryRow>> row =
                m_database.row(waitingMessage, {id}, rowOf);
            if (row && !*row)
                row = m_database.row(outcomeOfMessage, {id}, rowOf);
            if (!row)
                return failed(row.error());
            if (*row)
                rows.append(**row);
        }
        return rows;
    });
}

#undef NORVANE_UNSUCCESSFUL
#undef NORVANE_OUTCOMES
#undef NORVANE_OUTCOME
#undef NORVANE_WAITING
#undef NORVANE_WINDOW
#undef NORVANE_STATE

} // namespace norvane
