#include "TovekSMService/store/OtherConnection.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QUuid>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString prefix()
{
    return u"other-"_s;
}

} // namespace

OtherConnection::OtherConnection(const QString &file)
    : m_name(prefix() + QUuid::createUuid().toString()),
      m_database(QSqlDatabase::addDatabase(u"QSQLITE"_s, m_name))
{
    m_database.setDatabaseName(file);
    EXPECT_TRUE(m_database.open());
}

OtherConnection::~OtherConnection()
{
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
}

void OtherConnection::run(const QString &statement)
{
    QSqlQuery query(m_database);
    EXPECT_TRUE(query.exec(statement)) << query.lastError().text().toStdString();
}

QList<QVariantList> OtherConnection::rows(const QString &text)
{
    QSqlQuery query(m_database);
    EXPECT_TRUE(query.exec(text)) << query.lastError().text().toStdString();
    QList<QVariantList> rows;
    while (query.next()) {
        QVariantList row;
        for (int column = 0; column < query.record().count(); ++column)
            row.append(query.value(column));
        rows.append(row);
    }
    return rows;
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
         rows(u"SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT "
              "LIKE 'sqlite_%' ORDER BY name"_s))
        all += rows(u"SELECT '%1', * FROM %1"_s.arg(table.constFirst().toString()));
    return all;
}

void runOnStoreConnection(const QString &file, const QString &statement)
{
    int found = 0;
    const QStringList names = QSqlDatabase::connectionNames();
    for (const QString &name : names) {
        const QSqlDatabase database = QSqlDatabase::database(name, false);
        if (name.startsWith(prefix()) || database.databaseName() != file)
            continue;
        ++found;
        QSqlQuery query(database);
        EXPECT_TRUE(query.exec(statement)) << query.lastError().text().toStdString();
    }
    EXPECT_EQ(found, 1);
}

void fillDisk(const QString &file)
{
    // A limit below the present size is taken as the present size.
    runOnStoreConnection(file, u"PRAGMA max_page_count = 1"_s);
}

void freeDisk(const QString &file)
{
    runOnStoreConnection(file, u"PRAGMA max_page_count = 1000000"_s);
}

} // namespace norvane
