#include "service/store/Transaction.h"

#include "service/store/StoreFailure.h"

#include <QSqlError>

QSqlQuery prepared(const QSqlDatabase &database, const QString &statement)
{
    QSqlQuery query(database);
    query.setForwardOnly(true);
    if (!query.prepare(statement))
        throw StoreFailure(query.lastError());
    return query;
}

QString notNull(const QString &text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

void execute(QSqlQuery &query)
{
    if (!query.exec())
        throw StoreFailure(query.lastError());
}

void execute(const QSqlDatabase &database, const QString &statement)
{
    QSqlQuery query(database);
    if (!query.exec(statement))
        throw StoreFailure(query.lastError());
}

Transaction::Transaction(const QSqlDatabase &database) : m_database(database)
{
    execute(m_database, QStringLiteral("BEGIN IMMEDIATE"));
}

Transaction::~Transaction()
{
    if (m_open)
        QSqlQuery(m_database).exec(QStringLiteral("ROLLBACK"));
}

void Transaction::commit()
{
    execute(m_database, QStringLiteral("COMMIT"));
    m_open = false;
}
