#include "TovekSMService/history/HistoryConnection.h"

#include "TovekSMService/history/HistoryPages.h"
#include "TovekSMService/history/IndexMark.h"
#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/StoreResults.h"
#include "TovekSMService/store/TestStoreShared.h"
#include "support/TurnedTime.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The connection of an engine whose role may work with the tables, and make nothing.
class HistoryConnectionTest : public testing::Test
{
protected:
    HistoryConnectionTest()
    {
        PostgresDatabase owner(testServer().freshDatabase(name()));
        done(owner.open()); // makes the tables
        asAdministrator(u"CREATE ROLE norvane_engine LOGIN"_s);
        asAdministrator(u"REVOKE ALL ON DATABASE least FROM PUBLIC"_s);
        asAdministrator(u"GRANT CONNECT ON DATABASE least TO norvane_engine"_s);
        asAdministrator(u"GRANT USAGE ON SCHEMA public TO norvane_engine"_s);
        asAdministrator(u"GRANT SELECT, INSERT, UPDATE, DELETE ON ALL TABLES IN SCHEMA public "
                        "TO norvane_engine"_s);
        asAdministrator(
            u"INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, reported) "
            "SELECT number, '', '600', 'text ' || number, 1, '2026-01-01', 1 "
            "FROM generate_series(1, 20) number"_s);
        m_connection = std::make_unique<HistoryConnection>(
            HistoryStorage{{},
                           testServer().connection(name()).replace(u"user=norvane"_s,
                                                                   u"user=norvane_engine"_s)},
            m_time);
    }
    ~HistoryConnectionTest() override
    {
        m_connection.reset();
        asAdministrator(u"DROP OWNED BY norvane_engine"_s);
        asAdministrator(u"DROP ROLE norvane_engine"_s);
    }

    static QString name() { return u"least"_s; }
    static PostgresServer::Rows asAdministrator(const QString &statement)
    {
        return testServer().sql(statement, name());
    }
    /// As often as a thread at rest does it in these milliseconds.
    void index(qint64 milliseconds)
    {
        for (qint64 passed = 0; passed <= milliseconds; passed += TextIndex::settleMs) {
            given(m_connection->index(100));
            m_time.pass(TextIndex::settleMs);
        }
    }
    qint64 mark()
    {
        StoreDatabase *const database = given(m_connection->open());
        return database ? given(IndexMark(*database, HistoryTable::Outcomes).value()) : -1;
    }
    qsizetype found(const QString &text)
    {
        StoreDatabase *const database = given(m_connection->open());
        if (!database)
            return -1;
        const QueryLimit limit(TimeSource::system());
        HistoryFilter filter;
        filter.text = text;
        return given(HistoryPages(*database, limit).page(filter, {}, {}, 100)).rows.size();
    }

    static constexpr qint64 hourMs = 3'600'000;

    TurnedTime m_time;
    std::unique_ptr<HistoryConnection> m_connection;
};

TEST_F(HistoryConnectionTest, aRoleOfLeastRightsFillsTheIndex)
{
    index(10 * TextIndex::settleMs);
    EXPECT_EQ(mark(), 20);
    EXPECT_EQ(asAdministrator(u"SELECT count(*) FROM outcome_search"_s).constFirst().constFirst(),
              u"20"_s);
    EXPECT_EQ(found(u"TEXT 1"_s), 11);
    EXPECT_EQ(found(u"text 20"_s), 1);
}

TEST_F(HistoryConnectionTest, anIndexThatCannotBeFilledIsGoneOnWithLater)
{
    asAdministrator(u"REVOKE INSERT ON outcome_search FROM norvane_engine"_s);
    StoreResult<int> filled = 0;
    for (int look = 0; look < 5 && filled; ++look) {
        filled = m_connection->index(100);
        m_time.pass(TextIndex::settleMs);
    }
    EXPECT_FALSE(filled);
    EXPECT_EQ(found(u"TEXT 1"_s), 11) << "found without it";
    asAdministrator(u"GRANT INSERT ON outcome_search TO norvane_engine"_s);
    index(10 * TextIndex::settleMs);
    EXPECT_EQ(mark(), 20);
}

} // namespace

} // namespace norvane
