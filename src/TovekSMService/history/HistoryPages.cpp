#include "TovekSMService/history/HistoryPages.h"

#include "TovekSMService/history/HistoryBounds.h"
#include "TovekSMService/history/HistoryStatements.h"
#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/history/RowsByIds.h"
#include "TovekSMService/history/SearchedText.h"
#include "TovekSMService/history/TextSearch.h"
#include "contract/DeliveryState.h"

#include <algorithm>

namespace norvane {

namespace {

#define NORVANE_WINDOW(table, more)                                                                \
    "SELECT min(id), count(*) FROM (SELECT id FROM " table " WHERE id < ? AND id >= ?" more        \
    " ORDER BY id DESC LIMIT ?) AS newest"
#define NORVANE_QUEUE(columns)                                                                     \
    "SELECT " columns " FROM message WHERE id < ? AND id >= ? AND queued_at >= ? "                 \
    "AND (? = '' OR queued_at < ?) ORDER BY id DESC"
#define NORVANE_OUTCOMES(columns, more)                                                            \
    "SELECT " columns " FROM outcome WHERE id < ? AND id >= ? "                                    \
    "AND " NORVANE_OUTCOME_FILTER more " ORDER BY id DESC"
// As the index has it that holds these alone.
#define NORVANE_UNSUCCESSFUL " AND (code <> 1 OR delivery = 3)"

// With what is compared, or with everything.
#define NORVANE_LOOKS(more)                                                                        \
    {                                                                                              \
        {NORVANE_WINDOW("outcome", more), NORVANE_OUTCOMES("outcome" NORVANE_COMPARED, more)},     \
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
constexpr Looks waitingMessages = {
    {NORVANE_WINDOW("message", ""), NORVANE_QUEUE("id, phone, text")},
    {NORVANE_WINDOW("message", ""), NORVANE_QUEUE(NORVANE_WAITING)}};

constexpr qint64 scannedRows = 5000; ///< before the beginning of the range is looked for

constexpr MessageStates unsuccessful =
    MessageStates(MessageState::Refused) | MessageState::Failed | MessageState::InDoubt;

constexpr MessageStates left = unsuccessful | MessageState::Sent | MessageState::Delivered;

} // namespace

/// What still goes into a page.
class HistoryPages::Room
{
public:
    explicit Room(int rows) : m_rows(rows) {}

    /// Takes a row.
    /// @return whether there is room for another one
    bool take(qint64 place, const QString &text)
    {
        m_last = place;
        --m_rows;
        m_text -= text.size();
        return m_rows > 0 && m_text > 0;
    }
    /// Gives the rows, with a place behind which there is more where texts took all the room.
    Finds with(QList<PlacedRow> rows, qint64 end) const
    {
        const bool isCut = m_text <= 0;
        return {std::move(rows), isCut ? m_last : end, isCut};
    }

private:
    int m_rows;
    qsizetype m_text = maxText;
    qint64 m_last = 0;
};

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
    qsizetype text = 0;
    while (page.rows.size() < maxRows && text < maxText && !ended()) {
        const bool isWaiting = second == gone->rows.cend() ||
                               (first != queue->rows.cend() && first->row.at >= second->row.at);
        page.rows.append(isWaiting ? (first++)->row : (second++)->row);
        text += page.rows.constLast().text.size();
    }
    if (!ended() || queue->isCut || gone->isCut)
        page.next = HistoryCursor{first == queue->rows.cend() ? queue->end : first->place + 1,
                                  second == gone->rows.cend() ? gone->end : second->place + 1};
    return page;
}

StoreResult<HistoryPages::Finds> HistoryPages::waiting(const HistoryFilter &filter,
                                                       NewestFirst::Range range, int maxRows) const
{
    if (!filter.states.testFlag(MessageState::Waiting))
        return Finds{{}, range.low};
    const QVariantList values = {filter.from, filter.to, filter.to};
    const SearchedText text(filter.text);
    Room room(maxRows);
    if (text.isEmpty()) {
        QList<PlacedRow> rows;
        return NewestFirst(m_database, waitingMessages.forAll, values, m_limit)
            .walk(range, appendTo(rows, room))
            .map([&](const auto &) { return room.with(rows, range.low); });
    }
    QList<qint64> places;
    return NewestFirst(m_database, waitingMessages.forText, values, m_limit)
        .walk(range,
              [&](const StoreRow &row) { return !isIn(text, row) || note(row, places, room); })
        .and_then([&](const auto &) { return RowsByIds(m_database, m_limit).waiting(places); })
        .map([&](const QList<PlacedRow> &rows) { return room.with(rows, range.low); });
}

StoreResult<HistoryPages::Finds> HistoryPages::outcomes(const HistoryFilter &filter,
                                                        NewestFirst::Range range, int maxRows) const
{
    const MessageStates states = filter.states & left;
    if (!states)
        return Finds{{}, range.low};
    const bool isFirstPage = range.below == NewestFirst::Range().below;
    const HistoryBounds bounds(m_database, HistoryTable::Outcomes);
    if (isFirstPage) { // the end of another one lies in the range already
        const StoreResult<qint64> end =
            m_limit.check().and_then([&] { return bounds.end(filter.to); });
        if (!end)
            return failed(end.error());
        range.below = *end;
    }
    const QVariantList values = {filter.from, filter.to, filter.to, states.toInt()};
    const Looks &looks = (states & ~unsuccessful) ? allOutcomes : unsuccessfulOutcomes;
    const SearchedText text(filter.text);
    const auto bounded = [&](NewestFirst::Range rest) {
        return m_limit.check()
            .and_then([&] { return bounds.begin(filter.from); })
            .map([rest](qint64 begin) {
                return NewestFirst::Range{rest.below, std::max(rest.low, begin)};
            });
    };
    Room room(maxRows);
    if (text.isEmpty())
        return allOf(NewestFirst(m_database, looks.forAll, values, m_limit), range, bounded, room);
    QList<qint64> places;
    const TextSearch search(m_database, HistoryTable::Outcomes, looks.forText, values, m_limit);
    return bounded(range)
        .and_then([&](NewestFirst::Range looked) {
            return search.find(text, looked,
                               [&](const StoreRow &row) { return note(row, places, room); });
        })
        .and_then([&] { return RowsByIds(m_database, m_limit).outcomes(places); })
        .map([&](const QList<PlacedRow> &rows) { return room.with(rows, range.low); });
}

/// Where the filter's range begins is looked for when the page isn't full soon: it takes a look at
/// the moments of a whole day.
StoreResult<HistoryPages::Finds> HistoryPages::allOf(const NewestFirst &scan,
                                                     NewestFirst::Range range,
                                                     const Bounded &bounded, Room &room) const
{
    QList<PlacedRow> rows;
    bool wantsMore = true;
    const auto take = [&, append = appendTo(rows, room)](const StoreRow &row) {
        return wantsMore = append(row);
    };
    return scan.walk(range, take, scannedRows)
        .and_then([&](const NewestFirst::Range &rest) {
            return wantsMore && !rest.isEmpty() ? bounded(rest)
                                                : StoreResult<NewestFirst::Range>(rest);
        })
        .and_then([&](const NewestFirst::Range &rest) {
            return wantsMore ? scan.walk(rest, take) : StoreResult<NewestFirst::Range>(rest);
        })
        .map([&](const auto &) { return room.with(rows, range.low); });
}

/// Notes where a row is that was found.
bool HistoryPages::note(const StoreRow &row, QList<qint64> &places, Room &room)
{
    places.append(row.value(0).toLongLong());
    return room.take(places.constLast(), row.value(2).toString());
}

NewestFirst::Take HistoryPages::appendTo(QList<PlacedRow> &rows, Room &room)
{
    return [&rows, &room](const StoreRow &row) {
        rows.append(PlacedRow::of(row));
        return room.take(rows.constLast().place, rows.constLast().row.text);
    };
}

bool HistoryPages::isIn(const SearchedText &text, const StoreRow &row)
{
    return text.isIn(row.value(1).toString(), row.value(2).toString());
}

StoreResult<QList<HistoryRow>> HistoryPages::of(const QList<qint64> &ids) const
{
    return m_database.look([&] { return RowsByIds(m_database, m_limit).of(ids); });
}

#undef NORVANE_LOOKS
#undef NORVANE_UNSUCCESSFUL
#undef NORVANE_OUTCOMES
#undef NORVANE_QUEUE
#undef NORVANE_WINDOW

} // namespace norvane
