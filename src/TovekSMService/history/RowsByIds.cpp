#include "TovekSMService/history/RowsByIds.h"

#include "TovekSMService/history/HistoryStatements.h"
#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/store/PostgresText.h"
#include "TovekSMService/store/StoreDatabase.h"

#include <QStringList>

#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

/// A statement with a list of ids, as either kind of database takes it.
struct RowsByIds::Statements
{
    const char *inFile;
    const char *inServer;
};

namespace {

#define NORVANE_BY_IDS(columns, table, id, more)                                                   \
    {                                                                                              \
        "SELECT " columns " FROM " table " WHERE " id " IN (SELECT value FROM json_each(?))" more, \
            "SELECT " columns " FROM " table " WHERE " id " = ANY (?::bigint[])" more              \
    }

QString listOf(const QList<qint64> &ids, StoreDatabase::Kind kind)
{
    if (kind == StoreDatabase::Kind::Server)
        return PostgresText::array(ids);
    QStringList numbers;
    for (const qint64 id : ids)
        numbers.append(QString::number(id));
    return u'[' + numbers.join(u',') + u']';
}

} // namespace

StoreResult<QList<PlacedRow>> RowsByIds::waiting(const QList<qint64> &ids) const
{
    return read(NORVANE_BY_IDS(NORVANE_WAITING, "message", "id", " ORDER BY id DESC"), ids);
}

StoreResult<QList<PlacedRow>> RowsByIds::outcomes(const QList<qint64> &ids) const
{
    return read(NORVANE_BY_IDS(NORVANE_OUTCOME, "outcome", "id", " ORDER BY id DESC"), ids);
}

StoreResult<QList<HistoryRow>> RowsByIds::of(const QList<qint64> &ids) const
{
    QList<qint64> messages;
    QList<qint64> ownOfOutcomes;
    for (const qint64 id : ids) {
        if (id > 0)
            messages.append(id);
        else if (id < 0 && id > std::numeric_limits<qint64>::min())
            ownOfOutcomes.append(-id);
    }
    QList<HistoryRow> rows;
    const auto append = [&rows](const QList<PlacedRow> &found) {
        for (const PlacedRow &each : found)
            rows.append(each.row);
    };
    return waiting(messages)
        .map(append)
        .and_then([&] {
            return read(NORVANE_BY_IDS(NORVANE_OUTCOME, "outcome", "message_id", ""), messages);
        })
        .map(append)
        .and_then([&] {
            return read(NORVANE_BY_IDS(NORVANE_OUTCOME, "outcome", "id", " AND message_id = 0"),
                        ownOfOutcomes);
        })
        .map(append)
        .map([&] { return rows; });
}

#undef NORVANE_BY_IDS

StoreResult<QList<PlacedRow>> RowsByIds::read(const Statements &statements,
                                              const QList<qint64> &ids) const
{
    QList<PlacedRow> rows;
    if (ids.isEmpty())
        return rows;
    StoreResult<> goesOn = m_limit.check();
    if (!goesOn)
        return failed(goesOn.error());
    const StoreDatabase::Kind kind = m_database.kind();
    const StoreResult<> taken =
        m_database.each(kind == StoreDatabase::Kind::File ? statements.inFile : statements.inServer,
                        {listOf(ids, kind)}, [&](const StoreRow &row) {
                            rows.append(PlacedRow::of(row));
                            goesOn = m_limit.check();
                            return goesOn.has_value();
                        });
    if (!taken || !goesOn)
        return failed(taken ? goesOn.error() : taken.error());
    return rows;
}

} // namespace norvane
