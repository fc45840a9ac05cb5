#include "TovekSMService/store/PartCounter.h"

#include "TovekSMService/store/StoreDatabase.h"

#include <QDate>

namespace norvane {

namespace {

constexpr int dayLength = 10;    // "yyyy-MM-dd"
constexpr int minuteLength = 16; // "yyyy-MM-ddTHH:mm"
constexpr int keptDays = 7;      // for a clock that is set back

struct Count
{
    bool isOfDay;
    qint64 parts;
};

Count countOf(const StoreRow &row)
{
    return {row.value(0).toString().size() == dayLength, row.value(1).toLongLong()};
}

} // namespace

StoreResult<PartCounts> PartCounter::counts(const QString &at) const
{
    return m_database
        .rows("SELECT period, parts FROM part_count WHERE period IN (?, ?)",
              {at.left(minuteLength), at.left(dayLength)}, countOf)
        .map([](const QList<Count> &found) {
            PartCounts counts;
            for (const Count &count : found)
                (count.isOfDay ? counts.inDay : counts.inMinute) = count.parts;
            return counts;
        });
}

StoreResult<> PartCounter::count(const QString &at, int parts)
{
    const auto countIn = [this, &at, parts](int length) {
        return m_database.write("INSERT INTO part_count (period, parts) VALUES (?, ?) "
                                "ON CONFLICT (period) DO UPDATE SET parts = parts + excluded.parts",
                                {at.left(length), parts});
    };
    return m_database.together([&] {
        return forgetOthers(at).and_then([&] { return countIn(minuteLength); }).and_then([&] {
            return countIn(dayLength);
        });
    });
}

/// Only the present minute counts: in an hour that comes twice, or after the clock was set back,
/// the minutes of the first time would stand in the way. A day's count stays for that very reason.
StoreResult<> PartCounter::forgetOthers(const QString &at)
{
    const QDate day = QDate::fromString(at.left(dayLength), Qt::ISODate);
    return m_database.write("DELETE FROM part_count WHERE "
                            "(length(period) = 16 AND period <> ?) OR period < ?",
                            {at.left(minuteLength), day.addDays(-keptDays).toString(Qt::ISODate)});
}

StoreResult<> PartCounter::uncount(const QString &at, int parts)
{
    return m_database.write(
        "UPDATE part_count SET parts = max(parts - ?, 0) WHERE period IN (?, ?)",
        {parts, at.left(minuteLength), at.left(dayLength)});
}

} // namespace norvane
