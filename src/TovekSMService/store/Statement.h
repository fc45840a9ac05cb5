#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/store/StoreRow.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QString>
#include <QVariant>

#include <map>

namespace norvane {

/// The statements of one connection, each prepared once.
class Statements
{
public:
    void setDatabase(const QSqlDatabase &database) { m_database = database; }
    /// Lets go of the connection, which can't be closed before.
    void drop();

private:
    friend class Statement;

    QSqlDatabase m_database;
    std::map<QLatin1String, QSqlQuery> m_prepared; ///< each stays in its place
};

/// The use of a prepared statement: from binding its values to the last row, after which it holds
/// nothing open. A statement is used once at a time.
class Statement : public StoreRow
{
public:
    /// @param text  lives as long as the program
    Statement(Statements &statements, const char *text) : m_statements(statements), m_text(text) {}
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;
    ~Statement() override;

    /// Runs it with these values in the places of its question marks.
    [[nodiscard]] StoreResult<> run(const QVariantList &values = {});

    /// Goes to the next row.
    /// @return false if there is none
    [[nodiscard]] StoreResult<bool> next();
    int columns() const override { return m_query->record().count(); }
    QVariant value(int column) const override { return m_query->value(column); }
    /// The id of the row that the last run inserted; to be asked at once.
    qint64 lastId() const { return m_query->lastInsertId().toLongLong(); }
    /// How many rows the last run changed; to be asked at once.
    int changedRows() const { return m_query->numRowsAffected(); }

private:
    StoreResult<> prepare();

    Statements &m_statements;
    const QLatin1String m_text;
    QSqlQuery *m_query = nullptr; ///< once it has run
};

} // namespace norvane
