#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/store/StoreRow.h"

#include <QList>
#include <QVariant>

#include <functional>
#include <optional>
#include <type_traits>
#include <utility>

namespace norvane {

/// A database that messages are kept in: carries out statements and transactions. What was written
/// is durable when the outermost call returns. What fails has changed nothing.
class StoreDatabase
{
public:
    /// What kind of place it is, for statements that can't be written alike for both.
    enum class Kind { File, Server };
    /// What can be done with the database at present.
    enum class Access {
        None,    ///< it is not open: every operation fails
        Reading, ///< the disk can't be written: every operation that changes something fails
        Whole,
    };
    /// Whose work it is to open a database that was lost.
    enum class Reopening {
        ByHost, ///< it stays as it is until it is opened anew
        ByItself,
    };

    StoreDatabase() = default;
    StoreDatabase(const StoreDatabase &) = delete;
    StoreDatabase &operator=(const StoreDatabase &) = delete;
    virtual ~StoreDatabase() = default;

    virtual Kind kind() const = 0;
    virtual Access access() const = 0;
    virtual Reopening reopening() const = 0;

    /// Carries out several operations, which give a StoreResult, as one: with one commit, all of
    /// them or, where they fail, none. Within another one it is a part of that.
    /// @return what the operations give, or the failure of the transaction
    template <typename Operations>
    [[nodiscard]] std::invoke_result_t<Operations> together(Operations operations);
    /// Carries out several operations that only read, which then see the database as it is at one
    /// moment. Within another one it is a part of that.
    template <typename Operations>
    [[nodiscard]] std::invoke_result_t<Operations> look(Operations operations)
    {
        return m_isTogether ? operations() : end(beginLook(), operations);
    }
    /// Takes back a change in memory if the transaction that is open now, if any, is rolled back.
    void onRollback(const std::function<void()> &undo);

    // The statements. Their values stand in the places of question marks.

    /// One that writes, as an operation. Within a transaction its failure may show in a later
    /// statement, or in the commit.
    [[nodiscard]] StoreResult<> write(const char *text, const QVariantList &values = {});
    /// The same.
    /// @return how many rows it changed
    [[nodiscard]] StoreResult<int> writeAndCount(const char *text, const QVariantList &values = {});
    /// One that inserts a row with an id, as an operation.
    /// @return the row's id
    [[nodiscard]] StoreResult<qint64> insert(const char *text, const QVariantList &values);
    /// What `read` makes of each row of a query.
    template <typename Read>
    [[nodiscard]] auto rows(const char *text, const QVariantList &values, Read read) const
        -> StoreResult<QList<std::invoke_result_t<Read, const StoreRow &>>>;
    /// What `read` makes of a query's first row, nothing if it has none.
    template <typename Read>
    [[nodiscard]] auto row(const char *text, const QVariantList &values, Read read) const
        -> StoreResult<std::optional<std::invoke_result_t<Read, const StoreRow &>>>;

    /// Takes a row, and gives whether it wants the next one.
    using Take = std::function<bool(const StoreRow &)>;

    /// Gives each row of a query to `take`.
    [[nodiscard]] StoreResult<> each(const char *text, const QVariantList &values,
                                     const Take &take) const
    {
        return query(text, values, take);
    }

    /// Writes something of no meaning, to find out whether the database can be written.
    [[nodiscard]] virtual StoreResult<> probe() = 0;
    /// Within a transaction: whether the chores that concern everybody's messages are this
    /// engine's, until the transaction ends.
    [[nodiscard]] virtual StoreResult<bool> mayDoChores() = 0;

    /// Whether a transaction is open.
    bool isTogether() const { return m_isTogether; }

private:
    template <typename Operations>
    std::invoke_result_t<Operations> end(const StoreResult<> &begun, Operations operations);

    virtual StoreResult<> begin() = 0;
    virtual StoreResult<> beginLook() = 0;
    virtual StoreResult<> commit() = 0;
    virtual void rollBack() = 0;
    virtual StoreResult<> carryOut(const char *text, const QVariantList &values) = 0;
    virtual StoreResult<int> carryOutAndCount(const char *text, const QVariantList &values) = 0;
    virtual StoreResult<qint64> carryOutInsert(const char *text, const QVariantList &values) = 0;
    virtual StoreResult<> query(const char *text, const QVariantList &values,
                                const Take &take) const = 0;
    void endTogether(bool isKept);

    bool m_isTogether = false;
    QList<std::function<void()>> m_undo; ///< of the transaction that is open
};

template <typename Operations>
std::invoke_result_t<Operations> StoreDatabase::together(Operations operations)
{
    return m_isTogether ? operations() : end(begin(), operations);
}

/// The transaction that was begun.
template <typename Operations>
std::invoke_result_t<Operations> StoreDatabase::end(const StoreResult<> &begun,
                                                    Operations operations)
{
    if (!begun)
        return failed(begun.error());
    m_isTogether = true;
    std::invoke_result_t<Operations> result = operations();
    if (result) {
        if (const StoreResult<> committed = commit(); !committed)
            result = failed(committed.error());
    }
    if (!result)
        rollBack();
    endTogether(result.has_value());
    return result;
}

template <typename Read>
auto StoreDatabase::rows(const char *text, const QVariantList &values, Read read) const
    -> StoreResult<QList<std::invoke_result_t<Read, const StoreRow &>>>
{
    QList<std::invoke_result_t<Read, const StoreRow &>> rows;
    return query(text, values,
                 [&](const StoreRow &row) {
                     rows.append(read(row));
                     return true;
                 })
        .map([&] { return std::move(rows); });
}

template <typename Read>
auto StoreDatabase::row(const char *text, const QVariantList &values, Read read) const
    -> StoreResult<std::optional<std::invoke_result_t<Read, const StoreRow &>>>
{
    std::optional<std::invoke_result_t<Read, const StoreRow &>> first;
    return query(text, values,
                 [&](const StoreRow &row) {
                     first = read(row);
                     return false;
                 })
        .map([&] { return std::move(first); });
}

} // namespace norvane
