#include "TovekSMService/store/Store.h"

#include "TovekSMService/store/Statement.h"
#include "TovekSMService/store/StoreQueries.h"
#include "TovekSMService/store/Transaction.h"

#include <QDate>

namespace norvane {

namespace {

constexpr int dayLength = 10;    // "yyyy-MM-dd"
constexpr int minuteLength = 16; // "yyyy-MM-ddTHH:mm"
constexpr int keptDays = 7;      // for a clock that is set back

} // namespace

PartCounts Store::partCounts(const QString &at) const
{
    PartCounts counts;
    Statement query(m_statements, "SELECT period, parts FROM part_count WHERE period IN (?, ?)");
    query.run({at.left(minuteLength), at.left(dayLength)});
    while (query.next()) {
        const bool isDay = query.value(0).toString().size() == dayLength;
        (isDay ? counts.inDay : counts.inMinute) = query.value(1).toLongLong();
    }
    return counts;
}

void Store::countPart(const QString &at)
{
    Transaction transaction(m_database, transactionKind());
    {
        // Only the present minute counts: in an hour that comes twice, or after the clock was set
        // back, the minutes of the first time would stand in the way. A day's count stays for
        // that very reason.
        Statement forget(m_statements, "DELETE FROM part_count WHERE "
                                       "(length(period) = 16 AND period <> ?) OR period < ?");
        const QDate day = QDate::fromString(at.left(dayLength), Qt::ISODate);
        forget.run({at.left(minuteLength), day.addDays(-keptDays).toString(Qt::ISODate)});
    }
    for (const int length : {minuteLength, dayLength}) {
        Statement count(m_statements, "INSERT INTO part_count (period, parts) VALUES (?, 1) "
                                      "ON CONFLICT (period) DO UPDATE SET parts = parts + 1");
        count.run({at.left(length)});
    }
    transaction.commit();
}

void Store::uncountPart(const QString &at)
{
    write("UPDATE part_count SET parts = parts - 1 WHERE period IN (?, ?) AND parts > 0",
          {at.left(minuteLength), at.left(dayLength)});
}

int Store::pruneOutcomes(const QString &before, int max)
{
    return write(StoreQueries::pruneOutcomes, {before, max});
}

} // namespace norvane
