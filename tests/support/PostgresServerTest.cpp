#include "support/PostgresServer.h"
#include "support/PostgresClient.h"
#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

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

using Durability = PostgresServer::Durability;
using Listen = PostgresServer::Listen;
using Rows = PostgresServer::Rows;

} // namespace

/// A server that all tests share; each leaves it running.
class PostgresServerTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        shared = std::make_unique<PostgresServer>(Durability::Unflushed, Listen::SocketAndLoopback);
        shared->sql(u"CREATE ROLE shop LOGIN PASSWORD 'secret'"_s);
    }
    static void TearDownTestSuite() { shared.reset(); }

    static inline std::unique_ptr<PostgresServer> shared;
    PostgresServer &server = *shared;
};

TEST_F(PostgresServerTest, databasesOfOneServerDoNotSeeEachOther)
{
    server.freshDatabase(u"one"_s);
    server.freshDatabase(u"two"_s);
    server.sql(u"CREATE TABLE only_here (id integer)"_s, u"one"_s);
    const QString tables = u"SELECT relname FROM pg_class WHERE relname = 'only_here'"_s;
    EXPECT_EQ(server.sql(tables, u"one"_s), Rows{{u"only_here"_s}});
    EXPECT_EQ(server.sql(tables, u"two"_s), Rows());
}

TEST_F(PostgresServerTest, aFreshDatabaseReplacesOneThatIsInUse)
{
    PostgresClient client(server.freshDatabase(u"shop"_s));
    ASSERT_TRUE(client.run(u"CREATE TABLE former (id integer)"_s));
    server.freshDatabase(u"shop"_s);
    EXPECT_FALSE(client.run(u"INSERT INTO former VALUES (1)"_s));
    EXPECT_EQ(server.sql(u"SELECT count(*) FROM pg_class WHERE relname = 'former'"_s, u"shop"_s),
              Rows{{u"0"_s}});
}

TEST_F(PostgresServerTest, rowsAreThoseOfTheLastStatement)
{
    EXPECT_EQ(server.sql(u"SELECT 1; SELECT 'año', NULL, '' UNION ALL SELECT 'b', '2', 'c'"_s),
              (Rows{{u"año"_s, QString(), u""_s}, {u"b"_s, u"2"_s, u"c"_s}}));
    EXPECT_TRUE(server.sql(u"SELECT NULL"_s)[0][0].isNull());
    EXPECT_FALSE(server.sql(u"SELECT ''"_s)[0][0].isNull());
}

TEST_F(PostgresServerTest, statementsThatFailThrow)
{
    EXPECT_THROW(server.sql(u"SELECT 1/0"_s), std::runtime_error);
    EXPECT_THROW(server.sql(u"SELECT 1"_s, u"missing"_s), std::runtime_error);
    ASSERT_TRUE(server.stop());
    EXPECT_THROW(server.sql(u"SELECT 1"_s), std::runtime_error);
    EXPECT_TRUE(server.start());
}

TEST_F(PostgresServerTest, aRestartKeepsTheDataAndTheAddress)
{
    const QString connection = server.freshDatabase(u"shop"_s);
    server.sql(u"CREATE TABLE kept (id integer); INSERT INTO kept VALUES (7)"_s, u"shop"_s);
    ASSERT_TRUE(server.restart());
    EXPECT_EQ(server.connection(u"shop"_s), connection);
    EXPECT_EQ(server.sql(u"SELECT id FROM kept"_s, u"shop"_s), Rows{{u"7"_s}});
}

class KilledPostgresServer : public testing::TestWithParam<Durability>
{};

TEST_P(KilledPostgresServer, recoversWhatWasCommittedAndNothingElse)
{
    PostgresServer server(GetParam());
    server.sql(u"CREATE TABLE kept (id integer)"_s);
    PostgresClient client(server.connection());
    ASSERT_TRUE(client.run(u"INSERT INTO kept VALUES (1)"_s));
    ASSERT_TRUE(client.run(u"BEGIN"_s));
    ASSERT_TRUE(client.run(u"INSERT INTO kept VALUES (2)"_s));
    ASSERT_TRUE(server.killNow());
    EXPECT_FALSE(server.isRunning());
    EXPECT_FALSE(client.run(u"COMMIT"_s));
    ASSERT_TRUE(server.start());
    EXPECT_EQ(server.sql(u"SELECT id FROM kept"_s), Rows{{u"1"_s}});
}

INSTANTIATE_TEST_SUITE_P(Durabilities, KilledPostgresServer,
                         testing::Values(Durability::Unflushed, Durability::Flushed));

TEST_F(PostgresServerTest, durabilityDecidesWhatIsFlushed)
{
    const QString setting = u"SHOW fsync"_s;
    EXPECT_EQ(server.sql(setting), Rows{{u"off"_s}});
    EXPECT_EQ(PostgresServer(Durability::Flushed).sql(setting), Rows{{u"on"_s}});
}

TEST_F(PostgresServerTest, settingsAreInForceFromTheNextStart)
{
    server.setSetting(u"max_locks_per_transaction"_s, u"20"_s);
    EXPECT_EQ(server.sql(u"SHOW max_locks_per_transaction"_s), Rows{{u"64"_s}});
    ASSERT_TRUE(server.restart());
    EXPECT_EQ(server.sql(u"SHOW max_locks_per_transaction"_s), Rows{{u"20"_s}});
    server.setSetting(u"max_locks_per_transaction"_s, u"64"_s);
    EXPECT_TRUE(server.restart());
}

TEST_F(PostgresServerTest, aServerThatRefusesItsSettingsDoesNotStart)
{
    ASSERT_TRUE(server.stop());
    server.setSetting(u"max_connections"_s, u"none"_s);
    EXPECT_FALSE(server.start());
    server.setSetting(u"max_connections"_s, u"50"_s);
    EXPECT_TRUE(server.start());
}

TEST_F(PostgresServerTest, theLoopbackAsksForAPassword)
{
    const QString shop = server.loopbackConnection() + u" user=shop"_s;
    EXPECT_TRUE(PostgresClient(shop + u" password=secret"_s).isConnected());
    EXPECT_FALSE(PostgresClient(shop + u" password=other"_s).isConnected());
    const int port = server.port();
    ASSERT_TRUE(server.restart());
    EXPECT_EQ(server.port(), port);
}

TEST_F(PostgresServerTest, aClientCanCheckTheCertificate)
{
    const QString shop = server.loopbackConnection() + u" user=shop password=secret"_s;
    EXPECT_FALSE(PostgresClient(shop + u" sslmode=require"_s).isConnected());
    const QString certificate = server.setUpTls();
    ASSERT_TRUE(server.restart());
    const PostgresClient client(shop + u" sslmode=verify-full sslrootcert="_s + certificate);
    EXPECT_TRUE(client.isConnected()) << qPrintable(client.error());
    EXPECT_TRUE(PQsslInUse(client.get()));
    server.setSetting(u"ssl"_s, u"off"_s);
    EXPECT_TRUE(server.restart());
}

TEST(OwnPostgresServer, endsWithATestProgramThatIsKilled)
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
