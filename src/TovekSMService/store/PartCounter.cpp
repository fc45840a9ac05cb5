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

Count countOf(const Statement &row)
{
    return {row.value(0).toString().size() == dayLength, row.value(1).toLongLong()};
}

} // namespace

PartCounts PartCounter::counts(const QString &at) const
{
    PartCounts counts;
    const QList<Count> found =
        m_database.rows("SELECT period, parts FROM part_count WHERE period IN (?, ?)",
                        {at.left(minuteLength), at.left(dayLength)}, countOf);
    for (const Count &count : found)
        (count.isOfDay ? counts.inDay : counts.inMinute) = count.parts;
    return counts;
}

void PartCounter::count(const QString &at)
{
    m_database.together([&] {
        // Only the present minute counts: in an hour that comes twice, or after the clock was set
        // back, the minutes of the first time would stand in the way. A day's count stays for
        // that very reason.
        const QDate day = QDate::fromString(at.left(dayLength), Qt::ISODate);
        m_database.write("DELETE FROM part_count WHERE "
                         "(length(period) = 16 AND period <> ?) OR period < ?",
                         {at.left(minuteLength), day.addDays(-keptDays).toString(Qt::ISODate)});
        for (const int length : {minuteLength, dayLength})
            m_database.write("INSERT INTO part_count (period, parts) VALUES (?, 1) "
                             "ON CONFLICT (period) DO UPDATE SET parts = parts + 1",
                             {at.left(length)});
    });
}

void PartCounter::uncount(const QString &at)
{
    m_database.write("UPDATE part_count SET parts = parts - 1 WHERE period IN (?, ?) AND parts > 0",
                     {at.left(minuteLength), at.left(dayLength)});
}

} // namespace norvane
