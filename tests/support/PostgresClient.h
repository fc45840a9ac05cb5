#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <libpq-fe.h>

#include <memory>

namespace norvane {

/// A session of a PostgreSQL server, to look and to prepare with.
class PostgresClient
{
public:
    using Rows = QList<QStringList>; ///< a null value is a null string

    /// @param connection  for libpq
    explicit PostgresClient(const QString &connection);

    bool isConnected() const { return PQstatus(m_connection.get()) == CONNECTION_OK; }
    QString error() const { return QString::fromUtf8(PQerrorMessage(m_connection.get())); }

    /// Runs one or several statements.
    /// @return whether all of them have succeeded
    bool run(const QString &statements);
    /// The same, and gives the rows of the last one.
    /// @throws std::runtime_error with what the server says
    Rows query(const QString &statements);

    /// Sends statements and doesn't wait for the answer.
    bool send(const QString &statements);
    /// Whether the answer has come, or the connection was lost.
    bool hasAnswer();
    /// Waits for the answer and returns whether all statements have succeeded.
    bool takeAnswer();

    /// For what is beyond these few.
    PGconn *get() const { return m_connection.get(); }

private:
    struct Finish
    {
        void operator()(PGconn *connection) const { PQfinish(connection); }
    };

    std::unique_ptr<PGconn, Finish> m_connection;
};

} // namespace norvane
