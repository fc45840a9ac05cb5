#pragma once

#include "TovekSMService/history/HistoryTable.h"
#include "TovekSMService/history/NewestFirst.h"

namespace norvane {

class SearchedText;

/// A search for a text in a table, from its newest row to its oldest, with the help of its index.
class TextSearch
{
public:
    /// Takes what was compared of a row, and gives whether it wants the next one.
    using Take = NewestFirst::Take;

    /// @param database, limit  must outlive this object
    /// @param statements       give the compared columns of a row
    /// @param filter           the values of the table's filter in HistoryStatements
    TextSearch(StoreDatabase &database, HistoryTable table,
               const NewestFirst::Statements &statements, const QVariantList &filter,
               const QueryLimit &limit)
        : m_database(database), m_table(table), m_scan(database, statements, filter, limit),
          m_filter(filter), m_limit(limit)
    {}

    /// Gives the rows of the range that have the text to `take`, until that wants none.
    /// @param text  not empty
    [[nodiscard]] StoreResult<> find(const SearchedText &text, NewestFirst::Range range,
                                     const Take &take) const;

private:
    struct Comparison;

    StoreResult<NewestFirst::Range> scanNewest(Comparison &comparison,
                                               NewestFirst::Range range) const;
    StoreResult<> askIndex(Comparison &comparison, NewestFirst::Range range) const;

    StoreDatabase &m_database;
    const HistoryTable m_table;
    const NewestFirst m_scan;
    const QVariantList m_filter;
    const QueryLimit &m_limit;
};

} // namespace norvane
