#include "support/PostgresServer.h"
#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <libpq-fe.h>

#include <csignal>
#include <memory>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Rows = PostgresServer::Rows;
using Client = std::unique_ptr<PGconn, decltype(&PQfinish)>;

Client clientOf(const QString &connection)
{
    return {PQconnectdb(connection.toUtf8().constData()), &PQfinish};
}

bool hasRun(const Client &client, const char *statement)
{
    PGresult *const answer = PQexec(client.get(), statement);
    const bool done = PQresultStatus(answer) == PGRES_COMMAND_OK;
    PQclear(answer);
    return done;
}

} // namespace

TEST(PostgresServer, databasesOfOneServerDoNotSeeEachOther)
{
    PostgresServer server;
    server.freshDatabase(u"one"_s);
    server.freshDatabase(u"two"_s);
    server.sql(u"CREATE TABLE only_here (id integer)"_s, u"one"_s);
    const QString tables = u"SELECT relname FROM pg_class WHERE relname = 'only_here'"_s;
    EXPECT_EQ(server.sql(tables, u"one"_s), Rows{{u"only_here"_s}});
    EXPECT_EQ(server.sql(tables, u"two"_s), Rows());
}

TEST(PostgresServer, aFreshDatabaseReplacesOneThatIsInUse)
{
    PostgresServer server;
    const Client client = clientOf(server.freshDatabase(u"shop"_s));
    ASSERT_TRUE(hasRun(client, "CREATE TABLE former (id integer)"));
    server.freshDatabase(u"shop"_s);
    EXPECT_FALSE(hasRun(client, "INSERT INTO former VALUES (1)"));
    EXPECT_EQ(server.sql(u"SELECT count(*) FROM pg_class WHERE relname = 'former'"_s, u"shop"_s),
              Rows{{u"0"_s}});
}

TEST(PostgresServer, rowsAreThoseOfTheLastStatement)
{
    PostgresServer server;
    EXPECT_EQ(server.sql(u"SELECT 1; SELECT 'año', NULL, '' UNION ALL SELECT 'b', '2', 'c'"_s),
              (Rows{{u"año"_s, QString(), u""_s}, {u"b"_s, u"2"_s, u"c"_s}}));
    EXPECT_TRUE(server.sql(u"SELECT NULL"_s)[0][0].isNull());
    EXPECT_FALSE(server.sql(u"SELECT ''"_s)[0][0].isNull());
}

TEST(PostgresServer, statementsThatFailThrow)
{
    PostgresServer server;
    EXPECT_THROW(server.sql(u"SELECT 1/0"_s), std::runtime_error);
    EXPECT_THROW(server.sql(u"SELECT 1"_s, u"missing"_s), std::runtime_error);
    ASSERT_TRUE(server.stop());
    EXPECT_THROW(server.sql(u"SELECT 1"_s), std::runtime_error);
}

TEST(PostgresServer, aRestartKeepsTheDataAndTheAddress)
{
    PostgresServer server;
    const QString connection = server.freshDatabase(u"shop"_s);
    server.sql(u"CREATE TABLE kept (id integer); INSERT INTO kept VALUES (7)"_s, u"shop"_s);
    ASSERT_TRUE(server.restart());
    EXPECT_EQ(server.connection(u"shop"_s), connection);
    EXPECT_EQ(server.sql(u"SELECT id FROM kept"_s, u"shop"_s), Rows{{u"7"_s}});
}

class KilledPostgresServer : public testing::TestWithParam<PostgresServer::Durability>
{};

TEST_P(KilledPostgresServer, recoversWhatWasCommittedAndNothingElse)
{
    PostgresServer server(GetParam());
    server.sql(u"CREATE TABLE kept (id integer)"_s);
    const Client client = clientOf(server.connection());
    ASSERT_TRUE(hasRun(client, "INSERT INTO kept VALUES (1)"));
    ASSERT_TRUE(hasRun(client, "BEGIN"));
    ASSERT_TRUE(hasRun(client, "INSERT INTO kept VALUES (2)"));
    ASSERT_TRUE(server.killNow());
    EXPECT_FALSE(server.isRunning());
    EXPECT_FALSE(hasRun(client, "COMMIT"));
    ASSERT_TRUE(server.start());
    EXPECT_EQ(server.sql(u"SELECT id FROM kept"_s), Rows{{u"1"_s}});
}

INSTANTIATE_TEST_SUITE_P(Durabilities, KilledPostgresServer,
                         testing::Values(PostgresServer::Durability::Unflushed,
                                         PostgresServer::Durability::Flushed));

TEST(PostgresServer, durabilityDecidesWhatIsFlushed)
{
    const QString setting = u"SHOW fsync"_s;
    EXPECT_EQ(PostgresServer().sql(setting), Rows{{u"off"_s}});
    EXPECT_EQ(PostgresServer(PostgresServer::Durability::Flushed).sql(setting), Rows{{u"on"_s}});
}

TEST(PostgresServer, settingsAreInForceFromTheNextStart)
{
    PostgresServer server;
    server.setSetting(u"max_connections"_s, u"20"_s);
    EXPECT_EQ(server.sql(u"SHOW max_connections"_s), Rows{{u"50"_s}});
    ASSERT_TRUE(server.restart());
    EXPECT_EQ(server.sql(u"SHOW max_connections"_s), Rows{{u"20"_s}});
}

TEST(PostgresServer, aServerThatRefusesItsSettingsDoesNotStart)
{
    PostgresServer server;
    ASSERT_TRUE(server.stop());
    server.setSetting(u"max_connections"_s, u"none"_s);
    EXPECT_FALSE(server.start());
    server.setSetting(u"max_connections"_s, u"10"_s);
    EXPECT_TRUE(server.start());
}

TEST(PostgresServer, theLoopbackAsksForAPassword)
{
    PostgresServer server(PostgresServer::Durability::Unflushed,
                          PostgresServer::Listen::SocketAndLoopback);
    server.sql(u"CREATE ROLE shop LOGIN PASSWORD 'secret'"_s);
    const QString shop = server.loopbackConnection() + u" user=shop"_s;
    EXPECT_EQ(PQstatus(clientOf(shop + u" password=secret"_s).get()), CONNECTION_OK);
    EXPECT_EQ(PQstatus(clientOf(shop + u" password=other"_s).get()), CONNECTION_BAD);
    const int port = server.port();
    ASSERT_TRUE(server.restart());
    EXPECT_EQ(server.port(), port);
}

TEST(PostgresServer, aClientCanCheckTheCertificate)
{
    PostgresServer server(PostgresServer::Durability::Unflushed,
                          PostgresServer::Listen::SocketAndLoopback);
    server.sql(u"CREATE ROLE shop LOGIN PASSWORD 'secret'"_s);
    const QString checked =
        server.loopbackConnection() + u" user=shop password=secret sslmode=verify-full"_s;
    EXPECT_EQ(PQstatus(clientOf(checked).get()), CONNECTION_BAD);
    const QString certificate = server.setUpTls();
    ASSERT_TRUE(server.restart());
    const Client client = clientOf(checked + u" sslrootcert="_s + certificate);
    EXPECT_EQ(PQstatus(client.get()), CONNECTION_OK) << PQerrorMessage(client.get());
    EXPECT_TRUE(PQsslInUse(client.get()));
}

TEST(PostgresServer, endsWithATestProgramThatIsKilled)
{
    int ends[2] = {};
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const pid_t program = ::fork();
    if (program == 0) {
        const PostgresServer ownServer;
        const qint64 id = ownServer.processId();
        if (::write(ends[1], &id, sizeof id) == sizeof id)
            ::pause();
        ::_exit(1);
    }
    ::close(ends[1]);
    qint64 server = 0;
    EXPECT_EQ(::read(ends[0], &server, sizeof server), static_cast<ssize_t>(sizeof server));
    ::close(ends[0]);
    const QString data = QFile::symLinkTarget(u"/proc/%1/cwd"_s.arg(server));
    pollfd end{static_cast<int>(::syscall(SYS_pidfd_open, server, 0)), POLLIN, 0};
    EXPECT_EQ(::poll(&end, 1, 0), 0);

    ::kill(program, SIGKILL);
    ::waitpid(program, nullptr, 0);
    EXPECT_EQ(::poll(&end, 1, hangMs), 1);
    ::close(end.fd);
    EXPECT_TRUE(data.endsWith(u"/data"_s) && QDir(data + u"/.."_s).removeRecursively());
}

} // namespace norvane
