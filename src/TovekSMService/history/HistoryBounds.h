#pragma once

#include "TovekSMService/history/HistoryTable.h"
#include "TovekSMService/history/NewestFirst.h"

#include <QString>

namespace norvane {

/// Where in a table that grows with time the rows of a range of moments lie.
class HistoryBounds
{
public:
    /// @param database  must outlive this object
    HistoryBounds(const StoreDatabase &database, HistoryTable table)
        : m_database(database), m_table(table)
    {}

    /// The ids among which every row from `from` on and before `to` is, with others. Rows that came
    /// out of their order, as the clock was put back or their database was away, are among them if
    /// that was for less than a day.
    [[nodiscard]] StoreResult<NewestFirst::Range> of(const QString &from, const QString &to) const;
    /// The lowest of these ids. Goes through the moments of a day.
    [[nodiscard]] StoreResult<qint64> begin(const QString &from) const;
    /// The id behind the highest one. Goes through the moments of a day, unless no row is from `to`
    /// on.
    [[nodiscard]] StoreResult<qint64> end(const QString &to) const;

private:
    const StoreDatabase &m_database;
    const HistoryTable m_table;
};

} // namespace norvane
