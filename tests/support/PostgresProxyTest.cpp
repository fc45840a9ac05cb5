#include "support/PostgresProxy.h"

#include "support/ProxyFixture.h"
#include "support/WaitUntil.h"

#include <QProcess>

#include <array>

namespace norvane {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class PostgresProxyAtEachAddress : public ProxyFixture,
                                   public testing::WithParamInterface<PostgresProxy::Listen>
{
protected:
    PostgresProxyAtEachAddress() : ProxyFixture(GetParam()) {}
};

TEST_P(PostgresProxyAtEachAddress, passesOnWhatBothSidesSay)
{
    PostgresClient client = connected();
    ASSERT_TRUE(client.isConnected()) << qPrintable(client.error());
    ASSERT_TRUE(client.run(u"INSERT INTO kept VALUES (1)"_s));
    EXPECT_EQ(client.query(u"SELECT id FROM kept"_s), Rows{{u"1"_s}});
    EXPECT_EQ(keptRows(), Rows{{u"1"_s}});
}

TEST_P(PostgresProxyAtEachAddress, passesOnMoreThanASocketHolds)
{
    constexpr int size = 8'000'000;
    const QString text(size, u'x');
    PostgresClient client = connected();
    EXPECT_EQ(client.query(u"SELECT '%1'"_s.arg(text)), Rows{{text}});
}

TEST_P(PostgresProxyAtEachAddress, refusesNewConnectionsAlone)
{
    PostgresClient client = connected();
    proxy.setRefusing(true);
    EXPECT_FALSE(connected().isConnected());
    EXPECT_TRUE(client.run(u"SELECT 1"_s));
    proxy.setRefusing(false);
    EXPECT_TRUE(connected().isConnected());
    EXPECT_EQ(proxy.connections(), 2);
}

INSTANTIATE_TEST_SUITE_P(Addresses, PostgresProxyAtEachAddress,
                         testing::Values(PostgresProxy::Listen::Socket,
                                         PostgresProxy::Listen::Loopback));

class PostgresProxyAtLoopback : public ProxyFixture
{
protected:
    PostgresProxyAtLoopback() : ProxyFixture(PostgresProxy::Listen::Loopback) {}
};

TEST_F(PostgresProxyAtLoopback, declinesEncryption)
{
    const QString way = proxy.address() + u' ' + PostgresServer::login();
    EXPECT_TRUE(PostgresClient(way + u" sslmode=prefer"_s).isConnected());
    EXPECT_FALSE(PostgresClient(way + u" sslmode=require"_s).isConnected());
}

class PostgresProxyProgram : public ProxyFixture
{
protected:
    PostgresProxyProgram()
    {
        program.start(QStringLiteral(NORVANE_PROGRAM_DIR "/postgres_proxy"),
                      {u"--loopback"_s, u"--delay"_s, u"0.5"_s, server->socketPath()});
    }

    ~PostgresProxyProgram() override
    {
        program.closeWriteChannel();
        EXPECT_TRUE(program.waitForFinished(hangMs));
        EXPECT_EQ(program.exitCode(), 0);
    }

    QString line()
    {
        EXPECT_TRUE(program.canReadLine() || program.waitForReadyRead(hangMs));
        return QString::fromUtf8(program.readLine()).trimmed();
    }

    QString obeyed(const QByteArray &command)
    {
        program.write(command + '\n');
        return line();
    }

    QProcess program;
};

TEST_F(PostgresProxyProgram, tellsItsAddressAndObeys)
{
    const QString way = line() + u' ' + PostgresServer::login();
    PostgresClient client(way);
    EXPECT_TRUE(client.run(u"SELECT 1"_s));
    EXPECT_EQ(obeyed("refuse"), u"ok"_s);
    EXPECT_FALSE(PostgresClient(way).isConnected());
    EXPECT_EQ(obeyed("accept"), u"ok"_s);
    EXPECT_EQ(obeyed("delay 1"), u"ok"_s);
    EXPECT_EQ(obeyed("delay soon"), u"no such command"_s);
    const QString counts = obeyed("count");
    EXPECT_TRUE(counts.startsWith(u"to server 1 (0 waiting), "_s)) << qPrintable(counts);
    EXPECT_TRUE(counts.endsWith(u", answers 2, connections 1 (1 open)"_s)) << qPrintable(counts);
    EXPECT_EQ(line(), u"ok"_s);
    EXPECT_EQ(obeyed("cut"), u"ok"_s);
    EXPECT_FALSE(client.run(u"SELECT 1"_s));
}

class PostgresProxyTest : public ProxyFixture
{
protected:
    /// Lets the proxy look at all that it has once more.
    void awaitAnotherLook()
    {
        const int before = proxy.connections();
        PQfinish(PQconnectStart(proxy.address().toUtf8().constData()));
        EXPECT_TRUE(waitUntil([&] { return proxy.connections() > before; }));
    }
};

TEST_F(PostgresProxyTest, countsMessagesAndAnswers)
{
    PostgresClient client = connected();
    const int messages = proxy.messages(Direction::ToServer);
    const int answers = proxy.answers();
    ASSERT_TRUE(client.run(u"BEGIN; SELECT 1; COMMIT"_s));
    EXPECT_EQ(proxy.messages(Direction::ToServer), messages + 1);
    EXPECT_EQ(proxy.answers(), answers + 1);

    const std::array<const char *, 1> values{"7"};
    PQclear(PQexecParams(client.get(), "INSERT INTO kept VALUES ($1::integer)", 1, nullptr,
                         values.data(), nullptr, nullptr, 0));
    EXPECT_EQ(proxy.messages(Direction::ToServer), messages + 6);
    EXPECT_EQ(proxy.answers(), answers + 2);
    EXPECT_EQ(keptRows(), Rows{{u"7"_s}});
}

TEST_F(PostgresProxyTest, aDelayedMessageIsPassedOnWhenItsTimeHasCome)
{
    PostgresClient client = connected();
    const int messages = proxy.messages(Direction::ToServer);
    proxy.setDelay(1h);
    ASSERT_TRUE(client.send(u"INSERT INTO kept VALUES (1)"_s));
    ASSERT_TRUE(waitUntil([&] { return proxy.waiting(Direction::ToServer) == 1; }));
    EXPECT_EQ(proxy.messages(Direction::ToServer), messages);
    proxy.setDelay(1ms);
    EXPECT_TRUE(client.takeAnswer());
    EXPECT_EQ(proxy.messages(Direction::ToServer), messages + 1);
    EXPECT_EQ(keptRows(), Rows{{u"1"_s}});
}

TEST_F(PostgresProxyTest, answersAreDelayedToo)
{
    PostgresClient client = connected();
    proxy.hold(Direction::ToClient);
    ASSERT_TRUE(client.send(u"SELECT 1"_s));
    ASSERT_TRUE(waitUntil([&] { return proxy.waiting(Direction::ToClient) > 0; }));
    proxy.setDelay(1h);
    proxy.release();
    awaitAnotherLook();
    EXPECT_FALSE(client.hasAnswer());
    proxy.setDelay(1ms);
    EXPECT_TRUE(client.takeAnswer());
}

TEST_F(PostgresProxyTest, aCutEndsAllSessions)
{
    PostgresClient one = connected();
    PostgresClient other = connected();
    ASSERT_TRUE(one.run(u"BEGIN; INSERT INTO kept VALUES (1)"_s));
    EXPECT_EQ(proxy.openConnections(), 2);
    proxy.cut();
    EXPECT_EQ(proxy.openConnections(), 0);
    EXPECT_FALSE(one.run(u"COMMIT"_s));
    EXPECT_FALSE(other.run(u"SELECT 1"_s));
    EXPECT_TRUE(waitUntil([] { return sessions() == 0; }));
    EXPECT_EQ(keptRows(), Rows());

    PQreset(one.get());
    EXPECT_TRUE(one.run(u"INSERT INTO kept VALUES (2)"_s));
}

TEST_F(PostgresProxyTest, aHeldLineTakesEverythingAndPassesNothingOn)
{
    PostgresClient client = connected();
    proxy.hold();
    ASSERT_TRUE(client.send(u"INSERT INTO kept VALUES (1)"_s));
    ASSERT_TRUE(waitUntil([&] { return proxy.waiting(Direction::ToServer) == 1; }));
    PGconn *const newcomer =
        PQconnectStart((proxy.address() + u' ' + PostgresServer::login()).toUtf8().constData());
    EXPECT_TRUE(waitUntil([&] {
        PQconnectPoll(newcomer);
        return proxy.waiting(Direction::ToServer) == 2;
    }));
    EXPECT_FALSE(client.hasAnswer());
    EXPECT_EQ(keptRows(), Rows());

    proxy.release();
    EXPECT_TRUE(client.takeAnswer());
    EXPECT_EQ(keptRows(), Rows{{u"1"_s}});
    EXPECT_TRUE(waitUntil([&] { return PQconnectPoll(newcomer) == PGRES_POLLING_OK; }));
    PQfinish(newcomer);
}

TEST_F(PostgresProxyTest, aServerIsNotToldThatAClientBehindAHeldLineHasGone)
{
    {
        PostgresClient client = connected();
        ASSERT_TRUE(client.run(u"BEGIN; INSERT INTO kept VALUES (1)"_s));
        proxy.hold();
    }
    constexpr int goodbyeAndEnd = 2;
    ASSERT_TRUE(waitUntil([&] { return proxy.waiting(Direction::ToServer) == goodbyeAndEnd; }));
    EXPECT_EQ(sessions(), 1);
    proxy.release();
    EXPECT_TRUE(waitUntil([] { return sessions() == 0; }));
}

TEST_F(PostgresProxyTest, aClientBehindAHeldLineIsNotToldThatTheServerHasGone)
{
    PostgresClient client = connected();
    proxy.hold();
    ASSERT_TRUE(server->killNow());
    ASSERT_TRUE(waitUntil([&] { return proxy.waiting(Direction::ToClient) > 0; }));
    PQconsumeInput(client.get());
    EXPECT_TRUE(client.isConnected());
    ASSERT_TRUE(server->start());
    proxy.release();
    EXPECT_FALSE(client.run(u"SELECT 1"_s));
    PQreset(client.get());
    EXPECT_TRUE(client.run(u"SELECT 1"_s));
}

TEST_F(PostgresProxyTest, aClientIsTurnedAwayWhileTheServerIsDown)
{
    ASSERT_TRUE(server->stop());
    EXPECT_FALSE(connected().isConnected());
    ASSERT_TRUE(server->start());
    EXPECT_TRUE(connected().isConnected());
}

TEST_F(PostgresProxyTest, aQueryCanBeCancelled)
{
    PostgresClient client = connected();
    const int messages = proxy.messages(Direction::ToServer);
    ASSERT_TRUE(client.send(u"SELECT pg_sleep(3600)"_s));
    ASSERT_TRUE(waitUntil([&] { return proxy.messages(Direction::ToServer) > messages; }));
    PGcancel *const cancel = PQgetCancel(client.get());
    std::array<char, 256> error{};
    // One that comes before the query has begun is ignored.
    EXPECT_TRUE(waitUntil([&] {
        return PQcancel(cancel, error.data(), static_cast<int>(error.size())) != 1 ||
               client.hasAnswer();
    }));
    EXPECT_STREQ(error.data(), "");
    EXPECT_FALSE(client.takeAnswer());
    PQfreeCancel(cancel);
}

} // namespace norvane
