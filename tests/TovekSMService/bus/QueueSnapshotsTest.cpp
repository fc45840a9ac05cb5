#include "TovekSMService/bus/QueueSnapshots.h"

#include "contract/BusTypes.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto pageRows = static_cast<qsizetype>(Bus::queuePageRows);

QList<QueueRow> rowsOf(qsizetype count)
{
    QList<QueueRow> rows;
    for (qsizetype i = 0; i < count; ++i)
        rows.append({u"date"_s, QString::number(i), u"text"_s, i});
    return rows;
}

QString me()
{
    return u":1.1"_s;
}

struct Size
{
    qsizetype rows;
    int pages;
};

TEST(QueueSnapshots, ofAnEngineThatEndedAreNotTakenForThoseOfTheNext)
{
    QueueSnapshots first;
    QueueSnapshots second;
    EXPECT_NE(first.begin(me(), rowsOf(1)), second.begin(me(), rowsOf(1)));
}

class QueueSnapshotsOfSize : public testing::TestWithParam<Size>
{};

TEST_P(QueueSnapshotsOfSize, givesEveryRowOnceInPages)
{
    QueueSnapshots snapshots;
    const QList<QueueRow> rows = rowsOf(GetParam().rows);
    const quint64 number = snapshots.begin(me(), rows);
    QList<QueueRow> received;
    for (int page = 1; page <= GetParam().pages; ++page) {
        const auto first = static_cast<quint32>(received.size());
        const QueueSnapshots::Page given = snapshots.page(me(), number, first);
        EXPECT_EQ(given.snapshot, number);
        EXPECT_EQ(given.total, GetParam().rows);
        EXPECT_LE(given.rows.size(), pageRows);
        EXPECT_EQ(given.isLast, page == GetParam().pages);
        received += given.rows;
    }
    EXPECT_EQ(received, rows);
    EXPECT_EQ(snapshots.page(me(), number, 0).snapshot, 0u);
}

INSTANTIATE_TEST_SUITE_P(Sizes, QueueSnapshotsOfSize,
                         testing::Values(Size{0, 1}, Size{1, 1}, Size{pageRows - 1, 1},
                                         Size{pageRows, 1}, Size{pageRows + 1, 2},
                                         Size{2 * pageRows, 2}, Size{2 * pageRows + 1, 3}));

TEST(QueueSnapshots, anUnknownOneIsToldByNumberZero)
{
    QueueSnapshots snapshots;
    EXPECT_EQ(snapshots.page(me(), 0, 0).snapshot, 0u);
    const quint64 number = snapshots.begin(me(), rowsOf(pageRows + 1));
    EXPECT_NE(number, 0u);
    EXPECT_EQ(snapshots.page(me(), 0, 0).snapshot, 0u);
    EXPECT_EQ(snapshots.page(me(), number + 1, 0).snapshot, 0u);
    EXPECT_EQ(snapshots.page(u":1.2"_s, number, 0).snapshot, 0u);
    EXPECT_EQ(snapshots.page(me(), number, 0).snapshot, number);
}

TEST(QueueSnapshots, ofTwoCallersAreTheirOwn)
{
    QueueSnapshots snapshots;
    const QString other = u":1.2"_s;
    const quint64 mine = snapshots.begin(me(), rowsOf(pageRows + 1));
    const quint64 theirs = snapshots.begin(other, rowsOf(pageRows + 2));
    EXPECT_NE(mine, theirs);
    EXPECT_EQ(snapshots.page(me(), mine, 0).total, pageRows + 1);
    EXPECT_EQ(snapshots.page(other, theirs, 0).total, pageRows + 2);
    snapshots.drop(other);
    EXPECT_EQ(snapshots.page(other, theirs, 0).snapshot, 0u);
    EXPECT_TRUE(snapshots.page(me(), mine, static_cast<quint32>(pageRows)).isLast);
}

TEST(QueueSnapshots, aNewOneTakesThePlaceOfTheCallersLast)
{
    QueueSnapshots snapshots;
    const quint64 first = snapshots.begin(me(), rowsOf(1));
    const quint64 second = snapshots.begin(me(), rowsOf(2));
    EXPECT_NE(first, second);
    EXPECT_EQ(snapshots.page(me(), first, 0).snapshot, 0u);
    EXPECT_EQ(snapshots.page(me(), second, 0).total, 2u);
}

TEST(QueueSnapshots, pagesBehindTheEndAreEmptyAndTheLast)
{
    for (const quint32 first : {3u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        QueueSnapshots snapshots;
        const quint64 number = snapshots.begin(me(), rowsOf(3));
        const QueueSnapshots::Page page = snapshots.page(me(), number, first);
        EXPECT_EQ(page.snapshot, number);
        EXPECT_TRUE(page.rows.isEmpty());
        EXPECT_TRUE(page.isLast);
    }
}

} // namespace

} // namespace norvane
