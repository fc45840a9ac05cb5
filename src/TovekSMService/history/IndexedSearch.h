#pragma once

#include "TovekSMService/history/NewestFirst.h"

namespace norvane {

class SearchedText;

/// A look through those outcomes that the search index gives for a text, from the newest to the
/// oldest. It may give others as well: what is found is to be compared.
class IndexedSearch
{
public:
    /// @param database, limit  must outlive this object
    /// @param filter           from, to, to and states, as HistoryPages has them
    IndexedSearch(const StoreDatabase &database, const QVariantList &filter,
                  const QueryLimit &limit)
        : m_database(database), m_filter(filter), m_limit(limit)
    {}

    /// Whether the index knows of texts like this one: it has pieces of three characters.
    static bool canFind(const SearchedText &text);

    /// Gives the outcomes of the range to `take`, until that wants none.
    [[nodiscard]] StoreResult<> walk(const SearchedText &text, NewestFirst::Range range,
                                     const NewestFirst::Take &take) const;

private:
    StoreResult<> walkFile(const SearchedText &text, NewestFirst::Range range,
                           const NewestFirst::Take &take) const;
    StoreResult<> walkServer(const SearchedText &text, NewestFirst::Range range,
                             const NewestFirst::Take &take) const;

    const StoreDatabase &m_database;
    const QVariantList m_filter;
    const QueryLimit &m_limit;
};

} // namespace norvane
