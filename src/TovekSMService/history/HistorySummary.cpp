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

// Day, state, class of the delay (-1 for none), how many.
#define NORVANE_DAYS(seconds)                                                                      \
    "SELECT day, state, CASE WHEN state <> 4 OR delivered_at = '' THEN -1 "                        \
    "WHEN delay <= 10 THEN 10 WHEN delay <= 30 THEN 30 WHEN delay <= 60 THEN 60 "                  \
    "WHEN delay <= 300 THEN 300 WHEN delay <= 900 THEN 900 WHEN delay <= 3600 THEN 3600 "          \
    "WHEN delay <= 21600 THEN 21600 WHEN delay <= 86400 THEN 86400 ELSE 0 END, count(*) "          \
    "FROM (SELECT substr(at, 1, 10) AS day, " NORVANE_STATE " AS state, delivered_at, "            \
    "CASE WHEN delivered_at <> '' THEN " seconds " END AS delay "                                  \
    "FROM outcome WHERE " NORVANE_RANGE ") AS seen GROUP BY 1, 2, 3"

constexpr NewestFirst::Statements daysOfFile = {
    NORVANE_WINDOW(""), NORVANE_DAYS("unixepoch(delivered_at) - unixepoch(at)")};
constexpr NewestFirst::Statements daysOfServer = {
    NORVANE_WINDOW(""),
    NORVANE_DAYS("extract(epoch FROM delivered_at::timestamp - at::timestamp)")};

// State, code, how many. Of one that was refused the network's status of the first such part.
constexpr NewestFirst::Statements reasons = {
    NORVANE_WINDOW(NORVANE_UNSUCCESSFUL),
    "SELECT state, code, count(*) FROM (SELECT " NORVANE_STATE " AS state, "
    "CASE WHEN code <> 1 THEN code ELSE coalesce((SELECT status FROM sent_part "
    "WHERE sent_part.message_id = outcome.message_id AND sent_part.state = 3 "
    "ORDER BY number LIMIT 1), -1) END AS code FROM outcome WHERE " NORVANE_RANGE
        NORVANE_UNSUCCESSFUL ") AS seen GROUP BY 1, 2"};

#undef NORVANE_DAYS
#undef NORVANE_UNSUCCESSFUL
#undef NORVANE_RANGE
#undef NORVANE_WINDOW

quint32 &countOf(HistoryDay &day, MessageState state)
{
    switch (state) {
    case MessageState::Delivered:
        return day.delivered;
    case MessageState::Refused:
        return day.refused;
    case MessageState::Failed:
        return day.failed;
    case MessageState::InDoubt:
        return day.inDoubt;
    case MessageState::Waiting:
    case MessageState::Sent:
        break;
    }
    return day.sent;
}

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
        return count(*range, from, to, counts)
            .and_then([&] { return countReasons(*range, from, to, counts); })
            .map([&] { return numbersOf(counts); });
    });
}

StoreResult<> HistorySummary::count(NewestFirst::Range range, const QString &from,
                                    const QString &to, Counts &counts) const
{
    const bool isFile = m_database.kind() == StoreDatabase::Kind::File;
    return NewestFirst(m_database, isFile ? daysOfFile : daysOfServer, {from, to, to}, m_limit)
        .walk(range,
              [&counts](const StoreRow &row) {
                  addDay(row, counts);
                  return true;
              })
        .map([](const auto &) {});
}

void HistorySummary::addDay(const StoreRow &row, Counts &counts)
{
    const QString day = row.value(0).toString();
    const auto count = row.value(3).toUInt();
    HistoryDay &numbers = counts.days[day];
    numbers.day = day;
    countOf(numbers, static_cast<MessageState>(row.value(1).toUInt())) += count;
    for (DeliveryDelay &delay : counts.delays) {
        if (row.value(2).toLongLong() == delay.upTo)
            delay.count += count;
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
