#include "TovekSMService/history/HistoryPages.h"
#include "TovekSMService/history/IndexMark.h"
#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/history/TextIndex.h"
#include "TovekSMService/store/OtherConnection.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/SettingTable.h"
#include "TovekSMService/store/StoreResults.h"
#include "TovekSMService/store/TestStoreShared.h"
#include "support/PostgresClient.h"
#include "support/TurnedTime.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Ids = QList<qint64>;

constexpr char insertion[] =
    "INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, reported) "
    "SELECT nextval('message_id_seq'), '', '600', 'wanted', 1, '2026-01-01', 1";

/// One of the engines that fill the index of one database.
struct IndexingEngine
{
    IndexingEngine(const QString &name, const QString &file, const Clock &clock, TimeSource &time)
        : store(openStoreOf(name, file, clock)),
          index(store->database(), HistoryTable::Outcomes, time)
    {}

    /// All that are found of a text, in their order.
    Ids found(const QString &text) const
    {
        const QueryLimit limit(TimeSource::system());
        HistoryFilter filter;
        filter.text = text;
        Ids ids;
        const HistoryPage page =
            given(HistoryPages(store->database(), limit).page(filter, {}, {}, 100'000));
        for (const HistoryRow &row : page.rows)
            ids.append(row.id);
        return ids;
    }

    std::unique_ptr<Store> store;
    TextIndex index;
};

class SharedIndexTest : public testing::Test
{
protected:
    SharedIndexTest()
        : m_engines{IndexingEngine(u"one"_s, file(), m_clock, m_time),
                    IndexingEngine(u"two"_s, file(), m_clock, m_time)}
    {
        for (IndexingEngine &engine : m_engines)
            done(engine.index.prepare());
        OtherConnection other(file());
        other.run(u"CREATE TABLE indexed (id bigint)"_s);
        other.run(u"CREATE FUNCTION note_indexed() RETURNS trigger LANGUAGE plpgsql AS "
                  "'BEGIN INSERT INTO indexed VALUES (NEW.id); RETURN NULL; END'"_s);
        other.run(u"CREATE TRIGGER note_indexed AFTER INSERT OR UPDATE ON outcome_search "
                  "FOR EACH ROW EXECUTE FUNCTION note_indexed()"_s);
    }

    QString file() const { return m_folder.filePath(u"queue.sqlite"_s); }
    IndexingEngine &one() { return m_engines[0]; }
    IndexingEngine &two() { return m_engines[1]; }

    static void leave(const IndexingEngine &engine)
    {
        done(engine.store->database().write(insertion));
    }
    void leaveMany(int rows)
    {
        OtherConnection(file()).run(QLatin1String(insertion) +
                                    u" FROM generate_series(1, %1)"_s.arg(rows));
    }
    Ids ids(const QString &query) const
    {
        Ids ids;
        for (const QVariantList &row : OtherConnection(file()).rows(query))
            ids.append(row.constFirst().toLongLong());
        return ids;
    }
    /// Messages that the history is to show, the newest first.
    Ids messages() const { return ids(u"SELECT message_id FROM outcome ORDER BY id DESC"_s); }
    Ids outcomes() const { return ids(u"SELECT id FROM outcome ORDER BY id"_s); }
    /// What was ever put into the index.
    Ids indexed() const { return ids(u"SELECT id FROM indexed ORDER BY id"_s); }
    Ids searchable() const { return ids(u"SELECT id FROM outcome_search ORDER BY id"_s); }

    /// In turns, until there is nothing more to index, with the time that is asked for.
    void indexInTurns(int maxRows)
    {
        for (int look = 0; look < 3; ++look) {
            for (bool isIndexing = true; isIndexing;) {
                isIndexing = false;
                for (IndexingEngine &engine : m_engines)
                    isIndexing = given(engine.index.step(maxRows)) > 0 || isIndexing;
            }
            m_time.pass(TextIndex::settleMs);
        }
    }

    SystemClock m_clock;
    TurnedTime m_time;
    QTemporaryDir m_folder;
    std::array<IndexingEngine, 2> m_engines;
};

TEST_F(SharedIndexTest, eachOutcomeIsIndexedOnceByEnginesThatTakeTurns)
{
    leaveMany(5500); // more than are looked at one by one
    for (int round = 0; round < 12; ++round) {
        for (IndexingEngine &engine : m_engines) {
            given(engine.index.step(500));
            leave(engine);
        }
        m_time.pass(TextIndex::settleMs / 4);
        if (round % 4 == 1) {
            EXPECT_EQ(one().found(u"wanted"_s), messages()) << "in the middle";
        }
    }
    EXPECT_GT(indexed().size(), 0);
    indexInTurns(500);
    EXPECT_EQ(indexed(), outcomes());
    EXPECT_EQ(searchable(), outcomes());
    for (const IndexingEngine &engine : m_engines)
        EXPECT_EQ(engine.found(u"wanted"_s), messages());
}

TEST_F(SharedIndexTest, anEngineThatFoldsTextsByAnEarlierUnicodeLeavesTheIndexAlone)
{
    leave(one());
    indexInTurns(100);
    ASSERT_EQ(searchable(), outcomes());
    const QString later = u"1.%1:7"_s.arg(static_cast<int>(QChar::currentUnicodeVersion()) + 1);
    OtherConnection(file()).run(
        u"UPDATE setting SET value = '%1' WHERE name = 'history_index'"_s.arg(later));
    leave(one());
    indexInTurns(100);
    EXPECT_EQ(searchable().size(), 1);
    EXPECT_EQ(given(SettingTable(one().store->database()).value(u"history_index"_s)), later);
    EXPECT_EQ(one().found(u"wanted"_s), messages()) << "found without it";
}

TEST_F(SharedIndexTest, whatIsForgottenLeavesAnIndexThatIsBegunAnew)
{
    leave(one());
    indexInTurns(100);
    ASSERT_EQ(searchable().size(), 1);
    OtherConnection(file()).run(
        u"UPDATE setting SET value = '1.0:0' WHERE name = 'history_index'"_s);
    given(one().store->outcomes().prune(u"2027-01-01"_s, 100));
    indexInTurns(100);
    EXPECT_TRUE(outcomes().isEmpty());
    EXPECT_TRUE(searchable().isEmpty());
}

TEST_F(SharedIndexTest, oneIndexesWhileTheOtherLooksOn)
{
    leaveMany(20);
    indexInTurns(0); // the time that has to pass
    done(one().store->database().together([&] {
        return one().index.step(8).map([&](int rows) {
            EXPECT_EQ(rows, 8);
            EXPECT_EQ(given(two().index.step(8)), 0) << "that isn't committed yet";
        });
    }));
    EXPECT_EQ(given(two().index.step(8)), 8);
    EXPECT_EQ(given(one().index.step(8)), 4);
    EXPECT_EQ(indexed(), outcomes());
}

TEST_F(SharedIndexTest, whatOneCouldNotCommitIsIndexedByTheOther)
{
    leaveMany(20);
    indexInTurns(0);
    EXPECT_FALSE(one().store->database().together([&]() -> StoreResult<> {
        EXPECT_EQ(given(one().index.step(8)), 8);
        return failed(StoreFailure(StoreFailure::Kind::Other, u"killed"_s));
    }));
    EXPECT_EQ(given(two().index.step(100)), 20);
    EXPECT_EQ(indexed(), outcomes());
    EXPECT_EQ(given(one().index.step(100)), 0);
}

TEST_F(SharedIndexTest, anOutcomeThatIsCommittedBehindLaterOnesIsNotLeftOut)
{
    leave(one());
    PostgresClient slow(connectionOf(file()));
    ASSERT_TRUE(slow.run(u"BEGIN; "_s + QLatin1String(insertion)));
    leave(two());
    for (int look = 0; look < 3; ++look) {
        for (IndexingEngine &engine : m_engines)
            EXPECT_EQ(given(engine.index.step(10)), 0);
        m_time.pass(TextIndex::settleMs / 4);
    }
    ASSERT_TRUE(slow.run(u"COMMIT"_s));
    indexInTurns(10);
    EXPECT_EQ(outcomes().size(), 3);
    EXPECT_EQ(indexed(), outcomes());
    EXPECT_EQ(two().found(u"wanted"_s), messages());
}

TEST_F(SharedIndexTest, whatIsForgottenWhileItIsIndexedLeavesTheIndex)
{
    leaveMany(10);
    indexInTurns(0);
    done(one().store->database().together([&] {
        return one().store->outcomes().prune(u"2027-01-01"_s, 4).map([&](int rows) {
            EXPECT_EQ(rows, 4);
            EXPECT_EQ(given(two().index.step(100)), 10) << "they are there for it still";
        });
    }));
    EXPECT_EQ(searchable().size(), 10);
    EXPECT_EQ(given(one().index.step(100)), 4);
    EXPECT_EQ(given(two().index.step(100)), 0);
    EXPECT_EQ(searchable(), outcomes());
    EXPECT_EQ(outcomes().size(), 6);
    EXPECT_TRUE(ids(u"SELECT id FROM outcome_forgotten"_s).isEmpty());
    EXPECT_EQ(one().found(u"wanted"_s), messages());
}

} // namespace

} // namespace norvane
