#include "TovekSMService/history/TextSearch.h"

#include "TovekSMService/history/IndexMark.h"
#include "TovekSMService/history/IndexedSearch.h"
#include "TovekSMService/history/SearchedText.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace norvane {

namespace {

constexpr qint64 scannedRows = 5000;       ///< before the index is asked
constexpr qint64 manyOf = 50;              ///< every so many rows
constexpr qint64 maxScannedRows = 100'000; ///< of a text that many have

} // namespace

/// Takes the rows that have the text.
struct TextSearch::Comparison
{
    bool operator()(const StoreRow &row)
    {
        if (!text.isIn(row.value(1).toString(), row.value(2).toString()))
            return true;
        ++found;
        return wantsMore = take(row);
    }

    const SearchedText &text;
    const Take &take;
    qint64 found = 0;
    bool wantsMore = true;
};

/// The newest ones are looked at one by one, in which a text that is in most of them is found at
/// once, and so are those that aren't in the index yet. The index gives the others.
StoreResult<> TextSearch::find(const SearchedText &text, NewestFirst::Range range,
                               const Take &take) const
{
    Comparison comparison{text, take};
    const StoreResult<qint64> mark = IndexMark(m_database, m_table).value();
    if (!mark)
        return failed(mark.error());
    const qint64 indexEnd = *mark == 0 ? 0 : *mark + 1;
    return m_scan.walk({range.below, std::max(range.low, indexEnd)}, std::ref(comparison))
        .and_then([&](const auto &) {
            return scanNewest(comparison, {std::min(range.below, indexEnd), range.low});
        })
        .and_then([&](const NewestFirst::Range &rest) { return askIndex(comparison, rest); });
}

/// Gives what is left of rows that the index holds.
StoreResult<NewestFirst::Range> TextSearch::scanNewest(Comparison &comparison,
                                                       NewestFirst::Range range) const
{
    if (!comparison.wantsMore)
        return range;
    comparison.found = 0;
    return m_scan.walk(range, std::ref(comparison), scannedRows)
        .and_then([&](const NewestFirst::Range &rest) {
            // Many, and the server would gather all of them before it gave the first one.
            const bool areMany = m_database.kind() == StoreDatabase::Kind::Server &&
                                 comparison.found > scannedRows / manyOf;
            return comparison.wantsMore && areMany
                       ? m_scan.walk(rest, std::ref(comparison), maxScannedRows)
                       : StoreResult<NewestFirst::Range>(rest);
        });
}

StoreResult<> TextSearch::askIndex(Comparison &comparison, NewestFirst::Range range) const
{
    if (!comparison.wantsMore || range.isEmpty())
        return {};
    const IndexedSearch index(m_database, m_table, m_filter, m_limit);
    return index.questionOf(comparison.text).and_then([&](const std::optional<QString> &question) {
        return question ? index.walk(*question, range, std::ref(comparison))
                        : m_scan.walk(range, std::ref(comparison)).map([](const auto &) {});
    });
}

} // namespace norvane
