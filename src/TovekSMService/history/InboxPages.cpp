#include "TovekSMService/history/InboxPages.h"

#include "TovekSMService/history/HistoryBounds.h"
#include "TovekSMService/history/HistoryStatements.h"
#include "TovekSMService/history/SearchedText.h"
#include "TovekSMService/history/TextSearch.h"

#include <algorithm>

namespace norvane {

namespace {

#define NORVANE_MESSAGE "id, at, sent_at, phone, text, read"
#define NORVANE_WINDOW(more)                                                                       \
    "SELECT min(id), count(*) FROM (SELECT id FROM received WHERE id < ? AND id >= ?" more         \
    " ORDER BY id DESC LIMIT ?) AS newest"
#define NORVANE_RECEIVED(columns, more)                                                            \
    "SELECT " columns " FROM received WHERE id < ? AND id >= ? "                                   \
    "AND " NORVANE_RECEIVED_FILTER more " ORDER BY id DESC"
// As the index has it that holds these alone.
#define NORVANE_UNREAD " AND read = 0"

struct InboxLooks
{
    NewestFirst::Statements forText;
    NewestFirst::Statements forAll;
};
// With what is compared, or with everything.
#define NORVANE_LOOKS(more)                                                                        \
    {                                                                                              \
        {NORVANE_WINDOW(more), NORVANE_RECEIVED("received" NORVANE_COMPARED, more)},               \
        {                                                                                          \
            NORVANE_WINDOW(more), NORVANE_RECEIVED(NORVANE_MESSAGE, more)                          \
        }                                                                                          \
    }
constexpr InboxLooks allReceived = NORVANE_LOOKS("");
constexpr InboxLooks unreadReceived = NORVANE_LOOKS(NORVANE_UNREAD);
constexpr char receivedMessage[] = "SELECT " NORVANE_MESSAGE " FROM received WHERE id = ?";

#undef NORVANE_LOOKS
#undef NORVANE_UNREAD
#undef NORVANE_RECEIVED
#undef NORVANE_WINDOW
#undef NORVANE_MESSAGE

ReceivedMessage receivedOf(const StoreRow &row)
{
    return {row.value(0).toLongLong(), row.value(1).toString(), row.value(2).toString(),
            row.value(3).toString(),   row.value(4).toString(), row.value(5).toInt() != 0};
}

} // namespace

StoreResult<InboxPage> InboxPages::page(const InboxFilter &filter, const InboxCursor &after,
                                        const std::optional<InboxCursor> &until, int maxRows) const
{
    return m_database.look(
        [&] { return found(filter, after, until.value_or(InboxCursor{0}), maxRows); });
}

StoreResult<InboxPage> InboxPages::found(const InboxFilter &filter, const InboxCursor &after,
                                         const InboxCursor &until, int maxRows) const
{
    const StoreResult<NewestFirst::Range> bounds =
        HistoryBounds(m_database, HistoryTable::Received).of(filter.from, filter.to);
    if (!bounds)
        return failed(bounds.error());
    return messages(
               filter,
               {std::min(after.received, bounds->below), std::max(until.received, bounds->low)},
               maxRows + 1)
        .map([maxRows](const Messages &rows) {
            InboxPage page{rows.first(std::min(rows.size(), qsizetype{maxRows})), {}};
            if (rows.size() > maxRows)
                page.next = InboxCursor{rows.constLast().id + 1};
            return page;
        });
}

StoreResult<InboxPages::Messages> InboxPages::messages(const InboxFilter &filter,
                                                       NewestFirst::Range range, int maxRows) const
{
    const QVariantList values = {filter.from, filter.to, filter.to, filter.isUnreadOnly ? 1 : 0};
    const InboxLooks &looks = filter.isUnreadOnly ? unreadReceived : allReceived;
    const SearchedText text(filter.text);
    if (text.isEmpty()) {
        Messages rows;
        return NewestFirst(m_database, looks.forAll, values, m_limit)
            .walk(range,
                  [&rows, maxRows](const StoreRow &row) {
                      rows.append(receivedOf(row));
                      return rows.size() < maxRows;
                  })
            .map([&rows](const auto &) { return rows; });
    }
    QList<qint64> ids;
    return TextSearch(m_database, HistoryTable::Received, looks.forText, values, m_limit)
        .find(text, range,
              [&ids, maxRows](const StoreRow &row) {
                  ids.append(row.value(0).toLongLong());
                  return ids.size() < maxRows;
              })
        .and_then([&] { return messagesAt(ids); });
}

StoreResult<InboxPages::Messages> InboxPages::messagesAt(const QList<qint64> &ids) const
{
    Messages rows;
    for (const qint64 id : ids) {
        const auto row = m_database.row(receivedMessage, {id}, receivedOf);
        if (!row)
            return failed(row.error());
        if (*row)
            rows.append(**row);
    }
    return rows;
}

} // namespace norvane
