#include "TovekSMService/store/Outcomes.h"

#include "TovekSMService/store/StoreDatabase.h"
#include "TovekSMService/store/StoreQueries.h"

namespace norvane {

namespace {

Outcome outcomeOf(const Statement &row)
{
    return {row.value(0).toLongLong(), row.value(1).toString(), row.value(2).toString(),
            row.value(3).toInt()};
}

LastFailure failureOf(const Statement &row)
{
    return {row.value(0).toString(), row.value(1).toInt()};
}

} // namespace

StoreResult<qint64> Outcomes::keep(qint64 message, qint32 code, std::optional<int> networkReference,
                                   const QString &at, bool reported)
{
    return m_database.insert(StoreQueries::keepOutcome,
                             {code, networkReference ? QVariant(*networkReference) : QVariant(), at,
                              reported ? 1 : 0, message});
}

StoreResult<QList<Outcome>> Outcomes::unreportedFailures() const
{
    return m_database.rows(StoreQueries::unreportedFailures, {}, outcomeOf);
}

StoreResult<> Outcomes::markReported(const QList<qint64> &outcomes)
{
    if (outcomes.isEmpty())
        return {};
    return m_database.together([&] {
        StoreResult<> marked;
        for (auto id = outcomes.cbegin(); marked && id != outcomes.cend(); ++id)
            marked = m_database.write("UPDATE outcome SET reported = 1 WHERE id = ?", {*id});
        return marked;
    });
}

StoreResult<int> Outcomes::prune(const QString &before, int max)
{
    return m_database.writeAndCount(StoreQueries::pruneOutcomes, {before, max});
}

StoreResult<std::optional<LastFailure>> Outcomes::lastFailure() const
{
    // A look back of bounded length: the log is not in the order of codes.
    return m_database.row("SELECT at, code FROM outcome WHERE code <> 1 AND "
                          "id > (SELECT MAX(id) FROM outcome) - 1000 ORDER BY id DESC LIMIT 1",
                          {}, failureOf);
}

} // namespace norvane
