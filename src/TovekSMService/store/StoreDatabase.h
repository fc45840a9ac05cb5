#pragma once

#include "TovekSMService/store/Sql.h"
#include "TovekSMService/store/Statement.h"
#include "TovekSMService/store/StoreFailure.h"

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>
#include <type_traits>

namespace norvane {

/// The SQLite file that everything is kept in: opens and closes it, and carries out statements and
/// transactions. What was written has reached the disk when the call returns. What fails has
/// changed nothing.
class StoreDatabase
{
public:
    /// What can be done with the file at present.
    enum class Access {
        None,    ///< it is not open: every operation fails
        Reading, ///< the disk can't be written: every operation that changes something fails
        Whole,
    };

    explicit StoreDatabase(const QString &file);
    StoreDatabase(const StoreDatabase &) = delete;
    StoreDatabase &operator=(const StoreDatabase &) = delete;
    ~StoreDatabase();

    /// Opens the file anew, making it and its schema where there is none. Where that fails for the
    /// disk and not for the file, it is open for reading afterwards if it can be.
    [[nodiscard]] StoreResult<> open();
    void close();
    Access access() const { return m_access; }
    QString file() const { return m_file; }

    /// Carries out several operations, which give a StoreResult, as one: with one commit, all of
    /// them or, where they fail, none. Within another one it is a part of that.
    /// @return what the operations give, or the failure of the transaction
    template <typename Operations>
    [[nodiscard]] std::invoke_result_t<Operations> together(Operations operations);
    /// Takes back a change in memory if the transaction that is open now, if any, is rolled back.
    void onRollback(const std::function<void()> &undo);

    /// One statement that writes, as an operation.
    [[nodiscard]] StoreResult<> write(const char *text, const QVariantList &values = {});
    /// The same.
    /// @return how many rows it changed
    [[nodiscard]] StoreResult<int> writeAndCount(const char *text, const QVariantList &values = {});
    /// One statement that inserts a row, as an operation.
    /// @return the row's id
    [[nodiscard]] StoreResult<qint64> insert(const char *text, const QVariantList &values);
    /// What `read` makes of each row of a query.
    template <typename Read>
    [[nodiscard]] auto rows(const char *text, const QVariantList &values, Read read) const
        -> StoreResult<QList<std::invoke_result_t<Read, const Statement &>>>;
    /// What `read` makes of a query's first row, nothing if it has none.
    template <typename Read>
    [[nodiscard]] auto row(const char *text, const QVariantList &values, Read read) const
        -> StoreResult<std::optional<std::invoke_result_t<Read, const Statement &>>>;

    /// Writes something of no meaning, to find out whether the disk can be written.
    [[nodiscard]] StoreResult<> probe();
    /// Lets the ids of messages and outcomes to come begin here at least: no id of a store that was
    /// set aside is to come again while someone may remember it.
    [[nodiscard]] StoreResult<> beginIdsAt(qint64 id);

private:
    StoreResult<> openForWriting();
    StoreResult<> openForReading();
    StoreResult<> openFile(const QString &name, const QString &options);
    void endTogether(bool isKept);

    QString m_file;
    QString m_connection;
    QSqlDatabase m_database;
    mutable Statements m_statements;
    bool m_isTogether = false;
    QList<std::function<void()>> m_undo; ///< of the transaction that is open
    Access m_access = Access::None;
};

template <typename Operations>
std::invoke_result_t<Operations> StoreDatabase::together(Operations operations)
{
    if (m_isTogether)
        return operations();
    m_isTogether = true;
    std::invoke_result_t<Operations> result = inTransaction(m_database, operations);
    endTogether(result.has_value());
    return result;
}

template <typename Read>
auto StoreDatabase::rows(const char *text, const QVariantList &values, Read read) const
    -> StoreResult<QList<std::invoke_result_t<Read, const Statement &>>>
{
    QList<std::invoke_result_t<Read, const Statement &>> rows;
    Statement query(m_statements, text);
    if (const StoreResult<> ran = query.run(values); !ran)
        return failed(ran.error());
    StoreResult<bool> isRow = query.next();
    for (; isRow && *isRow; isRow = query.next())
        rows.append(read(query));
    if (!isRow)
        return failed(isRow.error());
    return rows;
}

template <typename Read>
auto StoreDatabase::row(const char *text, const QVariantList &values, Read read) const
    -> StoreResult<std::optional<std::invoke_result_t<Read, const Statement &>>>
{
    Statement query(m_statements, text);
    return query.run(values).and_then([&] { return query.next(); }).map([&](bool isRow) {
        return isRow ? std::optional(read(query)) : std::nullopt;
    });
}

} // namespace norvane
