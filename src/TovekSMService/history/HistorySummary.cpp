#include "TovekSMService/history/HistorySummary.h"

#include "TovekSMService/history/HistoryBounds.h"
#include "TovekSMService/history/HistoryStatements.h"
#include "TovekSMService/history/QueryLimit.h"

#include <QDate>

#include <algorithm>
#include <array>
#include <tuple>

namespace norvane {

namespace {

/// Ends of the classes of delays, in seconds; 0 for the last one.
constexpr std::array<quint32, 9> classes = {10, 30, 60, 300, 900, 3600, 21'600, 86'400, 0};

// Columns of the numbers of a day.
constexpr int firstDelayColumn = 5;
constexpr int followingColumn = firstDelayColumn + int{classes.size()};

// clang-format off
#define NORVANE_COUNT(condition) "sum(CASE WHEN " condition " THEN 1 ELSE 0 END), "

// How many there are between two moments; of them delivered, refused, failed, in doubt; delivered
// up to the end of each class, and in all; and the first moment behind them. A delay below zero is
// one of clocks that differ, and none. The limit is beyond what there can be, and keeps the delay
// from being made anew for each class.
#define NORVANE_NUMBERS(seconds)                                                                   \
    "SELECT count(*), "                                                                            \
    NORVANE_COUNT("code = 1 AND delivery = 2")                                                     \
    NORVANE_COUNT("code = 1 AND delivery = 3")                                                     \
    NORVANE_COUNT("code <> 1 AND code <> -39")                                                     \
    NORVANE_COUNT("code = -39")                                                                    \
    NORVANE_COUNT("delay <= 10")                                                                   \
    NORVANE_COUNT("delay <= 30")                                                                   \
    NORVANE_COUNT("delay <= 60")                                                                   \
    NORVANE_COUNT("delay <= 300")                                                                  \
    NORVANE_COUNT("delay <= 900")                                                                  \
    NORVANE_COUNT("delay <= 3600")                                                                 \
    NORVANE_COUNT("delay <= 21600")                                                                \
    NORVANE_COUNT("delay <= 86400")                                                                \
    "count(delay), (SELECT min(at) FROM outcome WHERE at >= ?) "                                   \
    "FROM (SELECT code, delivery, CASE WHEN code = 1 AND delivery = 2 AND "                        \
    "delivered_at >= at THEN " seconds " END AS delay FROM outcome "                               \
    "WHERE at >= ? AND at < ? LIMIT 1000000000) AS seen"
constexpr const char *numbersOfFile =
    NORVANE_NUMBERS("unixepoch(delivered_at) - unixepoch(at)");
constexpr const char *numbersOfServer =
    NORVANE_NUMBERS("extract(epoch FROM delivered_at::timestamp - at::timestamp)");
// clang-format on
#undef NORVANE_NUMBERS
#undef NORVANE_COUNT

// State, code, how many. Of one that was refused the network's status of the first such part.
#define NORVANE_UNSUCCESSFUL " AND (code <> 1 OR delivery = 3)"
constexpr NewestFirst::Statements reasons = {
    "SELECT min(id), count(*) FROM (SELECT id FROM outcome WHERE id < ? AND id >= "
    "?" NORVANE_UNSUCCESSFUL " ORDER BY id DESC LIMIT ?) AS newest",
    "SELECT state, code, count(*) FROM (SELECT " NORVANE_STATE " AS state, "
    "CASE WHEN code <> 1 THEN code ELSE coalesce((SELECT status FROM sent_part "
    "WHERE sent_part.message_id = outcome.message_id AND sent_part.state = 3 "
    "ORDER BY number LIMIT 1), -1) END AS code FROM outcome WHERE id < ? AND id >= ? AND at >= ? "
    "AND (? = '' OR at < ?)" NORVANE_UNSUCCESSFUL ") AS seen GROUP BY 1, 2"};
#undef NORVANE_UNSUCCESSFUL

QString firstOf(const StoreRow &row)
{
    return row.value(0).toString();
}

QDate dayOf(const QString &moment)
{
    constexpr qsizetype length = 10;
    return QDate::fromString(moment.left(length), Qt::ISODate);
}

QString textOf(const QDate &day)
{
    return day.toString(Qt::ISODate);
}

} // namespace

StoreResult<HistoryNumbers> HistorySummary::of(const QString &from, const QString &to) const
{
    return m_database.look([&]() -> StoreResult<HistoryNumbers> {
        const StoreResult<NewestFirst::Range> range =
            HistoryBounds(m_database, HistoryTable::Outcomes).of(from, to);
        if (!range)
            return failed(range.error());
        Counts counts;
        for (const quint32 upTo : classes)
            counts.delays.append({upTo, 0});
        return countDays(from, to, counts)
            .and_then([&] { return countReasons(*range, from, to, counts); })
            .map([&] { return numbersOf(counts); });
    });
}

/// A day at a time, so that it can end between any two of them, from one that has messages to the
/// next one.
StoreResult<> HistorySummary::countDays(const QString &from, const QString &to,
                                        Counts &counts) const
{
    const auto first = m_database.row("SELECT min(at) FROM outcome WHERE at >= ?", {from}, firstOf);
    if (!first)
        return failed(first.error());
    QString begin = first->value_or(QString());
    while (!begin.isEmpty() && (to.isEmpty() || begin < to)) {
        const QString next = textOf(dayOf(begin).addDays(1));
        if (next <= begin) // what is no moment, behind all others
            break;
        const StoreResult<QString> following =
            m_limit.check().and_then([&] { return countDay(begin, next, to, counts); });
        if (!following)
            return failed(following.error());
        begin = *following;
    }
    return {};
}

/// Gives the first moment from `next` on; nothing for none.
StoreResult<QString> HistorySummary::countDay(const QString &begin, const QString &next,
                                              const QString &to, Counts &counts) const
{
    const bool isFile = m_database.kind() == StoreDatabase::Kind::File;
    const QString end = to.isEmpty() ? next : std::min(to, next);
    return m_database
        .row(isFile ? numbersOfFile : numbersOfServer, {next, begin, end},
             [&](const StoreRow &row) {
                 addDay(textOf(dayOf(begin)), row, counts);
                 return row.value(followingColumn).toString();
             })
        .map([](const std::optional<QString> &following) { return following.value_or(QString()); });
}

void HistorySummary::addDay(const QString &name, const StoreRow &row, Counts &counts)
{
    const quint32 all = row.value(0).toUInt();
    HistoryDay day;
    day.day = name;
    day.delivered = row.value(1).toUInt();
    day.refused = row.value(2).toUInt();
    day.failed = row.value(3).toUInt();
    day.inDoubt = row.value(4).toUInt();
    day.sent = all - day.delivered - day.refused - day.failed - day.inDoubt;
    counts.days.append(day);
    quint32 counted = 0;
    for (int at = 0; at < counts.delays.size(); ++at) {
        const quint32 upTo = row.value(firstDelayColumn + at).toUInt();
        counts.delays[at].count += upTo - counted;
        counted = upTo;
    }
}

StoreResult<> HistorySummary::countReasons(NewestFirst::Range range, const QString &from,
                                           const QString &to, Counts &counts) const
{
    return NewestFirst(m_database, reasons, {from, to, to}, m_limit)
        .walk(range,
              [&counts](const StoreRow &row) {
                  counts.reasons[{row.value(0).toUInt(), row.value(1).toInt()}] +=
                      row.value(2).toUInt();
                  return true;
              })
        .map([](const auto &) {});
}

HistoryNumbers HistorySummary::numbersOf(const Counts &counts)
{
    HistoryNumbers numbers{counts.days, counts.delays, {}};
    for (auto each = counts.reasons.cbegin(); each != counts.reasons.cend(); ++each)
        numbers.reasons.append(
            {static_cast<MessageState>(each.key().first), each.key().second, each.value()});
    std::sort(numbers.reasons.begin(), numbers.reasons.end(),
              [](const FailureReason &one, const FailureReason &other) {
                  return std::tuple(other.count, one.state, one.code) <
                         std::tuple(one.count, other.state, other.code);
              });
    return numbers;
}

} // namespace norvane
