#include "contract/QueueRecordSet.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QueueRow row(const char *date, const char *phone, qint64 id)
{
    return {QLatin1String(date), QLatin1String(phone), u"text"_s, id};
}

QueueRecordSet threeRows()
{
    return QueueRecordSet({row("2024-05-06T10:00:00", "a", 11), row("2024-05-06T11:00:00", "b", 12),
                           row("2024-05-06T12:00:00", "c", 13)});
}

QList<qint64> ids(const QueueRecordSet &records)
{
    QList<qint64> result;
    for (const QueueRow &entry : records.rows())
        result.append(entry.id);
    return result;
}

TEST(QueueRecordSetTest, freshSetCarriesNothingBack)
{
    EXPECT_EQ(QueueRecordSet().count(), 0);
    QueueRecordSet records = threeRows();
    EXPECT_EQ(records.count(), 3);
    EXPECT_EQ(records.at(1).phone, u"b"_s);
    EXPECT_TRUE(records.changedRows().isEmpty());
    EXPECT_TRUE(records.deletedIds().isEmpty());
    records.sortByDeliveryDate();
    EXPECT_TRUE(records.changedRows().isEmpty());
}

TEST(QueueRecordSetTest, sortsByDeliveryDateEarliestFirst)
{
    QueueRecordSet records({row("2024-05-06T10:00:01", "a", 1), row("2024-05-06T10:00:00", "b", 2),
                            row("2025-01-01T00:00:00", "c", 3), row("2023-12-31T23:59:59", "d", 4),
                            row("2024-05-06T09:59:59", "e", 5)});
    records.sortByDeliveryDate();
    EXPECT_EQ(ids(records), (QList<qint64>{4, 5, 2, 1, 3}));
}

TEST(QueueRecordSetTest, rowsOfEqualDateKeepTheirOrder)
{
    QList<QueueRow> rows;
    for (int n = 0; n < 200; ++n)
        rows.append(row(n % 2 ? "2024-05-06T10:00:00" : "2024-05-06T11:00:00", "p", n));
    QueueRecordSet records(rows);
    records.sortByDeliveryDate();
    for (int n = 0; n < 100; ++n) {
        EXPECT_EQ(records.at(n).id, 2 * n + 1);
        EXPECT_EQ(records.at(100 + n).id, 2 * n);
    }
}

TEST(QueueRecordSetTest, editedRowsAreCarriedBackWithTheirNewValues)
{
    QueueRecordSet records = threeRows();
    records.setPhone(2, u"z"_s);
    records.setMessage(0, u"new"_s);
    const QList<QueueRow> changed = records.changedRows();
    ASSERT_EQ(changed.size(), 2);
    EXPECT_EQ(changed.at(0), (QueueRow{u"2024-05-06T10:00:00"_s, u"a"_s, u"new"_s, 11}));
    EXPECT_EQ(changed.at(1), (QueueRow{u"2024-05-06T12:00:00"_s, u"z"_s, u"text"_s, 13}));
    EXPECT_TRUE(records.deletedIds().isEmpty());
}

TEST(QueueRecordSetTest, bothFieldsOfARowAreOneChange)
{
    QueueRecordSet records = threeRows();
    records.setPhone(1, u"y"_s);
    records.setMessage(1, u"new"_s);
    records.setMessage(1, u"newer"_s);
    ASSERT_EQ(records.changedRows().size(), 1);
    EXPECT_EQ(records.changedRows().at(0).phone, u"y"_s);
    EXPECT_EQ(records.changedRows().at(0).message, u"newer"_s);
}

TEST(QueueRecordSetTest, settingTheSameValueIsNoChange)
{
    QueueRecordSet records = threeRows();
    records.setPhone(0, u"a"_s);
    records.setMessage(0, u"text"_s);
    EXPECT_TRUE(records.changedRows().isEmpty());
}

TEST(QueueRecordSetTest, removedRowsAreCarriedBackByIdInTheOrderOfRemoval)
{
    QueueRecordSet records = threeRows();
    records.removeRow(2);
    records.removeRow(0);
    EXPECT_EQ(ids(records), (QList<qint64>{12}));
    EXPECT_EQ(records.deletedIds(), (QList<qint64>{13, 11}));
    EXPECT_TRUE(records.changedRows().isEmpty());
}

TEST(QueueRecordSetTest, severalRowsAreRemovedByTheNumbersThatTheyHave)
{
    QueueRecordSet records = threeRows();
    records.setPhone(0, u"z"_s);
    records.setPhone(1, u"y"_s);
    records.removeRows({2, 0});
    EXPECT_EQ(ids(records), (QList<qint64>{12}));
    EXPECT_EQ(records.deletedIds(), (QList<qint64>{13, 11}));
    ASSERT_EQ(records.changedRows().size(), 1);
    EXPECT_EQ(records.changedRows().at(0).id, 12);
}

TEST(QueueRecordSetTest, forgottenChangesAreNotCarriedAgain)
{
    QueueRecordSet records = threeRows();
    records.setPhone(0, u"z"_s);
    records.removeRow(2);
    records.forgetChanges();
    EXPECT_TRUE(records.changedRows().isEmpty());
    EXPECT_TRUE(records.deletedIds().isEmpty());
    EXPECT_EQ(records.at(0).phone, u"z"_s);
    records.setPhone(1, u"y"_s);
    ASSERT_EQ(records.changedRows().size(), 1);
    EXPECT_EQ(records.changedRows().at(0).id, 12);
}

TEST(QueueRecordSetTest, rowThatWasEditedAndThenRemovedIsARemovalAlone)
{
    QueueRecordSet records = threeRows();
    records.setPhone(1, u"y"_s);
    records.setPhone(2, u"z"_s);
    records.removeRow(1);
    EXPECT_EQ(records.deletedIds(), (QList<qint64>{12}));
    ASSERT_EQ(records.changedRows().size(), 1);
    EXPECT_EQ(records.changedRows().at(0).id, 13);
}

TEST(QueueRecordSetTest, changesFollowTheirRowsThroughASort)
{
    QueueRecordSet records(
        {row("2024-05-06T12:00:00", "late", 1), row("2024-05-06T10:00:00", "early", 2)});
    records.setPhone(0, u"edited"_s);
    records.sortByDeliveryDate();
    ASSERT_EQ(records.changedRows().size(), 1);
    EXPECT_EQ(records.changedRows().at(0).id, 1);
    EXPECT_EQ(records.at(1).phone, u"edited"_s);
}

TEST(QueueRecordSetTest, copyKeepsItsOwnChanges)
{
    const QueueRecordSet snapshot = threeRows();
    QueueRecordSet edited = snapshot;
    edited.removeRow(0);
    EXPECT_EQ(snapshot.count(), 3);
    EXPECT_TRUE(snapshot.deletedIds().isEmpty());
}

} // namespace

} // namespace norvane
