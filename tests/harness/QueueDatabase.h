#pragma once

#include "support/PostgresServer.h"

#include <QString>

#include <memory>
#include <optional>

namespace norvane {

/// The database that engines share, as somebody sees it who is none of them. No look takes longer
/// than half a minute.
class QueueDatabase
{
public:
    using Rows = PostgresServer::Rows;

    /// Makes it, empty.
    /// @param server  must outlive this object
    explicit QueueDatabase(PostgresServer &server);

    /// For libpq, by the way that an engine has: database and user.
    static QString login();

    /// @return the rows of the last statement; nothing while the server is away
    std::optional<Rows> ask(const QString &statements);
    /// @return -1 while the server is away
    int number(const QString &query);

    /// Notes from here on each part that begins in an epoch of its engine that is over.
    /// @return false where the tables aren't there yet
    bool watchEpochs();
    /// @return the phones of their messages; nothing while the server is away
    std::optional<QStringList> begunLate();
    /// What is in the queue, in words.
    QString remains();

private:
    PostgresServer &m_server;
    std::unique_ptr<PostgresClient> m_client;
};

} // namespace norvane
