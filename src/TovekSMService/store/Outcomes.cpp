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

qint64 Outcomes::keep(qint64 message, qint32 code, std::optional<int> networkReference,
                      const QString &at, bool reported)
{
    qint64 id = 0;
    m_database.together([&] {
        Statement keep = m_database.statement(StoreQueries::keepOutcome);
        keep.run({code, networkReference ? QVariant(*networkReference) : QVariant(), at,
                  reported ? 1 : 0, message});
        id = keep.lastId();
    });
    return id;
}

QList<Outcome> Outcomes::unreportedFailures() const
{
    return m_database.rows(StoreQueries::unreportedFailures, {}, outcomeOf);
}

void Outcomes::markReported(const QList<qint64> &outcomes)
{
    if (outcomes.isEmpty())
        return;
    m_database.together([&] {
        for (const qint64 id : outcomes)
            m_database.write("UPDATE outcome SET reported = 1 WHERE id = ?", {id});
    });
}

int Outcomes::prune(const QString &before, int max)
{
    return m_database.write(StoreQueries::pruneOutcomes, {before, max});
}

std::optional<LastFailure> Outcomes::lastFailure() const
{
    // A look back of bounded length: the log is not in the order of codes.
    return m_database.row("SELECT at, code FROM outcome WHERE code <> 1 AND "
                          "id > (SELECT MAX(id) FROM outcome) - 1000 ORDER BY id DESC LIMIT 1",
                          {}, failureOf);
}

} // namespace norvane
