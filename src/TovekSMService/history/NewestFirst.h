#pragma once

#include "TovekSMService/store/StoreDatabase.h"

#include <QVariantList>

#include <functional>
#include <limits>

namespace norvane {

class QueryLimit;

/// A look through a table from its newest row to its oldest, in windows of bounded size, so that it
/// can end between any two of them.
class NewestFirst
{
public:
    /// Two statements, each for rows of ids below its first value and not below its second.
    struct Statements
    {
        /// The lowest id of the newest rows, and how many they are, not more than its third value.
        const char *window;
        /// The rows that a filter lets through, the newest first. Its further values are those of
        /// the filter.
        const char *rows;
    };

    /// Ids from `low` on and below `below`.
    struct Range
    {
        qint64 below = std::numeric_limits<qint64>::max();
        qint64 low = 0;

        bool isEmpty() const { return low >= below; }
    };

    /// Takes a row, and gives whether it wants the next one.
    using Take = std::function<bool(const StoreRow &)>;

    /// @param database, limit  must outlive this object
    NewestFirst(const StoreDatabase &database, const Statements &statements,
                const QVariantList &filter, const QueryLimit &limit)
        : m_database(database), m_statements(statements), m_filter(filter), m_limit(limit)
    {}

    /// Gives the rows of the range that the filter lets through to `take`, until that wants none or
    /// `maxRows` were looked at, let through or not.
    /// @return what of the range was not looked at
    [[nodiscard]] StoreResult<Range>
    walk(Range range, const Take &take, qint64 maxRows = std::numeric_limits<qint64>::max()) const;

private:
    const StoreDatabase &m_database;
    const Statements m_statements;
    const QVariantList m_filter;
    const QueryLimit &m_limit;
};

} // namespace norvane
