#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/store/StoreRow.h"

#include <QByteArray>
#include <QList>

#include <functional>
#include <memory>
#include <optional>

struct pg_result;

namespace norvane {

/// What was asked of a PostgreSQL server in one go, and how far its answer has come. Behind a
/// statement that failed, none is carried out.
class PostgresExchange
{
public:
    /// Takes a row, and gives whether it wants the next one.
    using Take = std::function<bool(const StoreRow &)>;

    /// The answer to a statement.
    struct Answer
    {
        int changedRows = 0;
    };

    /// @param take  gets the rows of the statement's answer; may be empty
    void addStatement(const Take &take) { m_statements.append({take, {}}); }
    /// One that makes the statement of this text known to the server.
    void addPreparation(const QByteArray &text) { m_statements.append({{}, text}); }

    /// Takes what libpq gives next: a statement's result, null behind the last one of a statement,
    /// and at the end that of the synchronization.
    void take(const pg_result *result);
    /// Whether the answer is there to its end.
    bool isWhole() const { return m_at > m_statements.size(); }
    /// @return the answer to the last statement, or the first failure
    StoreResult<Answer> result() const;
    /// The texts of the statements that the server didn't come to know.
    QList<QByteArray> unprepared() const { return m_unprepared; }

private:
    struct Statement
    {
        Take take;
        QByteArray prepares; ///< empty for one that is carried out
    };

    QList<Statement> m_statements;
    qsizetype m_at = 0; ///< the statement that is answered; behind the last, the synchronization
    Answer m_answer;
    std::optional<StoreFailure> m_failure;
    QList<QByteArray> m_unprepared;
};

} // namespace norvane
