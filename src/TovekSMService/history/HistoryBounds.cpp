#include "TovekSMService/history/HistoryBounds.h"

#include "TovekSMService/time/Clock.h"

#include <limits>
#include <optional>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

struct BoundStatements
{
    const char *earliest; ///< the moment of the first row from a moment on
    const char *latest;   ///< the moment of the last row before a moment
    // Of the rows between two moments; "+ 0" keeps the server from looking for them by id.
    const char *lowest;
    const char *highest;
};

#define NORVANE_BOUNDS(table)                                                                      \
    {                                                                                              \
        "SELECT at FROM " table " WHERE at >= ? ORDER BY at LIMIT 1",                              \
            "SELECT at FROM " table " WHERE at < ? ORDER BY at DESC LIMIT 1",                      \
            "SELECT min(id + 0) FROM " table " WHERE at >= ? AND at <= ?",                         \
            "SELECT max(id + 0) FROM " table " WHERE at >= ? AND at <= ?"                          \
    }
constexpr BoundStatements ofOutcomes = NORVANE_BOUNDS("outcome");
constexpr BoundStatements ofReceived = NORVANE_BOUNDS("received");
#undef NORVANE_BOUNDS

const BoundStatements &statementsOf(HistoryTable table)
{
    return table == HistoryTable::Outcomes ? ofOutcomes : ofReceived;
}

QString textOf(const StoreRow &row)
{
    return row.value(0).toString();
}

qint64 idOf(const StoreRow &row)
{
    return row.value(0).toLongLong();
}

/// Empty for what is no moment.
QString dayFrom(const QString &at, int days)
{
    const QDateTime moment = momentOf(at);
    return moment.isValid() ? moment.addDays(days).toString(u"yyyy-MM-ddTHH:mm:ss"_s) : QString();
}

} // namespace

StoreResult<NewestFirst::Range> HistoryBounds::of(const QString &from, const QString &to) const
{
    return begin(from).and_then([&](qint64 low) {
        return end(to).map([low](qint64 below) { return NewestFirst::Range{below, low}; });
    });
}

StoreResult<qint64> HistoryBounds::begin(const QString &from) const
{
    if (from.isEmpty())
        return 0;
    const BoundStatements &statements = statementsOf(m_table);
    const auto earliest = m_database.row(statements.earliest, {from}, textOf);
    if (!earliest)
        return failed(earliest.error());
    if (!*earliest)
        return std::numeric_limits<qint64>::max();
    const QString end = dayFrom(**earliest, 1);
    if (end.isEmpty())
        return 0;
    return m_database.row(statements.lowest, {**earliest, end}, idOf)
        .map([](std::optional<qint64> id) { return id.value_or(0); });
}

StoreResult<qint64> HistoryBounds::end(const QString &to) const
{
    constexpr qint64 unbounded = NewestFirst::Range().below;
    if (to.isEmpty())
        return unbounded;
    const BoundStatements &statements = statementsOf(m_table);
    const auto behind = m_database.row(statements.earliest, {to}, textOf);
    if (!behind)
        return failed(behind.error());
    if (!*behind)
        return unbounded;
    const auto latest = m_database.row(statements.latest, {to}, textOf);
    if (!latest)
        return failed(latest.error());
    if (!*latest)
        return 0;
    const QString begin = dayFrom(**latest, -1);
    if (begin.isEmpty())
        return unbounded;
    return m_database.row(statements.highest, {begin, **latest}, idOf)
        .map([](std::optional<qint64> id) { return id.value_or(0) + 1; });
}

} // namespace norvane
