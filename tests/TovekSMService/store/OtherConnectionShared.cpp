#include "TovekSMService/store/OtherConnection.h"

#include "TovekSMService/store/PostgresConnection.h"
#include "TovekSMService/store/TestStoreShared.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Whether the statement is about what lies in the engine's own file.
bool isOfFile(const QString &statement)
{
    static const QRegularExpression tables(
        u"\\b(part_count|pin_attempt|kept_settlement|PRAGMA|sqlite_)|FROM setting\\b"_s);
    return tables.match(statement).hasMatch();
}

QList<QVariantList> rowsOfServer(const QString &file, const QString &text)
{
    const auto connection = PostgresConnection::open(connectionOf(file));
    if (!connection) {
        ADD_FAILURE() << connection.error().text().toStdString();
        return {};
    }
    QList<QVariantList> rows;
    QString statement = text;
    static const QRegularExpression concatenation(u"group_concat\\((\\w+)\\)"_s);
    statement.replace(concatenation, u"string_agg(\\1::text, ',')"_s);
    (*connection)->send(statement.toUtf8(), {}, [&rows](const StoreRow &row) {
        QVariantList values;
        for (int column = 0; column < row.columns(); ++column)
            values.append(row.value(column));
        rows.append(values);
        return true;
    });
    const auto answered = (*connection)->sync();
    EXPECT_TRUE(answered) << answered.error().text().toStdString();
    return rows;
}

} // namespace

void OtherConnection::run(const QString &statement)
{
    rows(statement);
}

void OtherConnection::refuse(const QString &event, const QString &table, const QString &condition)
{
    run(u"CREATE OR REPLACE FUNCTION refuse() RETURNS trigger LANGUAGE plpgsql AS "
        "'BEGIN RAISE EXCEPTION ''refused''; END'"_s);
    run(u"CREATE TRIGGER refuse BEFORE %1 ON %2 FOR EACH ROW WHEN (%3) EXECUTE FUNCTION refuse()"_s
            .arg(event, table, condition.isEmpty() ? u"true"_s : condition));
}

void OtherConnection::allow(const QString &table)
{
    run(u"DROP TRIGGER refuse ON %1"_s.arg(table));
}

QList<QVariantList> OtherConnection::rows(const QString &text)
{
    return isOfFile(text) ? m_file.rows(text) : rowsOfServer(m_file.file(), text);
}

QVariant OtherConnection::value(const QString &query)
{
    const QList<QVariantList> found = rows(query);
    return found.isEmpty() ? QVariant() : found.constFirst().constFirst();
}

} // namespace norvane
