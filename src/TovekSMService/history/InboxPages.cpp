#include "TovekSMService/history/InboxPages.h"

#include "TovekSMService/history/HistoryBounds.h"
#include "TovekSMService/history/NewestFirst.h"
#include "TovekSMService/history/SearchedText.h"

#include <algorithm>

namespace norvane {

namespace {

#define NORVANE_WINDOW(more)                                                                       \
    "SELECT min(id), count(*) FROM (SELECT id FROM received WHERE id < ? AND id >= ?" more         \
    " ORDER BY id DESC LIMIT ?) AS newest"
#define NORVANE_RECEIVED(more)                                                                     \
    "SELECT id, at, sent_at, phone, text, read FROM received WHERE id < ? AND id >= ? "            \
    "AND at >= ? AND (? = '' OR at < ?)" more " ORDER BY id DESC"
#define NORVANE_UNREAD " AND read = 0"

constexpr NewestFirst::Statements all = {NORVANE_WINDOW(""), NORVANE_RECEIVED("")};
constexpr NewestFirst::Statements unread = {NORVANE_WINDOW(NORVANE_UNREAD),
                                            NORVANE_RECEIVED(NORVANE_UNREAD)};

#undef NORVANE_UNREAD
#undef NORVANE_RECEIVED
#undef NORVANE_WINDOW

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
        HistoryBounds(m_database, HistoryBounds::Table::Received).of(filter.from, filter.to);
    if (!bounds)
        return failed(bounds.error());
    const SearchedText text(filter.text);
    InboxPage page;
    return NewestFirst(m_database, filter.isUnreadOnly ? unread : all,
                       {filter.from, filter.to, filter.to}, m_limit)
        .walk({std::min(after.received, bounds->below), std::max(until.received, bounds->low)},
              [&](const StoreRow &row) {
                  const ReceivedMessage message = receivedOf(row);
                  if (!text.isIn(message.phone, message.text))
                      return true;
                  if (page.rows.size() == maxRows) {
                      page.next = InboxCursor{message.id + 1};
                      return false;
                  }
                  page.rows.append(message);
                  return true;
              })
        .map([&](const auto &) { return page; });
}

} // namespace norvane
