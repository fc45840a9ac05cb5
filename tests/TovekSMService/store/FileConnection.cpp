#include "TovekSMService/store/FileConnection.h"

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

FileConnection::FileConnection(const QString &file)
    : m_name(prefix() + QUuid::createUuid().toString()),
      m_database(QSqlDatabase::addDatabase(u"QSQLITE"_s, m_name))
{
    m_database.setDatabaseName(file);
    EXPECT_TRUE(m_database.open());
}

FileConnection::~FileConnection()
{
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
}

QList<QVariantList> FileConnection::rows(const QString &statement)
{
    QSqlQuery query(m_database);
    EXPECT_TRUE(query.exec(statement)) << query.lastError().text().toStdString();
    QList<QVariantList> rows;
    while (query.next()) {
        QVariantList row;
        for (int column = 0; column < query.record().count(); ++column)
            row.append(query.value(column));
        rows.append(row);
    }
    return rows;
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
