#include "TovekSMService/history/HistoryPages.h"

#include "TovekSMService/history/HistoryBounds.h"
#include "TovekSMService/history/HistoryStatements.h"
#include "TovekSMService/history/IndexMark.h"
#include "TovekSMService/history/IndexedSearch.h"
#include "TovekSMService/history/SearchedText.h"
#include "contract/DeliveryState.h"

#include <algorithm>

namespace norvane {

namespace {

#define NORVANE_WINDOW(table, more)                                                                \
    "SELECT min(id), count(*) FROM (SELECT id FROM " table " WHERE id < ? AND id >= ?" more        \
    " ORDER BY id DESC LIMIT ?) AS newest"
#define NORVANE_WAITING                                                                            \
    "SELECT id, id, queued_at, delivery_date, phone, text, 1, 0, '' FROM message WHERE "
#define NORVANE_OUTCOMES(columns, more)                                                            \
    "SELECT " columns " FROM outcome WHERE id < ? AND id >= ? "                                    \
    "AND " NORVANE_OUTCOME_FILTER more " ORDER BY id DESC"
// As the index has it that holds these alone.
#define NORVANE_UNSUCCESSFUL " AND (code <> 1 OR delivery = 3)"

constexpr NewestFirst::Statements waitingMessages = {
    NORVANE_WINDOW("message", ""),
    NORVANE_WAITING "id < ? AND id >= ? AND queued_at >= ? AND (? = '' OR queued_at < ?) "
                    "ORDER BY id DESC"};
// With what is compared, or with everything.
#define NORVANE_LOOKS(more)                                                                        \
    {                                                                                              \
        {NORVANE_WINDOW("outcome", more), NORVANE_OUTCOMES(NORVANE_COMPARED, more)},               \
        {                                                                                          \
            NORVANE_WINDOW("outcome", more), NORVANE_OUTCOMES(NORVANE_OUTCOME, more)               \
        }                                                                                          \
    }
struct Looks
{
    NewestFirst::Statements forText;
    NewestFirst::Statements forAll;
};
constexpr Looks allOutcomes = NORVANE_LOOKS("");
constexpr Looks unsuccessfulOutcomes = NORVANE_LOOKS(NORVANE_UNSUCCESSFUL);
constexpr char outcome[] = "SELECT " NORVANE_OUTCOME " FROM outcome WHERE id = ?";

constexpr char waitingMessage[] = NORVANE_WAITING "id = ?";
constexpr char outcomeOfMessage[] = "SELECT " NORVANE_OUTCOME " FROM outcome WHERE message_id = ?";

constexpr qint64 scannedRows = 5000;       ///< before the index is asked
constexpr qint64 manyOf = 50;              ///< every so many rows
constexpr qint64 maxScannedRows = 100'000; ///< of a text that many have

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
    const NewestFirst::Range looked = cut(range, *bounds);
    const QVariantList values = {filter.from, filter.to, filter.to, states.toInt()};
    const Looks &looks = (states & ~unsuccessful) ? allOutcomes : unsuccessfulOutcomes;
    const SearchedText text(filter.text);
    if (text.isEmpty())
        return NewestFirst(m_database, looks.forAll, values, m_limit)
            .walk(looked,
                  [&finds, maxRows](const StoreRow &row) {
                      finds.rows.append(foundOf(row));
                      return finds.rows.size() < maxRows;
                  })
            .map([&](const auto &) { return finds; });
    QList<qint64> places;
    const NewestFirst scan(m_database, looks.forText, values, m_limit);
    return find(text, scan, values, looked,
                [&places, maxRows](qint64 place) {
                    places.append(place);
                    return places.size() < maxRows;
                })
        .and_then([&] { return outcomesAt(places); })
        .map([&](const QList<Found> &rows) {
            finds.rows = rows;
            return finds;
        });
}

StoreResult<QList<HistoryPages::Found>> HistoryPages::outcomesAt(const QList<qint64> &places) const
{
    QList<Found> rows;
    for (const qint64 place : places) {
        const auto row = m_database.row(outcome, {place}, foundOf);
        if (!row)
            return failed(row.error());
        if (*row)
            rows.append(**row);
    }
    return rows;
}

/// The newest ones are looked at one by one, in which a text that is in most of them is found at
/// once, and so are those that aren't in the index yet. The index gives the others.
StoreResult<> HistoryPages::find(const SearchedText &text, const NewestFirst &scan,
                                 const QVariantList &filter, NewestFirst::Range range,
                                 const std::function<bool(qint64 place)> &take) const
{
    qint64 found = 0;
    bool wantsMore = true;
    const auto compare = [&](const StoreRow &row) {
        if (!text.isIn(row.value(1).toString(), row.value(2).toString()))
            return true;
        ++found;
        return wantsMore = take(row.value(0).toLongLong());
    };
    const StoreResult<qint64> mark = IndexMark(m_database).value();
    if (!mark)
        return failed(mark.error());
    if (!IndexedSearch::canFind(text) || *mark == 0)
        return scan.walk(range, compare).map([](const auto &) {});
    return scan.walk({range.below, std::max(range.low, *mark + 1)}, compare)
        .and_then([&](const auto &) -> StoreResult<NewestFirst::Range> {
            found = 0;
            const NewestFirst::Range indexed{std::min(range.below, *mark + 1), range.low};
            return wantsMore ? scan.walk(indexed, compare, scannedRows)
                             : StoreResult<NewestFirst::Range>(indexed);
        })
        .and_then([&](const NewestFirst::Range &rest) {
            // Many, and the server would gather all of them before it gave the first one.
            const bool areMany =
                m_database.kind() == StoreDatabase::Kind::Server && found > scannedRows / manyOf;
            return wantsMore && areMany ? scan.walk(rest, compare, maxScannedRows)
                                        : StoreResult<NewestFirst::Range>(rest);
        })
        .and_then([&](const NewestFirst::Range &rest) {
            return wantsMore ? IndexedSearch(m_database, filter, m_limit).walk(text, rest, compare)
                             : StoreResult<>();
        });
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

#undef NORVANE_LOOKS
#undef NORVANE_UNSUCCESSFUL
#undef NORVANE_OUTCOMES
#undef NORVANE_WAITING
#undef NORVANE_WINDOW

} // namespace norvane
