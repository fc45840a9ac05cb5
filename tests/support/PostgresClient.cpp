#include "support/PostgresClient.h"

#include <stdexcept>

namespace norvane {

namespace {

struct Clear
{
    void operator()(PGresult *answer) const { PQclear(answer); }
};

using Answer = std::unique_ptr<PGresult, Clear>;

bool hasSucceeded(const Answer &answer)
{
    const ExecStatusType status = PQresultStatus(answer.get());
    return status == PGRES_TUPLES_OK || status == PGRES_COMMAND_OK;
}

PostgresClient::Rows rowsOf(const PGresult *answer)
{
    PostgresClient::Rows rows;
    for (int row = 0; row < PQntuples(answer); ++row) {
        QStringList values;
        for (int column = 0; column < PQnfields(answer); ++column)
            values += PQgetisnull(answer, row, column)
                          ? QString()
                          : QString::fromUtf8(PQgetvalue(answer, row, column),
                                              PQgetlength(answer, row, column));
        rows += values;
    }
    return rows;
}

} // namespace

PostgresClient::PostgresClient(const QString &connection)
    : m_connection(PQconnectdb(connection.toUtf8().constData()))
{}

bool PostgresClient::run(const QString &statements)
{
    return hasSucceeded(Answer(PQexec(get(), statements.toUtf8().constData())));
}

PostgresClient::Rows PostgresClient::query(const QString &statements)
{
    const Answer answer(PQexec(get(), statements.toUtf8().constData()));
    if (!hasSucceeded(answer))
        throw std::runtime_error(PQerrorMessage(get()));
    return rowsOf(answer.get());
}

bool PostgresClient::send(const QString &statements)
{
    return PQsendQuery(get(), statements.toUtf8().constData()) == 1;
}

bool PostgresClient::hasAnswer()
{
    return PQconsumeInput(get()) == 0 || PQisBusy(get()) == 0;
}

bool PostgresClient::takeAnswer()
{
    bool done = true;
    while (const Answer answer{PQgetResult(get())})
        done = done && hasSucceeded(answer);
    return done;
}

} // namespace norvane
