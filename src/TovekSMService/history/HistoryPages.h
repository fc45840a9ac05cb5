#pragma once

#include "TovekSMService/history/HistoryCursor.h"
#include "TovekSMService/history/NewestFirst.h"
#include "TovekSMService/history/PlacedRow.h"
#include "TovekSMService/store/StoreFailure.h"
#include "contract/History.h"

#include <QList>

#include <functional>
#include <optional>

namespace norvane {

class QueryLimit;
class SearchedText;

/// A page of the history, and where the next one begins.
struct HistoryPage
{
    QList<HistoryRow> rows;
    std::optional<HistoryCursor> next; ///< nothing behind the last page
};

/// The messages of queue and outcomes as one list, the latest first.
class HistoryPages
{
public:
    /// Characters of the texts of a page: it ends early where they are more.
    static constexpr qsizetype maxText = 4'000'000;

    /// @param database, limit  must outlive this object
    HistoryPages(StoreDatabase &database, const QueryLimit &limit)
        : m_database(database), m_limit(limit)
    {}

    /// @param after    where the page before ended
    /// @param until    where a page ended beyond which no row is wanted; nothing for none
    /// @param maxRows  of the page
    [[nodiscard]] StoreResult<HistoryPage> page(const HistoryFilter &filter,
                                                const HistoryCursor &after,
                                                const std::optional<HistoryCursor> &until,
                                                int maxRows) const;
    /// The present rows of these messages, in no order.
    [[nodiscard]] StoreResult<QList<HistoryRow>> of(const QList<qint64> &ids) const;

private:
    struct Finds
    {
        QList<PlacedRow> rows;
        qint64 end = 0;     ///< below which there may be more
        bool isCut = false; ///< these are not as many as were asked for: there is too much text
    };
    class Room;
    /// Leaves away what lies before the range of a filter.
    using Bounded = std::function<StoreResult<NewestFirst::Range>(NewestFirst::Range)>;

    StoreResult<HistoryPage> merged(const HistoryFilter &filter, const HistoryCursor &after,
                                    const HistoryCursor &until, int maxRows) const;
    StoreResult<Finds> waiting(const HistoryFilter &filter, NewestFirst::Range range,
                               int maxRows) const;
    StoreResult<Finds> outcomes(const HistoryFilter &filter, NewestFirst::Range range,
                                int maxRows) const;
    StoreResult<Finds> allOf(const NewestFirst &scan, NewestFirst::Range range,
                             const Bounded &bounded, Room &room) const;
    static bool note(const StoreRow &row, QList<qint64> &places, Room &room);
    static NewestFirst::Take appendTo(QList<PlacedRow> &rows, Room &room);
    static bool isIn(const SearchedText &text, const StoreRow &row);

    StoreDatabase &m_database;
    const QueryLimit &m_limit;
};

} // namespace norvane
