#include "TovekSMService/history/HistorySummary.h"

#include "TovekSMService/history/HistoryBounds.h"
#include "TovekSMService/history/HistoryStatements.h"

#include <algorithm>
#include <array>
#include <tuple>

namespace norvane {

namespace {

/// Ends of the classes of delays, in seconds; 0 for the last one.
constexpr std::array<quint32, 9> classes = {10, 30, 60, 300, 900, 3600, 21'600, 86'400, 0};

#define NORVANE_WINDOW(more)                                                                       \
    "SELECT min(id), count(*) FROM (SELECT id FROM outcome WHERE id < ? AND id >= ?" more          \
    " ORDER BY id DESC LIMIT ?) AS newest"
#define NORVANE_RANGE "id < ? AND id >= ? AND at >= ? AND (? = '' OR at < ?)"
#define NORVANE_UNSUCCESSFUL " AND (code <> 1 OR delivery = 3)"

#define NORVANE_COUNT(condition) "sum(CASE WHEN " condition " THEN 1 ELSE 0 END)"
#define NORVANE_UP_TO(seconds) NORVANE_COUNT("delay <= " seconds)

// Day, how many, and of them delivered, refused, failed, in doubt.
constexpr NewestFirst::
    Statements
        days = {NORVANE_WINDOW(""),
                "SELECT substr(at, 1, 10), count(*), " NORVANE_COUNT("code = 1 AND delivery = 2") ", " NORVANE_COUNT("code = 1 AND delivery = 3") ", " NORVANE_COUNT(
                    "code <> 1 AND code <> -39") ", " NORVANE_COUNT("code = -39") " FROM outcome "
                                                                                  "WHERE"
                                                                                  " " NORVANE_RANGE
                                                                                  " GROUP BY 1"};

// How many up to the end of each class, and in all. The limit is beyond a window, and keeps the
// delay from being made anew for each class.
#define NORVANE_DELAYS(seconds)                                                                                                                                                                   \
    "SELECT " NORVANE_UP_TO("10") ", " NORVANE_UP_TO("30") ", " NORVANE_UP_TO(                                                                                                                    \
        "60") ", " NORVANE_UP_TO("300") ", " NORVANE_UP_TO("900") ", " NORVANE_UP_TO("3600") ","                                                                                                  \
                                                                                             " " NORVANE_UP_TO("21600") ", " NORVANE_UP_TO("86400") ", count(*) FROM (SELECT " seconds            \
                                                                                                                                                    " AS delay FROM outcome WHERE " NORVANE_RANGE \
                                                                                                                                                    " AND code = 1 AND delivery = 2 "             \
                                                                                                                                                    "AND delivered_at <> '' LIMIT 1000000) AS seen"
constexpr NewestFirst::Statements delaysOfFile = {
    NORVANE_WINDOW(""), NORVANE_DELAYS("unixepoch(delivered_at) - unixepoch(at)")};
constexpr NewestFirst::Statements delaysOfServer = {
    NORVANE_WINDOW(""),
    NORVANE_DELAYS("extract(epoch FROM delivered_at::timestamp - at::timestamp)")};

// State, code, how many. Of one that was refused the network's status of the first such part.
constexpr NewestFirst::Statements reasons = {
    NORVANE_WINDOW(NORVANE_UNSUCCESSFUL),
    "SELECT state, code, count(*) FROM (SELECT " NORVANE_STATE " AS state, "
    "CASE WHEN code <> 1 THEN code ELSE coalesce((SELECT status FROM sent_part "
    "WHERE sent_part.message_id = outcome.message_id AND sent_part.state = 3 "
    "ORDER BY number LIMIT 1), -1) END AS code FROM outcome WHERE " NORVANE_RANGE
        NORVANE_UNSUCCESSFUL ") AS seen GROUP BY 1, 2"};

#undef NORVANE_DELAYS
#undef NORVANE_UP_TO
#undef NORVANE_COUNT
#undef NORVANE_UNSUCCESSFUL
#undef NORVANE_RANGE
#undef NORVANE_WINDOW

} // namespace

StoreResult<HistoryNumbers> HistorySummary::of(const QString &from, const QString &to) const
{
    return m_database.look([&]() -> StoreResult<HistoryNumbers> {
        const StoreResult<NewestFirst::Range> range =
            HistoryBounds(m_database, HistoryBounds::Table::Outcomes).of(from, to);
        if (!range)
            return failed(range.error());
        Counts counts;
        for (const quint32 upTo : classes)
            counts.delays.append({upTo, 0});
        return countDays(*range, from, to, counts)
            .and_then([&] { return countDelays(*range, from, to, counts); })
            .and_then([&] { return countReasons(*range, from, to, counts); })
            .map([&] { return numbersOf(counts); });
    });
}

StoreResult<> HistorySummary::countDays(NewestFirst::Range range, const QString &from,
                                        const QString &to, Counts &counts) const
{
    return NewestFirst(m_database, days, {from, to, to}, m_limit)
        .walk(range,
              [&counts](const StoreRow &row) {
                  addDay(row, counts);
                  return true;
              })
        .map([](const auto &) {});
}

void HistorySummary::addDay(const StoreRow &row, Counts &counts)
{
    HistoryDay &day = counts.days[row.value(0).toString()];
    day.day = row.value(0).toString();
    const HistoryDay more{day.day,
                          0,
                          row.value(2).toUInt(),
                          row.value(3).toUInt(),
                          row.value(4).toUInt(),
                          row.value(5).toUInt()};
    day.sent += row.value(1).toUInt() - more.delivered - more.refused - more.failed - more.inDoubt;
    day.delivered += more.delivered;
    day.refused += more.refused;
    day.failed += more.failed;
    day.inDoubt += more.inDoubt;
}

StoreResult<> HistorySummary::countDelays(NewestFirst::Range range, const QString &from,
                                          const QString &to, Counts &counts) const
{
    const bool isFile = m_database.kind() == StoreDatabase::Kind::File;
    return NewestFirst(m_database, isFile ? delaysOfFile : delaysOfServer, {from, to, to}, m_limit)
        .walk(range,
              [&counts](const StoreRow &row) {
                  quint32 counted = 0;
                  for (int number = 0; number < counts.delays.size(); ++number) {
                      const quint32 upTo = row.value(number).toUInt();
                      counts.delays[number].count += upTo - counted;
                      counted = upTo;
                  }
                  return true;
              })
        .map([](const auto &) {});
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
    HistoryNumbers numbers{counts.days.values(), counts.delays, {}};
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
