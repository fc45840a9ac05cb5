#pragma once

#include "TovekSMService/store/StoreFailure.h"

#include <QSqlDatabase>
#include <QSqlQuery>

#include <type_traits>

namespace norvane {

[[nodiscard]] StoreResult<QSqlQuery> prepared(const QSqlDatabase &database,
                                              const QString &statement);

/// `text` as the value of a column: an empty one for null, which the database would take for its
/// own NULL. One that begins with a byte order mark, in either order, gets another in front: the
/// database takes a mark for itself, and turns all bytes round behind one of the other order.
QString boundText(const QString &text);

/// Runs a prepared statement with its bound values.
[[nodiscard]] StoreResult<> execute(QSqlQuery &query);

/// Runs one statement without values.
[[nodiscard]] StoreResult<> execute(const QSqlDatabase &database, const QString &statement);

[[nodiscard]] StoreResult<> beginTransaction(const QSqlDatabase &database);
[[nodiscard]] StoreResult<> commitTransaction(const QSqlDatabase &database);
void rollBackTransaction(const QSqlDatabase &database);

/// Runs `operations`, which give a StoreResult, in a transaction that takes the lock for writing at
/// once. Where they fail, or the commit does, nothing is kept.
/// @return what they give, or the failure of the transaction
template <typename Operations>
[[nodiscard]] std::invoke_result_t<Operations> inTransaction(const QSqlDatabase &database,
                                                             Operations operations)
{
    if (const StoreResult<> begun = beginTransaction(database); !begun)
        return failed(begun.error());
    std::invoke_result_t<Operations> result = operations();
    if (result) {
        if (const StoreResult<> committed = commitTransaction(database); !committed)
            result = failed(committed.error());
    }
    if (!result)
        rollBackTransaction(database);
    return result;
}

} // namespace norvane
