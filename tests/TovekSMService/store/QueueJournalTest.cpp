#include "TovekSMService/store/QueueJournal.h"

#include "TovekSMService/store/StoreFixture.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QList<qint64> sorted(std::optional<QList<qint64>> ids)
{
    EXPECT_TRUE(ids.has_value());
    QList<qint64> list = ids.value_or(QList<qint64>());
    std::sort(list.begin(), list.end());
    return list;
}

TEST(QueueJournalTest, whatWasNotedSinceARevisionIsTold)
{
    QueueJournal journal;
    const quint64 start = journal.revision();
    journal.note({1, 2});
    const quint64 middle = journal.revision();
    journal.note({2, 3});
    EXPECT_EQ(sorted(journal.since(start)), (QList<qint64>{1, 2, 3}));
    EXPECT_EQ(sorted(journal.since(middle)), (QList<qint64>{2, 3}));
    EXPECT_TRUE(sorted(journal.since(journal.revision())).isEmpty());
}

TEST(QueueJournalTest, aRevisionThatIsNotItsOwnIsUnknown)
{
    QueueJournal journal;
    EXPECT_FALSE(journal.since(0));
    EXPECT_FALSE(journal.since(journal.revision() + 1));
    EXPECT_FALSE(journal.since(journal.revision() - 1));
    EXPECT_FALSE(QueueJournal().since(journal.revision())) << "of an engine that came up anew";
}

TEST(QueueJournalTest, afterAChangeOfEverythingNoEarlierRevisionIsKnown)
{
    QueueJournal journal;
    journal.note({1});
    const quint64 before = journal.revision();
    journal.noteAll();
    EXPECT_FALSE(journal.since(before));
    EXPECT_TRUE(sorted(journal.since(journal.revision())).isEmpty());
}

TEST(QueueJournalTest, theOldestNotesAreForgottenFirst)
{
    QueueJournal journal;
    const quint64 start = journal.revision();
    journal.note({0});
    const quint64 second = journal.revision();
    QList<qint64> many;
    for (qint64 id = 1; id <= QueueJournal::maxNotes; ++id)
        many.append(id);
    journal.note(many);
    EXPECT_FALSE(journal.since(start));
    EXPECT_EQ(sorted(journal.since(second)), many);
    const quint64 third = journal.revision();
    journal.note({7});
    EXPECT_FALSE(journal.since(second));
    EXPECT_EQ(sorted(journal.since(third)), QList<qint64>{7});
}

TEST(QueueJournalTest, moreThanItCanKeepIsAChangeOfEverything)
{
    QueueJournal journal;
    const quint64 start = journal.revision();
    journal.note(QList<qint64>(QueueJournal::maxNotes + 1, 5));
    EXPECT_FALSE(journal.since(start));
    EXPECT_TRUE(sorted(journal.since(journal.revision())).isEmpty());
}

/// The journal of a store, whatever happens to its queue.
class StoreJournalTest : public StoreFixture
{
protected:
    StoreJournalTest() { mark(); }

    void mark() { m_since = m_store->queue().journal().revision(); }
    QList<qint64> noted() const { return sorted(m_store->queue().journal().since(m_since)); }

private:
    quint64 m_since = 0;
};

TEST_F(StoreJournalTest, messagesThatComeAreNoted)
{
    const qint64 first = add(noon());
    EXPECT_EQ(noted(), QList<qint64>{first});
    mark();
    done(m_store->queue().add({{u"1"_s, {}}, {u"2"_s, {}}, {u"3"_s, {}}}, noon()));
    EXPECT_EQ(noted(), (QList<qint64>{first + 1, first + 2, first + 3}));
    mark();
    done(m_store->queue().add({}, noon()));
    EXPECT_TRUE(noted().isEmpty());
}

TEST_F(StoreJournalTest, editsDeletionsPostponementsAndOutcomesAreNoted)
{
    const qint64 one = add(noon());
    const qint64 two = add(noon());
    const qint64 three = add(noon());
    mark();
    done(m_store->queue().update({{noon(), u"9"_s, u"x"_s, one}}, {two}));
    EXPECT_EQ(noted(), (QList<qint64>{one, two}));
    mark();
    done(m_store->queue().postpone(three, 1, noon()));
    EXPECT_EQ(noted(), QList<qint64>{three});
    mark();
    done(m_store->queue().finish(one, 1, std::nullopt, noon(), true));
    EXPECT_EQ(noted(), QList<qint64>{one});
}

TEST_F(StoreJournalTest, aRefusedMessageIsNoRowThatAnybodyHasSeen)
{
    const quint64 before = m_store->queue().journal().revision();
    done(m_store->queue().refuse({noon(), u"600"_s, {}, 0}, -51, noon()));
    const QList<qint64> told = noted();
    EXPECT_EQ(given(m_store->queue().rows(told)), QList<QueueRow>());
    EXPECT_TRUE(m_store->queue().journal().since(before).has_value());
}

TEST_F(StoreJournalTest, aPartThatLeavesChangesNoRow)
{
    const qint64 id = add(noon());
    mark();
    done(m_store->queue().begin({{id, std::nullopt, {}}}));
    done(m_store->queue().endPart(id, 1));
    done(m_store->queue().releaseBetweenParts());
    EXPECT_TRUE(noted().isEmpty());
}

TEST_F(StoreJournalTest, aClearedQueueAndAnotherFileAreChangesOfEverything)
{
    add(noon());
    quint64 before = m_store->queue().journal().revision();
    done(m_store->queue().clear());
    EXPECT_FALSE(m_store->queue().journal().since(before));
    before = m_store->queue().journal().revision();
    done(m_store->open());
    done(m_store->queue().load());
    EXPECT_FALSE(m_store->queue().journal().since(before));
}

TEST_F(StoreJournalTest, rowsAreGivenByTheirIdsWhereTheyAreStillThere)
{
    const qint64 one = add(noon(), u"1"_s);
    const qint64 two = add(noon(), u"2"_s);
    done(m_store->queue().update({}, {one}));
    const QList<QueueRow> rows = given(m_store->queue().rows({one, two, 999}));
    EXPECT_EQ(rows, (QList{QueueRow{noon(), u"2"_s, u"text"_s, two}}));
}

} // namespace

} // namespace norvane
