#include "TovekSMService/history/NewestFirst.h"

#include "TovekSMService/history/QueryLimit.h"

#include <algorithm>
#include <utility>

namespace norvane {

namespace {

constexpr qint64 firstWindow = 1000;
constexpr qint64 maxWindow = 32'000;

struct Window
{
    qint64 low = 0;
    qint64 rows = 0;
};

Window windowOf(const StoreRow &row)
{
    return {row.value(0).toLongLong(), row.value(1).toLongLong()};
}

} // namespace

StoreResult<NewestFirst::Range> NewestFirst::walk(Range range, const Take &take,
                                                  qint64 maxRows) const
{
    qint64 size = firstWindow;
    bool wantsMore = true;
    while (wantsMore && maxRows > 0 && !range.isEmpty()) {
        if (const StoreResult<> mayGoOn = m_limit.check(); !mayGoOn)
            return failed(mayGoOn.error());
        const auto window =
            m_database.row(m_statements.window, {range.below, range.low, size}, windowOf);
        if (!window)
            return failed(window.error());
        const Window found = window->value_or(Window());
        if (found.rows == 0)
            return Range{range.low, range.low};
        const StoreResult<> taken =
            m_database.each(m_statements.rows, QVariantList{range.below, found.low} + m_filter,
                            [&](const StoreRow &row) { return wantsMore = take(row); });
        if (!taken)
            return failed(taken.error());
        range.below = found.rows < size ? range.low : found.low;
        maxRows -= found.rows;
        size = std::min(size * 4, maxWindow);
    }
    return range;
}

} // namespace norvane
