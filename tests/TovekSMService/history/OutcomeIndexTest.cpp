#include "TovekSMService/history/OutcomeIndex.h"

#include "TovekSMService/history/HistoryFixture.h"
#include "TovekSMService/history/IndexMark.h"
#include "support/TurnedTime.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Ids = QList<qint64>;

class OutcomeIndexTest : public HistoryFixture
{
protected:
    OutcomeIndexTest() { done(m_index.prepare()); }

    /// Until there is nothing more to index, with the time that a shared database asks for.
    void index(int maxRows = 100)
    {
        for (int look = 0; look < 3; ++look) {
            while (given(m_index.step(maxRows)) > 0) {
            }
            m_time.pass(OutcomeIndex::settleMs);
        }
    }

    qint64 mark() { return given(IndexMark(m_store->database()).value()); }

    /// More rows than are looked at one by one.
    void addMany(int rows, const QString &text)
    {
        done(m_store->database().together([&] {
            StoreResult<> added;
            for (int row = 0; added && row < rows; ++row)
                added = m_store->database().write(
                    "INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, "
                    "reported) VALUES (?, '', '600', ?, 1, '2026-01-01', 1)",
                    {1000 + row, text});
            return added;
        }));
    }

    TurnedTime m_time;
    OutcomeIndex m_index{m_store->database(), m_time};
};

TEST_F(OutcomeIndexTest, whatLiesDeepIsFoundByTheIndex)
{
    ASSERT_TRUE(m_index.isUsable());
    const qint64 wanted = leave(u"2025-01-01"_s, 1, DeliveryState::None, u"666 77-88"_s,
                                u"Ñandú \"100%\" _x_ * OR NEAR( 😀fin"_s);
    const qint64 other = leave(u"2025-01-01"_s, -36, DeliveryState::None, u"999"_s, u"abc"_s);
    addMany(6000, u"nothing of it"_s);
    index(1000);
    EXPECT_GT(mark(), 6000);
    const struct
    {
        const char *text;
        Ids ids;
    } rows[] = {
        {"NANDU", {wanted}}, {"6667788", {wanted}}, {"666 77", {wanted}}, {"\"100%\"", {wanted}},
        {"_x_", {wanted}},   {"__x", {}},           {"%\" _", {wanted}},  {"* or near(", {wanted}},
        {"😀fin", {wanted}},  {"abc", {other}},      {"abd", {}},          {"100_", {}},
        {"'abc'", {}},       {"abc OR nan", {}},    {"6667788\nnan", {}}, {"\\abc", {}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(found(QString::fromUtf8(row.text)), row.ids) << row.text;
    HistoryFilter failures;
    failures.text = u"abc"_s;
    failures.states = MessageState::Sent;
    EXPECT_TRUE(page(failures).rows.isEmpty());
    EXPECT_EQ(found(QString(200, u'z')), Ids());
}

TEST_F(OutcomeIndexTest, aWalkOverWhatTheIndexFindsShowsEachRowOnce)
{
    Ids wanted;
    for (int number = 0; number < 5; ++number)
        wanted.prepend(leave(u"2025-01-01"_s, 1, DeliveryState::None, u"600"_s, u"wanted"_s));
    addMany(6000, u"nothing of it"_s);
    index(1000);
    const qint64 fresh = leave(u"2026-01-02"_s, 1, DeliveryState::None, u"600"_s, u"wanted"_s);
    wanted.prepend(fresh);
    HistoryFilter filter;
    filter.text = u"WANTED"_s;
    Ids walked;
    HistoryCursor after;
    for (bool isLast = false; !isLast;) {
        const HistoryPage next = page(filter, after, {}, 2);
        walked += idsOf(next);
        isLast = !next.next;
        after = next.next.value_or(HistoryCursor());
    }
    EXPECT_EQ(walked, wanted);
}

TEST_F(OutcomeIndexTest, whatIsForgottenLeavesTheIndex)
{
    leave(u"2025-01-01"_s, 1, DeliveryState::None, u"600"_s, u"forgotten soon"_s);
    const qint64 kept = leave(u"2026-01-01"_s, 1, DeliveryState::None, u"600"_s, u"kept soon"_s);
    index();
    ASSERT_EQ(given(m_store->outcomes().prune(u"2025-06-01"_s, 10)), 1);
    EXPECT_EQ(OtherConnection(file()).rows(u"SELECT id FROM outcome_forgotten"_s).size(), 1);
    EXPECT_EQ(found(u"soon"_s), Ids({kept}));
    index();
    EXPECT_TRUE(OtherConnection(file()).rows(u"SELECT id FROM outcome_forgotten"_s).isEmpty());
    EXPECT_EQ(found(u"soon"_s), Ids({kept}));
}

TEST_F(OutcomeIndexTest, whatWasForgottenBeforeItWasIndexedIsNoBurden)
{
    leave(u"2025-01-01"_s);
    ASSERT_EQ(given(m_store->outcomes().prune(u"2025-06-01"_s, 10)), 1);
    index();
    EXPECT_TRUE(OtherConnection(file()).rows(u"SELECT id FROM outcome_forgotten"_s).isEmpty());
    EXPECT_EQ(given(m_index.step(10)), 0);
}

TEST_F(OutcomeIndexTest, anIndexOfTextsThatWereFoldedOtherwiseIsMadeAnew)
{
    const qint64 one = leave(u"2025-01-01"_s, 1, DeliveryState::None, u"600"_s, u"first"_s);
    index();
    ASSERT_GT(mark(), 0);
    OtherConnection(file()).run(
        u"UPDATE setting SET value = '0.1:9' WHERE name = 'history_index'"_s);
    EXPECT_EQ(mark(), 0);
    EXPECT_EQ(found(u"first"_s), Ids({one})) << "without it";
    OutcomeIndex anew(m_store->database(), m_time);
    done(anew.prepare());
    given(anew.step(10));
    m_time.pass(OutcomeIndex::settleMs);
    given(anew.step(10));
    EXPECT_GT(mark(), 0);
    EXPECT_EQ(found(u"first"_s), Ids({one}));
}

TEST_F(OutcomeIndexTest, aStepIsOfSoManyRows)
{
    addMany(10, u"text"_s);
    given(m_index.step(4));
    m_time.pass(OutcomeIndex::settleMs);
    if (mark() == 0) { // in a shared database nothing is old enough before
        EXPECT_EQ(given(m_index.step(4)), 4);
    }
    EXPECT_EQ(mark(), 4);
    EXPECT_EQ(found(u"text"_s).size(), 10) << "indexed or not";
}

} // namespace

} // namespace norvane
