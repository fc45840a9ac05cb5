#include "TovekSMService/store/PostgresDatabase.h"

#include "TovekSMService/store/PostgresSchema.h"
#include "TovekSMService/store/StoreResults.h"
#include "TovekSMService/store/TestStoreShared.h"
#include "support/PostgresProxy.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A clock on which a second passes with each look at it.
class SteppingTime : public TimeSource
{
public:
    static constexpr qint64 msInNs = 1'000'000;

    qint64 nanoseconds() const override { return m_now += 1000 * msInNs; }
    std::unique_ptr<Alarm> makeAlarm(std::function<void()> due) override
    {
        return TimeSource::system().makeAlarm(std::move(due));
    }

private:
    mutable qint64 m_now = 0;
};

class PostgresDatabaseTest : public testing::Test
{
protected:
    PostgresDatabaseTest() { testServer().freshDatabase(name()); }
    ~PostgresDatabaseTest() override { m_database.close(); }

    static QString name() { return u"plain"_s; }
    static QString value(const QString &query)
    {
        return testServer().sql(query, name()).constFirst().constFirst();
    }
    StoreResult<> add(const QString &setting)
    {
        return m_database.write("INSERT INTO setting (name, value) VALUES (?, '')", {setting});
    }
    static QString settings()
    {
        return value(u"SELECT coalesce(string_agg(name, ' ' ORDER BY name), '') FROM setting"_s);
    }

    PostgresProxy m_proxy{testServer().socketPath()};
    PostgresDatabase m_database{m_proxy.address() + u' ' + PostgresServer::login(name())};
};

TEST_F(PostgresDatabaseTest, makesItsTablesOnce)
{
    done(m_database.open());
    EXPECT_EQ(value(u"SELECT max(version) FROM schema_version"_s),
              QString::number(PostgresSchema::latestVersion));
    done(add(u"a"_s));
    PostgresDatabase other(testServer().connection(name()));
    done(other.open());
    EXPECT_EQ(settings(), u"a"_s);
}

TEST_F(PostgresDatabaseTest, aSearchIndexOfTheSecondVersionIsGivenUp)
{
    done(m_database.open());
    m_database.close();
    const QString role = u"norvane_of_version_2"_s;
    for (const QString &statement :
         {u"DROP TABLE received_search, received_forgotten"_s,
          u"DROP INDEX outcome_search_pieces"_s, u"DROP FUNCTION search_pieces"_s,
          u"CREATE INDEX outcome_search_trigrams ON outcome_search (id)"_s,
          u"INSERT INTO outcome_search VALUES (1, 'text')"_s,
          u"INSERT INTO setting VALUES ('history_index', '1.15:1'), ('other', '')"_s,
          u"DELETE FROM schema_version WHERE version > 2"_s, u"CREATE ROLE %1"_s.arg(role),
          u"GRANT SELECT, INSERT, UPDATE, DELETE ON ALL TABLES IN SCHEMA public TO %1"_s.arg(role)})
        testServer().sql(statement, name());
    done(m_database.open());
    EXPECT_EQ(value(u"SELECT max(version) FROM schema_version"_s),
              QString::number(PostgresSchema::latestVersion));
    EXPECT_EQ(settings(), u"other"_s);
    EXPECT_EQ(value(u"SELECT count(*) FROM outcome_search"_s), u"0"_s);
    EXPECT_EQ(value(u"SELECT to_regclass('outcome_search_trigrams') IS NULL"_s), u"t"_s);
    for (const QString &table :
         {u"outcome_search"_s, u"received_search"_s, u"received_forgotten"_s})
        EXPECT_EQ(value(u"SELECT has_table_privilege('%1', '%2', 'INSERT')"_s.arg(role, table)),
                  u"t"_s);
    testServer().sql(u"DROP OWNED BY %1"_s.arg(role), name());
    testServer().sql(u"DROP ROLE %1"_s.arg(role));
}

TEST_F(PostgresDatabaseTest, leavesALaterSchemaAlone)
{
    done(m_database.open());
    testServer().sql(u"INSERT INTO schema_version VALUES (99)"_s, name());
    PostgresDatabase later(testServer().connection(name()));
    const StoreResult<> opened = later.open();
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error().kind(), StoreFailure::Kind::TooNew);
    EXPECT_TRUE(opened.error().text().contains(u"99"_s));
    EXPECT_EQ(later.access(), StoreDatabase::Access::None);
}

TEST_F(PostgresDatabaseTest, aTransactionIsKeptAsAWholeOrNotAtAll)
{
    done(m_database.open());
    done(m_database.together([&] { return add(u"a"_s).and_then([&] { return add(u"b"_s); }); }));
    EXPECT_FALSE(
        m_database.together([&] { return add(u"c"_s).and_then([&] { return add(u"a"_s); }); }));
    EXPECT_EQ(settings(), u"a b"_s);
    done(add(u"d"_s));
    EXPECT_EQ(settings(), u"a b d"_s) << "it goes on behind a failure";
}

TEST_F(PostgresDatabaseTest, aStatementThatFailsFailsTheTransactionEvenIfNobodyLooks)
{
    done(m_database.open());
    done(add(u"a"_s));
    EXPECT_FALSE(m_database.together([&]() -> StoreResult<> {
        static_cast<void>(m_database.writeAndCount("INSERT INTO setting VALUES ('a', '')"));
        return {};
    }));
}

TEST_F(PostgresDatabaseTest, aLostConnectionFailsAtOnceAndIsMadeAnew)
{
    m_database.keepOpen();
    ASSERT_TRUE(waitUntil([this] { return m_database.access() == StoreDatabase::Access::Whole; }));
    m_proxy.setRefusing(true);
    m_proxy.cut();
    EXPECT_FALSE(add(u"a"_s));
    ASSERT_TRUE(waitUntil([this] { return m_database.access() == StoreDatabase::Access::None; }));
    const StoreResult<> away = add(u"a"_s);
    ASSERT_FALSE(away);
    EXPECT_EQ(away.error().kind(), StoreFailure::Kind::Away);
    EXPECT_FALSE(m_database.probe());
    m_proxy.setRefusing(false);
    ASSERT_TRUE(waitUntil([this] { return m_database.access() == StoreDatabase::Access::Whole; }));
    done(add(u"b"_s));
    EXPECT_EQ(settings(), u"b"_s);
}

TEST_F(PostgresDatabaseTest, aLostIdleConnectionIsNoticed)
{
    m_database.keepOpen();
    ASSERT_TRUE(waitUntil([this] { return m_database.access() == StoreDatabase::Access::Whole; }));
    m_proxy.setRefusing(true);
    m_proxy.cut();
    EXPECT_TRUE(waitUntil([this] { return m_database.access() == StoreDatabase::Access::None; }));
}

TEST_F(PostgresDatabaseTest, aServerThatDoesNotAnswerIsGivenUp)
{
    done(m_database.open());
    m_proxy.hold();
    const StoreResult<> held = add(u"a"_s);
    ASSERT_FALSE(held);
    EXPECT_EQ(held.error().kind(), StoreFailure::Kind::Away);
    EXPECT_FALSE(add(u"b"_s)) << "and not waited for again";
    m_proxy.release();
}

TEST_F(PostgresDatabaseTest, anAnswerMayTakeAnyTimeAsLongAsItComes)
{
    SteppingTime time;
    const auto opened = PostgresConnection::open(testServer().connection(name()), time);
    ASSERT_TRUE(opened);
    PostgresConnection &connection = **opened;
    constexpr int rows = 20'000;
    int got = 0;
    connection.send("SELECT repeat('x', 1000) FROM generate_series(1, ?::int)", {rows},
                    [&got](const StoreRow &) {
                        ++got;
                        return true;
                    });
    EXPECT_TRUE(connection.sync());
    EXPECT_EQ(got, rows);
    EXPECT_GT(time.nanoseconds(), 2 * PostgresConnection::statementMs * SteppingTime::msInNs);
}

TEST_F(PostgresDatabaseTest, anAnswerThatGoesOnIsGivenUpAtTheLimitOfACall)
{
    SteppingTime time;
    PostgresDatabase database(testServer().connection(name()), time);
    done(database.open());
    database.limitCalls(2 * PostgresConnection::statementMs);
    int got = 0;
    const StoreResult<> longOne =
        database.each("SELECT repeat('x', 1000) FROM generate_series(1, 20000)", {},
                      [&got](const StoreRow &) { return ++got > 0; });
    ASSERT_FALSE(longOne);
    EXPECT_EQ(longOne.error().kind(), StoreFailure::Kind::Away);
    EXPECT_LT(got, 20'000);
}

TEST_F(PostgresDatabaseTest, theLimitOfACallIsThatOfTheWholeTransaction)
{
    SteppingTime time;
    PostgresDatabase database(testServer().connection(name()), time);
    done(database.open());
    database.limitCalls(20 * PostgresConnection::statementMs);
    const auto ask = [&] { return database.probe(); };
    for (int query = 0; query < 1000; ++query)
        ASSERT_TRUE(ask()) << "each is a call of its own: " << query;
    const StoreResult<> together = database.together([&]() -> StoreResult<> {
        for (int query = 0; query < 1000; ++query) {
            if (StoreResult<> asked = ask(); !asked)
                return asked;
        }
        return {};
    });
    EXPECT_FALSE(together);
}

TEST_F(PostgresDatabaseTest, whatIsPostedIsCarriedOutWithoutBeingWaitedFor)
{
    done(m_database.open());
    m_proxy.hold();
    int answer = 0;
    bool isDone = false;
    m_database.post(
        "SELECT ?::int + 1", {41},
        [&answer](const StoreRow &row) {
            answer = row.value(0).toInt();
            return true;
        },
        [&isDone](const StoreResult<> &posted) { isDone = posted.has_value(); });
    EXPECT_EQ(answer, 0);
    m_proxy.release();
    EXPECT_TRUE(waitUntil([&isDone] { return isDone; }));
    EXPECT_EQ(answer, 42);
}

TEST_F(PostgresDatabaseTest, whatIsPostedIsCarriedOutBeforeWhatIsWaitedFor)
{
    done(m_database.open());
    QStringList order;
    m_database.post("INSERT INTO setting (name, value) VALUES (?, '')", {u"a"_s}, {},
                    [&order](const StoreResult<> &posted) {
                        order.append(posted ? u"posted"_s : posted.error().text());
                    });
    EXPECT_EQ(given(m_database.rows("SELECT name FROM setting", {},
                                    [](const StoreRow &row) { return row.value(0).toString(); })),
              QStringList{u"a"_s});
    EXPECT_TRUE(order.isEmpty()) << "that is told from the event loop";
    ASSERT_TRUE(waitUntil([&order] { return !order.isEmpty(); }));
    EXPECT_EQ(order, QStringList{u"posted"_s});
}

TEST_F(PostgresDatabaseTest, whatIsPostedAndFailsHarmsNothingElse)
{
    done(m_database.open());
    done(add(u"a"_s));
    QStringList failures;
    for (int post = 0; post < 2; ++post)
        m_database.post("INSERT INTO setting (name, value) VALUES (?, '')", {u"a"_s}, {},
                        [&failures](const StoreResult<> &posted) {
                            failures.append(posted ? QString() : posted.error().text());
                        });
    done(add(u"b"_s));
    ASSERT_TRUE(waitUntil([&failures] { return failures.size() == 2; }));
    for (const QString &failure : failures)
        EXPECT_TRUE(failure.contains(u"duplicate"_s)) << failure.toStdString();
    EXPECT_EQ(settings(), u"a b"_s);
}

TEST_F(PostgresDatabaseTest, whatIsPostedAndLostIsTold)
{
    m_database.keepOpen();
    ASSERT_TRUE(waitUntil([this] { return m_database.access() == StoreDatabase::Access::Whole; }));
    m_proxy.hold();
    int lost = 0;
    const auto post = [&] {
        m_database.post("SELECT 1", {}, {}, [&lost](const StoreResult<> &posted) {
            lost += !posted && posted.error().kind() == StoreFailure::Kind::Away ? 1 : 0;
        });
    };
    post();
    post();
    m_proxy.setRefusing(true);
    m_proxy.cut();
    EXPECT_TRUE(waitUntil([&lost] { return lost == 2; }));
    ASSERT_TRUE(waitUntil([this] { return m_database.access() == StoreDatabase::Access::None; }));
    post();
    EXPECT_EQ(lost, 2) << "that is told from the event loop, too";
    EXPECT_TRUE(waitUntil([&lost] { return lost == 3; }));
    m_proxy.release();
}

TEST_F(PostgresDatabaseTest, whatTheStringSaysOfTheConnectionHolds)
{
    const auto nameOf = [](const QString &conninfo) {
        PostgresDatabase database(conninfo);
        done(database.open());
        return given(database.row("SHOW application_name", {},
                                  [](const StoreRow &row) { return row.value(0).toString(); }))
            .value_or(QString());
    };
    const QString connection = testServer().connection(name());
    EXPECT_EQ(nameOf(connection), u"TovekSMService"_s);
    EXPECT_EQ(nameOf(connection + u" application_name=shop"_s), u"shop"_s);
}

TEST_F(PostgresDatabaseTest, aStatementThatFailsAgainAndAgainIsMadeKnownOnce)
{
    done(m_database.open());
    const auto known = [this] {
        return given(m_database.row("SELECT count(*) FROM pg_prepared_statements", {},
                                    [](const StoreRow &row) { return row.value(0).toInt(); }));
    };
    done(add(u"a"_s));
    EXPECT_FALSE(add(u"a"_s));
    const std::optional<int> before = known();
    for (int time = 0; time < 20; ++time) {
        EXPECT_FALSE(add(u"a"_s));
        EXPECT_FALSE(m_database.write("DELETE FROM nowhere", {}));
    }
    EXPECT_LE(*known(), *before + 1) << "and the question";
    done(add(u"b"_s));
}

TEST_F(PostgresDatabaseTest, aCommitWhoseAnswerIsLostFailsAlthoughItWasCarriedOut)
{
    done(m_database.open());
    done(add(u"a"_s));
    // Three messages for each of the three statements, which are prepared by now, and the Sync.
    m_proxy.setTrap({.message = 10, .moment = PostgresTrap::Moment::AfterMessage});
    const StoreResult<> lost = add(u"b"_s);
    ASSERT_FALSE(lost);
    EXPECT_EQ(lost.error().kind(), StoreFailure::Kind::Away);
    EXPECT_TRUE(waitUntil([] { return settings() == "a b"_L1; }));
}

TEST_F(PostgresDatabaseTest, oneThatIsRefusedIsNeverConnected)
{
    m_database.refuse(StoreFailure(StoreFailure::Kind::Other, u"refused"_s));
    m_database.keepOpen();
    EXPECT_FALSE(m_database.open());
    EXPECT_EQ(add(u"a"_s).error().text(), u"refused"_s);
}

TEST_F(PostgresDatabaseTest, theChoresAreOneSessionsAtATime)
{
    done(m_database.open());
    PostgresDatabase other(testServer().connection(name()));
    done(other.open());
    done(m_database.together([&] {
        return m_database.mayDoChores().map([&](bool isMine) {
            EXPECT_TRUE(isMine);
            EXPECT_FALSE(given(other.together([&] { return other.mayDoChores(); })));
        });
    }));
    EXPECT_TRUE(given(other.together([&] { return other.mayDoChores(); })));
}

} // namespace

} // namespace norvane
