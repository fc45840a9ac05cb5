#pragma once

#include "support/PostgresClient.h"
#include "support/PostgresProxy.h"
#include "support/PostgresServer.h"

#include <gtest/gtest.h>

#include <memory>

namespace norvane {

/// A server that all tests of a suite share, with an empty table, and a proxy before it.
class ProxyFixture : public testing::Test
{
protected:
    using Rows = PostgresClient::Rows;
    using Direction = PostgresProxy::Direction;

    static void SetUpTestSuite() { server = std::make_unique<PostgresServer>(); }
    static void TearDownTestSuite() { server.reset(); }

    explicit ProxyFixture(PostgresProxy::Listen listen = PostgresProxy::Listen::Socket)
        : proxy(server->socketPath(), listen)
    {
        server->sql(QStringLiteral("DROP TABLE IF EXISTS kept; CREATE TABLE kept (id integer)"));
    }

    PostgresClient connected() const
    {
        return PostgresClient(proxy.address() + u' ' + PostgresServer::login());
    }

    /// What is in the table, by a way around the proxy.
    static Rows keptRows()
    {
        return server->sql(QStringLiteral("SELECT id FROM kept ORDER BY id"));
    }

    /// Sessions of the server, without the one that asks.
    static int sessions()
    {
        return server
            ->sql(QStringLiteral("SELECT count(*) FROM pg_stat_activity "
                                 "WHERE backend_type = 'client backend' "
                                 "AND pid <> pg_backend_pid()"))[0][0]
            .toInt();
    }

    static inline std::unique_ptr<PostgresServer> server;
    PostgresProxy proxy;
};

} // namespace norvane
