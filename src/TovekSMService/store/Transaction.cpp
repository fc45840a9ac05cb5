#include "TovekSMService/store/Transaction.h"

#include "TovekSMService/store/StoreFailure.h"

#include <QSqlError>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

void needOpen(const QSqlDatabase &database)
{
    if (!database.isOpen())
        throw StoreFailure(StoreFailure::Kind::ReadOnly, u"the store is not open"_s);
}

} // namespace

QSqlQuery prepared(const QSqlDatabase &database, const QString &statement)
{
    needOpen(database);
    QSqlQuery query(database);
    query.setForwardOnly(true);
    if (!query.prepare(statement))
        throw StoreFailure(query.lastError());
    return query;
}

QString notNull(const QString &text)
{
    if (text.startsWith(QChar::ByteOrderMark) || text.startsWith(QChar::ByteOrderSwapped))
        return QChar(QChar::ByteOrderMark) + text;
    return text.isNull() ? u""_s : text;
}

void execute(QSqlQuery &query)
{
    if (!query.exec())
        throw StoreFailure(query.lastError());
}

void execute(const QSqlDatabase &database, const QString &statement)
{
    needOpen(database);
    QSqlQuery query(database);
    if (!query.exec(statement))
        throw StoreFailure(query.lastError());
}

Transaction::Transaction(const QSqlDatabase &database) : m_database(database)
{
    execute(m_database, u"BEGIN IMMEDIATE"_s);
}

Transaction::~Transaction()
{
    if (m_open)
        QSqlQuery(m_database).exec(u"ROLLBACK"_s);
}

void Transaction::commit()
{
    execute(m_database, u"COMMIT"_s);
    m_open = false;
}

} // namespace norvane
