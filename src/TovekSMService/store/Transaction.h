#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>

namespace norvane {

/// @throws StoreFailure
QSqlQuery prepared(const QSqlDatabase &database, const QString &statement);

/// `text` as the value of a column: an empty one for null, which the database would take for its
/// own NULL. One that begins with a byte order mark, in either order, gets another in front: the
/// database takes a mark for itself, and turns all bytes round behind one of the other order.
QString notNull(const QString &text);

/// Runs a prepared statement with its bound values.
/// @throws StoreFailure
void execute(QSqlQuery &query);

/// Runs one statement without values.
/// @throws StoreFailure
void execute(const QSqlDatabase &database, const QString &statement);

/// A transaction that writes: it takes the write lock at once, and undoes itself unless committed.
class Transaction
{
public:
    /// @throws StoreFailure
    explicit Transaction(const QSqlDatabase &database);
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;
    ~Transaction();

    /// @throws StoreFailure; nothing was kept then
    void commit();

private:
    QSqlDatabase m_database;
    bool m_open = true;
};

} // namespace norvane
