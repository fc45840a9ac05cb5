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
