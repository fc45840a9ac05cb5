#pragma once

#include "TovekSMService/history/HistoryCursor.h"
#include "TovekSMService/history/NewestFirst.h"
#include "TovekSMService/store/StoreFailure.h"
#include "contract/Messages.h"

#include <QList>

#include <optional>

namespace norvane {

class QueryLimit;

/// Which received messages are asked for.
struct InboxFilter
{
    QString from; ///< "yyyy-MM-ddTHH:mm:ss", or the beginning of it; empty for the first
    QString to;   ///< exclusive; empty for no end
    QString text; ///< that phone or text contain, without regard to case and accents
    bool isUnreadOnly = false;

    bool operator==(const InboxFilter &) const = default;
};

struct InboxPage
{
    QList<ReceivedMessage> rows;
    std::optional<InboxCursor> next; ///< nothing behind the last page
};

/// The messages that came, the latest first.
class InboxPages
{
public:
    /// @param database, limit  must outlive this object
    InboxPages(StoreDatabase &database, const QueryLimit &limit)
        : m_database(database), m_limit(limit)
    {}

    /// As HistoryPages::page().
    [[nodiscard]] StoreResult<InboxPage> page(const InboxFilter &filter, const InboxCursor &after,
                                              const std::optional<InboxCursor> &until,
                                              int maxRows) const;

private:
    using Messages = QList<ReceivedMessage>;

    StoreResult<InboxPage> found(const InboxFilter &filter, const InboxCursor &after,
                                 const InboxCursor &until, int maxRows) const;
    StoreResult<Messages> messages(const InboxFilter &filter, NewestFirst::Range range,
                                   int maxRows) const;
    StoreResult<Messages> messagesAt(const QList<qint64> &ids) const;

    StoreDatabase &m_database;
    const QueryLimit &m_limit;
};

} // namespace norvane
