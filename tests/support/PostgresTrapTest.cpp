#include "support/PostgresTrap.h"

#include "support/ProxyFixture.h"
#include "support/WaitUntil.h"

#include <array>

namespace norvane {

using namespace Qt::StringLiterals;

class PostgresTrapTest : public ProxyFixture
{
protected:
    using Act = PostgresTrap::Act;
    using Moment = PostgresTrap::Moment;

    bool hasTrapActed()
    {
        return waitUntil([this] { return proxy.hasTrapActed(); });
    }

    PostgresClient client = connected();
};

TEST_F(PostgresTrapTest, aMessageThatTheLineIsCutBeforeIsNotCarriedOut)
{
    ASSERT_TRUE(client.run(u"BEGIN; INSERT INTO kept VALUES (1)"_s));
    proxy.setTrap({.moment = Moment::BeforeMessage});
    EXPECT_FALSE(client.run(u"COMMIT"_s));
    EXPECT_TRUE(hasTrapActed());
    EXPECT_TRUE(waitUntil([] { return sessions() == 0; }));
    EXPECT_EQ(keptRows(), Rows());
}

TEST_F(PostgresTrapTest, aMessageThatTheLineIsCutAfterIsCarriedOutAndItsAnswerLost)
{
    ASSERT_TRUE(client.run(u"BEGIN; INSERT INTO kept VALUES (1)"_s));
    proxy.setTrap({.moment = Moment::AfterMessage});
    EXPECT_FALSE(client.run(u"COMMIT"_s));
    // The client hears of the cut when the server is through.
    EXPECT_EQ(keptRows(), Rows{{u"1"_s}});
    EXPECT_TRUE(hasTrapActed());

    PQreset(client.get());
    EXPECT_TRUE(client.run(u"INSERT INTO kept VALUES (2)"_s));
}

TEST_F(PostgresTrapTest, anAnswerThatTheLineIsCutAfterArrives)
{
    ASSERT_TRUE(client.run(u"BEGIN; INSERT INTO kept VALUES (1)"_s));
    proxy.setTrap({.moment = Moment::AfterAnswer});
    EXPECT_TRUE(client.run(u"COMMIT"_s));
    EXPECT_TRUE(hasTrapActed());
    EXPECT_FALSE(client.run(u"INSERT INTO kept VALUES (2)"_s));
    EXPECT_EQ(keptRows(), Rows{{u"1"_s}});
}

TEST_F(PostgresTrapTest, messagesAreCountedFromTheTrapOverAllConnections)
{
    PostgresClient other = connected();
    ASSERT_TRUE(client.run(u"INSERT INTO kept VALUES (0)"_s));
    proxy.setTrap({.message = 3, .moment = Moment::BeforeMessage});
    EXPECT_TRUE(client.run(u"INSERT INTO kept VALUES (1)"_s));
    EXPECT_TRUE(other.run(u"INSERT INTO kept VALUES (2)"_s));
    EXPECT_FALSE(proxy.hasTrapActed());
    EXPECT_FALSE(client.run(u"INSERT INTO kept VALUES (3)"_s));
    EXPECT_TRUE(other.run(u"INSERT INTO kept VALUES (4)"_s));
    EXPECT_EQ(keptRows(), (Rows{{u"0"_s}, {u"1"_s}, {u"2"_s}, {u"4"_s}}));
}

TEST_F(PostgresTrapTest, onlyMessagesWithTheBytesAreCounted)
{
    proxy.setTrap({.message = 2, .containing = "COMMIT", .moment = Moment::BeforeMessage});
    EXPECT_TRUE(client.run(u"BEGIN"_s));
    EXPECT_TRUE(client.run(u"INSERT INTO kept VALUES (1)"_s));
    EXPECT_TRUE(client.run(u"COMMIT"_s));
    EXPECT_TRUE(client.run(u"BEGIN"_s));
    EXPECT_TRUE(client.run(u"INSERT INTO kept VALUES (2)"_s));
    EXPECT_FALSE(client.run(u"COMMIT"_s));
    EXPECT_EQ(keptRows(), Rows{{u"1"_s}});
}

TEST_F(PostgresTrapTest, aStatementWithParametersIsCarriedOutWithItsLastMessage)
{
    const std::array<const char *, 1> values{"7"};
    const auto insert = [&] {
        PGresult *const answer = PQexecParams(client.get(), "INSERT INTO kept VALUES ($1::integer)",
                                              1, nullptr, values.data(), nullptr, nullptr, 0);
        const bool done = PQresultStatus(answer) == PGRES_COMMAND_OK;
        PQclear(answer);
        return done;
    };
    constexpr int parts = 5;
    for (int part = 1; part < parts; ++part) {
        proxy.setTrap({.message = part, .moment = Moment::AfterMessage});
        EXPECT_FALSE(insert());
        EXPECT_TRUE(hasTrapActed());
        EXPECT_TRUE(waitUntil([] { return sessions() == 0; }));
        EXPECT_EQ(keptRows(), Rows()) << part;
        PQreset(client.get());
    }
    proxy.setTrap({.message = parts, .moment = Moment::AfterMessage});
    EXPECT_FALSE(insert());
    EXPECT_EQ(keptRows(), Rows{{u"7"_s}});
}

TEST_F(PostgresTrapTest, anAnswerCanBeHeldAtItsMessage)
{
    ASSERT_TRUE(client.run(u"BEGIN; INSERT INTO kept VALUES (1)"_s));
    proxy.setTrap({.moment = Moment::AfterMessage, .act = Act::Hold});
    ASSERT_TRUE(client.send(u"COMMIT"_s));
    ASSERT_TRUE(hasTrapActed());
    EXPECT_FALSE(client.hasAnswer());
    EXPECT_EQ(keptRows(), Rows{{u"1"_s}});
    proxy.release();
    EXPECT_TRUE(client.takeAnswer());
}

TEST_F(PostgresTrapTest, aMessageCanBeHeld)
{
    ASSERT_TRUE(client.run(u"BEGIN; INSERT INTO kept VALUES (1)"_s));
    proxy.setTrap({.moment = Moment::BeforeMessage, .act = Act::Hold});
    ASSERT_TRUE(client.send(u"COMMIT"_s));
    ASSERT_TRUE(hasTrapActed());
    EXPECT_EQ(keptRows(), Rows());
    proxy.release();
    EXPECT_TRUE(client.takeAnswer());
    EXPECT_EQ(keptRows(), Rows{{u"1"_s}});
}

TEST_F(PostgresTrapTest, aClientThatIsHeldIsCarriedOutBehindItsEnd)
{
    ASSERT_TRUE(client.run(u"BEGIN; INSERT INTO kept VALUES (1)"_s));
    proxy.setTrap({.moment = Moment::BeforeMessage, .act = Act::HoldClient});
    ASSERT_TRUE(client.send(u"COMMIT"_s));
    ASSERT_TRUE(hasTrapActed());
    PQreset(client.get());
    EXPECT_TRUE(client.run(u"INSERT INTO kept VALUES (2)"_s));
    EXPECT_EQ(keptRows(), Rows{{u"2"_s}});

    proxy.clearTrap();
    EXPECT_TRUE(waitUntil([] { return keptRows() == Rows{{u"1"_s}, {u"2"_s}}; }));
}

TEST_F(PostgresTrapTest, aClearedTrapDoesNotAct)
{
    proxy.setTrap({.moment = Moment::BeforeMessage});
    proxy.clearTrap();
    EXPECT_TRUE(client.run(u"INSERT INTO kept VALUES (1)"_s));
    EXPECT_FALSE(proxy.hasTrapActed());
}

TEST_F(PostgresTrapTest, aServerThatIsKilledInTheMiddleEndsTheWait)
{
    proxy.setTrap({.moment = Moment::AfterMessage});
    ASSERT_TRUE(client.send(u"SELECT pg_sleep(3600)"_s));
    ASSERT_TRUE(waitUntil([] {
        return server->sql(u"SELECT 1 FROM pg_stat_activity WHERE query LIKE '%pg_sl%' "
                           "AND pid <> pg_backend_pid()"_s) == Rows{{u"1"_s}};
    }));
    EXPECT_FALSE(proxy.hasTrapActed());
    ASSERT_TRUE(server->killNow());
    EXPECT_TRUE(hasTrapActed());
    EXPECT_FALSE(client.takeAnswer());
    EXPECT_TRUE(server->start());
}

} // namespace norvane
