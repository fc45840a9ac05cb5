#include "TovekSMService/history/TextIndexFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class TextIndexTest : public TextIndexFixture
{
protected:
    /// How many texts with the word "soon" an index holds, whether their messages are there or not.
    int indexed(const QString &table)
    {
        const bool isFile = m_store->database().kind() == StoreDatabase::Kind::File;
        const QString query = isFile ? u"SELECT COUNT(*) FROM %1_search_terms WHERE term = 'soo'"_s
                                     : u"SELECT COUNT(*) FROM %1_search "
                                       "WHERE search_pieces(folded) @@ 'soo'"_s;
        return OtherConnection(file()).value(query.arg(table)).toInt();
    }
};

TEST_F(TextIndexTest, whatIsForgottenLeavesTheIndex)
{
    leave(u"2025-01-01"_s, 1, DeliveryState::None, u"600"_s, u"forgotten soon"_s);
    const qint64 kept = leave(u"2026-01-01"_s, 1, DeliveryState::None, u"600"_s, u"kept soon"_s);
    index();
    EXPECT_EQ(indexed(u"outcome"_s), 2);
    ASSERT_EQ(given(m_store->outcomes().prune(u"2025-06-01"_s, 10)), 1);
    EXPECT_EQ(OtherConnection(file()).rows(u"SELECT id FROM outcome_forgotten"_s).size(), 1);
    EXPECT_EQ(found(u"soon"_s), Ids({kept}));
    index();
    EXPECT_TRUE(OtherConnection(file()).rows(u"SELECT id FROM outcome_forgotten"_s).isEmpty());
    EXPECT_EQ(found(u"soon"_s), Ids({kept}));
    EXPECT_EQ(indexed(u"outcome"_s), 1);
}

TEST_F(TextIndexTest, whatWasForgottenBeforeItWasIndexedIsNoBurden)
{
    leave(u"2025-01-01"_s);
    ASSERT_EQ(given(m_store->outcomes().prune(u"2025-06-01"_s, 10)), 1);
    index();
    EXPECT_TRUE(OtherConnection(file()).rows(u"SELECT id FROM outcome_forgotten"_s).isEmpty());
    EXPECT_EQ(given(m_index.step(10)), 0);
}

TEST_F(TextIndexTest, anIndexOfTextsThatWereFoldedOtherwiseIsMadeAnew)
{
    const qint64 one = leave(u"2025-01-01"_s, 1, DeliveryState::None, u"600"_s, u"first"_s);
    index();
    ASSERT_GT(mark(), 0);
    OtherConnection(file()).run(
        u"UPDATE setting SET value = '0.1:9' WHERE name = 'history_index'"_s);
    EXPECT_EQ(mark(), 0);
    EXPECT_EQ(found(u"first"_s), Ids({one})) << "without it";
    TextIndex anew(m_store->database(), HistoryTable::Outcomes, m_time);
    done(anew.prepare());
    given(anew.step(10));
    m_time.pass(TextIndex::settleMs);
    given(anew.step(10));
    EXPECT_GT(mark(), 0);
    EXPECT_EQ(found(u"first"_s), Ids({one}));
}

TEST_F(TextIndexTest, aStepIsOfSoManyRows)
{
    addMany(10, u"text"_s);
    given(m_index.step(4));
    m_time.pass(TextIndex::settleMs);
    if (mark() == 0) { // in a shared database nothing is old enough before
        EXPECT_EQ(given(m_index.step(4)), 4);
    }
    EXPECT_EQ(mark(), 4);
    EXPECT_EQ(found(u"text"_s).size(), 10) << "indexed or not";
}

TEST_F(TextIndexTest, receivedMessagesAreIndexedAndLeaveTheIndex)
{
    const qint64 gone = receive(u"forgotten soon"_s);
    const qint64 kept = receive(u"kept soon"_s);
    EXPECT_EQ(inbox(u"oo"_s), Ids({kept, gone})) << "without it";
    index();
    EXPECT_EQ(mark(HistoryTable::Received), kept);
    EXPECT_EQ(inbox(u"oo"_s), Ids({kept, gone}));
    EXPECT_EQ(indexed(u"received"_s), 2);
    done(m_store->received().markRead({gone}));
    ASSERT_EQ(given(m_store->received().prune(u"2025-06-01"_s, 10)), 1);
    EXPECT_EQ(OtherConnection(file()).rows(u"SELECT id FROM received_forgotten"_s).size(), 1);
    EXPECT_EQ(inbox(u"oo"_s), Ids({kept}));
    index();
    EXPECT_TRUE(OtherConnection(file()).rows(u"SELECT id FROM received_forgotten"_s).isEmpty());
    EXPECT_EQ(inbox(u"oo"_s), Ids({kept}));
    EXPECT_EQ(indexed(u"received"_s), 1);
}

TEST_F(TextIndexTest, eachTableHasItsOwnIndex)
{
    const qint64 outcome = keep(u"both"_s);
    index();
    EXPECT_EQ(mark(HistoryTable::Received), 0);
    const qint64 received = receive(u"both"_s);
    index();
    EXPECT_EQ(mark(), outcome);
    EXPECT_EQ(found(u"bo"_s), Ids({outcome}));
    EXPECT_EQ(inbox(u"bo"_s), Ids({received}));
}

} // namespace

} // namespace norvane
