#include "TovekSMService/store/OtherConnection.h"

namespace norvane {

using namespace Qt::StringLiterals;

void OtherConnection::run(const QString &statement)
{
    rows(statement);
}

QList<QVariantList> OtherConnection::rows(const QString &query)
{
    return m_file.rows(query);
}

QVariant OtherConnection::value(const QString &query)
{
    const QList<QVariantList> found = rows(query);
    return found.isEmpty() ? QVariant() : found.constFirst().constFirst();
}

void OtherConnection::refuse(const QString &event, const QString &table, const QString &condition)
{
    run(u"CREATE TRIGGER refuse_%2 BEFORE %1 ON %2 WHEN %3 BEGIN "
        "SELECT RAISE(ABORT, 'refused'); END"_s.arg(event, table,
                                                    condition.isEmpty() ? u"1 = 1"_s : condition));
}

void OtherConnection::allow(const QString &table)
{
    run(u"DROP TRIGGER refuse_%1"_s.arg(table));
}

void OtherConnection::lock()
{
    run(u"BEGIN IMMEDIATE"_s);
}

void OtherConnection::unlock()
{
    run(u"ROLLBACK"_s);
}

QList<QVariantList> OtherConnection::contents()
{
    QList<QVariantList> all;
    for (const QVariantList &table :
         rows(u"SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite_%' "
              "AND name NOT LIKE 'outcome_search%' "
              "AND name NOT LIKE 'received_search%' AND name <> 'setting' ORDER BY name"_s))
        all += rows(u"SELECT '%1', * FROM %1"_s.arg(table.constFirst().toString()));
    return all + rows(u"SELECT * FROM setting WHERE name NOT IN ('history_index', 'inbox_index') "
                      "ORDER BY name"_s);
}

} // namespace norvane
