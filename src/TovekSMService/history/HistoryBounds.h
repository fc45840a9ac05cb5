#pragma once

#include "TovekSMService/history/NewestFirst.h"

#include <QString>

namespace norvane {

/// Where in a table that grows with time the rows of a range of moments lie.
class HistoryBounds
{
public:
    /// Tables with an index of their moments.
    enum class Table { Outcomes, Received };

    /// @param database  must outlive this object
    HistoryBounds(const StoreDatabase &database, Table table) : m_database(database), m_table(table)
    {}

    /// The ids among which every row from `from` on and before `to` is, with others. Rows that came
    /// out of their order, as the clock was put back or their database was away, are among them if
    /// that was for less than a day.
    [[nodiscard]] StoreResult<NewestFirst::Range> of(const QString &from, const QString &to) const;

private:
    StoreResult<qint64> lowest(const QString &from) const;
    StoreResult<qint64> highest(const QString &to) const;

    const StoreDatabase &m_database;
    const Table m_table;
};

} // namespace norvane
