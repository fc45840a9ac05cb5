#include "TovekSMService/store/PostgresExchange.h"

#include <libpq-fe.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

// pg_type.dat
constexpr Oid boolType = 16;
constexpr Oid byteaType = 17;
constexpr Oid int8Type = 20;
constexpr Oid int2Type = 21;
constexpr Oid int4Type = 23;

/// A row of a result in text format.
class ResultRow : public StoreRow
{
public:
    ResultRow(const PGresult *result, int row) : m_result(result), m_row(row) {}

    int columns() const override { return PQnfields(m_result); }

    QVariant value(int column) const override
    {
        if (PQgetisnull(m_result, m_row, column) != 0)
            return {};
        const char *const text = PQgetvalue(m_result, m_row, column);
        const int length = PQgetlength(m_result, m_row, column);
        switch (PQftype(m_result, column)) {
        case boolType:
            return *text == 't';
        case int2Type:
        case int4Type:
        case int8Type:
            return QByteArray::fromRawData(text, length).toLongLong();
        case byteaType: // "\x..."
            return QByteArray::fromHex(QByteArray::fromRawData(text + 2, length - 2));
        default:
            return QString::fromUtf8(text, length);
        }
    }

private:
    const PGresult *m_result;
    const int m_row;
};

StoreFailure::Kind kindOf(const QByteArray &sqlState)
{
    if (sqlState.startsWith("53")) // insufficient resources
        return StoreFailure::Kind::Full;
    if (sqlState.startsWith("40") || sqlState.startsWith("55") || sqlState == "57014")
        return StoreFailure::Kind::Busy; // serialization, lock not available, query canceled
    if (sqlState == "23505")             // unique violation
        return StoreFailure::Kind::Exists;
    if (sqlState == "25006") // read-only transaction
        return StoreFailure::Kind::ReadOnly;
    if (sqlState.startsWith("57P") || sqlState.startsWith("08"))
        return StoreFailure::Kind::Away; // shut down, connection
    return StoreFailure::Kind::Other;
}

StoreFailure failureOf(const PGresult *result)
{
    const char *const state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
    const char *const text = PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY);
    return {kindOf(state), text ? QString::fromUtf8(text)
                                : QString::fromUtf8(PQresultErrorMessage(result)).trimmed()};
}

} // namespace

void PostgresExchange::take(const pg_result *result)
{
    if (result == nullptr || m_at == m_statements.size()) {
        ++m_at;
        return;
    }
    const Statement &statement = m_statements.at(m_at);
    const ExecStatusType status = PQresultStatus(result);
    if (status == PGRES_FATAL_ERROR && !m_failure)
        m_failure = failureOf(result);
    if (status == PGRES_FATAL_ERROR || status == PGRES_PIPELINE_ABORTED) {
        if (!statement.prepares.isEmpty())
            m_unprepared.append(statement.prepares);
        return;
    }
    for (int row = 0; statement.take && row < PQntuples(result); ++row) {
        if (!statement.take(ResultRow(result, row)))
            break;
    }
    if (statement.prepares.isEmpty())
        m_answer.changedRows = QByteArray(PQcmdTuples(const_cast<PGresult *>(result))).toInt();
}

StoreResult<PostgresExchange::Answer> PostgresExchange::result() const
{
    if (m_failure)
        return failed(*m_failure);
    return m_answer;
}

} // namespace norvane
