#pragma once

#include "TovekSMService/history/HistoryTable.h"
#include "TovekSMService/history/NewestFirst.h"

#include <QString>

#include <optional>

namespace norvane {

class SearchedText;

/// A look through those rows of a table that the search index gives for a text, from the newest to
/// the oldest. It may give others as well: what is found is to be compared.
class IndexedSearch
{
public:
    /// @param database, limit  must outlive this object
    /// @param filter           the values of the table's filter in HistoryStatements
    IndexedSearch(const StoreDatabase &database, HistoryTable table, const QVariantList &filter,
                  const QueryLimit &limit)
        : m_database(database), m_table(table), m_filter(filter), m_limit(limit)
    {}

    /// The text in the index's language. Empty where the index knows that no row has it; nothing
    /// where so much of the index is about it that a look at the rows themselves is quicker.
    /// @param text  not empty
    [[nodiscard]] StoreResult<std::optional<QString>> questionOf(const SearchedText &text) const;

    /// Gives the rows of the range to `take` that the question is true of, until that wants none.
    [[nodiscard]] StoreResult<> walk(const QString &question, NewestFirst::Range range,
                                     const NewestFirst::Take &take) const;

private:
    StoreResult<std::optional<QString>> beginningWith(const QString &piece) const;
    StoreResult<> walkFile(const QString &question, NewestFirst::Range range,
                           const NewestFirst::Take &take) const;
    StoreResult<> walkServer(const QString &question, NewestFirst::Range range,
                             const NewestFirst::Take &take) const;

    const StoreDatabase &m_database;
    const HistoryTable m_table;
    const QVariantList m_filter;
    const QueryLimit &m_limit;
};

} // namespace norvane
