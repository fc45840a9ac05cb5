#pragma once

#include "TovekSMService/store/Statement.h"
#include "TovekSMService/store/StoreFailure.h"

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>
#include <type_traits>
#include <utility>

namespace norvane {

/// The SQLite file that everything is kept in: opens and closes it, and carries out statements and
/// transactions. What was written has reached the disk when the call returns. What throws
/// StoreFailure has changed nothing.
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
    void open();
    void close();
    Access access() const { return m_access; }
    QString file() const { return m_file; }

    /// Carries out several operations as one: with one commit, all of them or none. Within another
    /// one it is a part of that.
    void together(const std::function<void()> &operations);
    /// Takes back a change in memory if the transaction that is open now, if any, is rolled back.
    void onRollback(const std::function<void()> &undo);

    Statement statement(const char *text) const { return {m_statements, text}; }
    /// One statement that writes, as an operation.
    /// @return how many rows it changed
    int write(const char *text, const QVariantList &values = {});
    /// What `read` makes of each row of a query.
    template <typename Read>
    auto rows(const char *text, const QVariantList &values, Read read) const
        -> QList<std::invoke_result_t<Read, const Statement &>>;
    /// What `read` makes of a query's first row, nothing if it has none.
    template <typename Read>
    auto row(const char *text, const QVariantList &values, Read read) const
        -> std::optional<std::invoke_result_t<Read, const Statement &>>;

    /// Writes something of no meaning, to find out whether the disk can be written.
    void probe();
    /// Lets the ids of messages and outcomes to come begin here at least: no id of a store that was
    /// set aside is to come again while someone may remember it.
    void beginIdsAt(qint64 id);

private:
    void openForWriting();
    void openForReading();
    void openFile(const QString &name, const QString &options);

    QString m_file;
    QString m_connection;
    QSqlDatabase m_database;
    mutable Statements m_statements;
    bool m_isTogether = false;
    QList<std::function<void()>> m_undo; ///< of the transaction that is open
    Access m_access = Access::None;
};

template <typename Read>
auto StoreDatabase::rows(const char *text, const QVariantList &values, Read read) const
    -> QList<std::invoke_result_t<Read, const Statement &>>
{
    QList<std::invoke_result_t<Read, const Statement &>> rows;
    Statement query = statement(text);
    query.run(values);
    while (query.next())
        rows.append(read(query));
    return rows;
}

template <typename Read>
auto StoreDatabase::row(const char *text, const QVariantList &values, Read read) const
    -> std::optional<std::invoke_result_t<Read, const Statement &>>
{
    Statement query = statement(text);
    query.run(values);
    return query.next() ? std::optional(read(query)) : std::nullopt;
}

} // namespace norvane
