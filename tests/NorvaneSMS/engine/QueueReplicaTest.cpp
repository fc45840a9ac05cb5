#include "NorvaneSMS/engine/QueueReplica.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QueueRow row(int day, qint64 id, const char *phone = "1")
{
    return {u"2100-01-%1T00:00:00"_s.arg(day, 2, 10, QLatin1Char('0')), QLatin1String(phone),
            u"x"_s, id};
}

QList<qint64> ids(const QueueReplica &replica)
{
    QList<qint64> result;
    for (const QueueRow &entry : replica.rows())
        result.append(entry.id);
    return result;
}

TEST(QueueReplicaTest, aNewOneKnowsNothing)
{
    EXPECT_EQ(QueueReplica().revision(), 0U);
    EXPECT_TRUE(QueueReplica().rows().isEmpty());
}

TEST(QueueReplicaTest, rowsAreKeptByDateAndThenById)
{
    QueueReplica replica;
    replica.reset(7, {row(2, 1), row(1, 3), row(1, 2)});
    EXPECT_EQ(replica.revision(), 7U);
    EXPECT_EQ(ids(replica), (QList<qint64>{2, 3, 1}));
}

TEST(QueueReplicaTest, newRowsTakeTheirPlacesAndOldOnesGo)
{
    QueueReplica replica;
    replica.reset(1, {row(1, 1), row(3, 2), row(5, 3)});
    replica.apply(2, {row(6, 6), row(3, 5), row(1, 4)}, {2});
    EXPECT_EQ(replica.revision(), 2U);
    EXPECT_EQ(ids(replica), (QList<qint64>{1, 4, 5, 3, 6}));
}

TEST(QueueReplicaTest, aChangedRowReplacesItsFormerSelfAndMoves)
{
    QueueReplica replica;
    replica.reset(1, {row(1, 1), row(2, 2), row(3, 3)});
    replica.apply(2, {row(9, 1, "changed")}, {});
    EXPECT_EQ(ids(replica), (QList<qint64>{2, 3, 1}));
    EXPECT_EQ(replica.rows().last().phone, u"changed"_s);
}

TEST(QueueReplicaTest, whatIsToldTwiceIsThereOnce)
{
    QueueReplica replica;
    replica.reset(1, {row(1, 1), row(2, 2)});
    replica.apply(2, {row(2, 2)}, {99});
    EXPECT_EQ(ids(replica), (QList<qint64>{1, 2}));
}

TEST(QueueReplicaTest, nothingNewLeavesTheRowsAlone)
{
    QueueReplica replica;
    replica.reset(1, {row(1, 1)});
    const QList<QueueRow> before = replica.rows();
    replica.apply(5, {}, {});
    EXPECT_EQ(replica.revision(), 5U);
    EXPECT_EQ(replica.rows(), before);
}

TEST(QueueReplicaTest, anyRowOfChangesGivesWhatAWholeFetchWould)
{
    std::mt19937 random(5);
    QHash<qint64, QueueRow> truth;
    QueueReplica replica;
    replica.reset(1, {});
    for (quint64 revision = 2; revision < 500; ++revision) {
        QList<QueueRow> present;
        QList<qint64> gone;
        for (int change = 0; change < 5; ++change) {
            const qint64 id = static_cast<qint64>(random() % 60);
            if (random() % 3 == 0 && !std::any_of(present.cbegin(), present.cend(),
                                                  [id](const QueueRow &r) { return r.id == id; })) {
                truth.remove(id);
                gone.append(id);
            } else if (!gone.contains(id) &&
                       !std::any_of(present.cbegin(), present.cend(),
                                    [id](const QueueRow &r) { return r.id == id; })) {
                truth.insert(id, row(static_cast<int>(random() % 28) + 1, id));
                present.append(truth.value(id));
            }
        }
        replica.apply(revision, present, gone);
        QueueReplica whole;
        whole.reset(revision, truth.values());
        ASSERT_EQ(replica.rows(), whole.rows()) << revision;
    }
}

} // namespace

} // namespace norvane
