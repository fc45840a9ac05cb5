#include "TovekSMService/store/Sql.h"

#include <QSqlError>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

StoreResult<> needOpen(const QSqlDatabase &database)
{
    if (!database.isOpen())
        return failed(StoreFailure(StoreFailure::Kind::ReadOnly, u"the store is not open"_s));
    return {};
}

} // namespace

StoreResult<QSqlQuery> prepared(const QSqlDatabase &database, const QString &statement)
{
    if (const StoreResult<> open = needOpen(database); !open)
        return failed(open.error());
    QSqlQuery query(database);
    query.setForwardOnly(true);
    if (!query.prepare(statement))
        return failed(StoreFailure(query.lastError()));
    return query;
}

QString boundText(const QString &text)
{
    if (text.startsWith(QChar::ByteOrderMark) || text.startsWith(QChar::ByteOrderSwapped))
        return QChar(QChar::ByteOrderMark) + text;
    return text.isNull() ? u""_s : text;
}

StoreResult<> execute(QSqlQuery &query)
{
    if (!query.exec())
        return failed(StoreFailure(query.lastError()));
    return {};
}

StoreResult<> execute(const QSqlDatabase &database, const QString &statement)
{
    if (StoreResult<> open = needOpen(database); !open)
        return open;
    QSqlQuery query(database);
    if (!query.exec(statement))
        return failed(StoreFailure(query.lastError()));
    return {};
}

StoreResult<> beginTransaction(const QSqlDatabase &database)
{
    return execute(database, u"BEGIN IMMEDIATE"_s);
}

StoreResult<> commitTransaction(const QSqlDatabase &database)
{
    return execute(database, u"COMMIT"_s);
}

void rollBackTransaction(const QSqlDatabase &database)
{
    QSqlQuery(database).exec(u"ROLLBACK"_s);
}

} // namespace norvane
