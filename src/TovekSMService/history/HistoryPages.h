#pragma once

#include "TovekSMService/history/HistoryCursor.h"
#include "TovekSMService/history/NewestFirst.h"
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
    struct Found
    {
        qint64 place = 0; ///< its id in its table
        HistoryRow row;
    };
    struct Finds
    {
        QList<Found> rows;
        qint64 end = 0; ///< below which there may be more
    };

    StoreResult<HistoryPage> merged(const HistoryFilter &filter, const HistoryCursor &after,
                                    const HistoryCursor &until, int maxRows) const;
    StoreResult<Finds> waiting(const HistoryFilter &filter, NewestFirst::Range range,
                               int maxRows) const;
    StoreResult<Finds> outcomes(const HistoryFilter &filter, NewestFirst::Range range,
                                int maxRows) const;
    StoreResult<> find(const SearchedText &text, const NewestFirst &scan,
                       const QVariantList &filter, NewestFirst::Range range,
                       const std::function<bool(qint64 place)> &take) const;
    StoreResult<QList<Found>> outcomesAt(const QList<qint64> &places) const;
    static HistoryRow rowOf(const StoreRow &row);
    static Found foundOf(const StoreRow &row);

    StoreDatabase &m_database;
    const QueryLimit &m_limit;
};

} // namespace norvane
