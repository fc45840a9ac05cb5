#include "NorvaneHistory/RowPages.h"

#include "contract/Messages.h"

#include <gtest/gtest.h>

#include <numeric>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

struct Row
{
    qint64 id = 0;
};

QList<Row> rowsFrom(qint64 first, int count)
{
    QList<Row> rows;
    for (int i = 0; i < count; ++i)
        rows.append(Row{first - i});
    return rows;
}

QList<qint64> idsOf(const RowPages<Row> &pages)
{
    QList<qint64> ids;
    for (qsizetype row = 0; row < pages.rowCount(); ++row) {
        const Row *const found = pages.find(row);
        ids.append(found ? found->id : 0);
    }
    return ids;
}

TEST(RowPages, rowsFollowEachOtherOverTheEdgesOfPages)
{
    RowPages<Row> pages;
    EXPECT_EQ(pages.find(0), nullptr);
    pages.append(rowsFrom(9, 3), u"7"_s);
    EXPECT_FALSE(pages.isComplete());
    EXPECT_EQ(pages.next(), u"7"_s);
    pages.append({}, u"7b"_s);
    pages.append(rowsFrom(6, 2), {});
    EXPECT_TRUE(pages.isComplete());
    EXPECT_EQ(idsOf(pages), (QList<qint64>{9, 8, 7, 6, 5}));
    EXPECT_EQ(pages.find(5), nullptr);
    EXPECT_EQ(pages.beginOf(0), QString());
    EXPECT_EQ(pages.beginOf(2), u"7b"_s);
    EXPECT_EQ(pages.endOf(0), u"7"_s);
    EXPECT_EQ(pages.firstRowOf(2), 3);
}

TEST(RowPages, aRowIsInsertedSetAndRemovedInItsPage)
{
    RowPages<Row> pages;
    pages.append(rowsFrom(9, 2), u"8"_s);
    pages.append(rowsFrom(7, 2), {});
    pages.insert(pages.insertionAt(0), {Row{10}});
    pages.insert(pages.insertionAt(5), {Row{5}});
    pages.set(pages.placeOf(1), Row{90});
    pages.remove(3);
    EXPECT_EQ(idsOf(pages), (QList<qint64>{10, 90, 8, 6, 5}));
    EXPECT_EQ(pages.countOf(0), 3);
    EXPECT_EQ(pages.countOf(1), 2);
    EXPECT_EQ(pages.rowOf(6), 3);
    EXPECT_EQ(pages.rowOf(7), std::nullopt);
}

TEST(RowPages, noMorePagesAreHeldThanTheLimitAndTheirPlacesStay)
{
    constexpr int count = 100;
    RowPages<Row> pages;
    for (int page = 0; page < count; ++page)
        pages.append(rowsFrom(1000 - page * 10, 10), QString::number(page));
    int held = 0;
    for (int page = 0; page < count; ++page)
        held += pages.isHeld(page) ? 1 : 0;
    EXPECT_EQ(held, RowPages<Row>::maxHeld);
    EXPECT_TRUE(pages.isHeld(0)); // what happens now is seen there
    EXPECT_TRUE(pages.isHeld(count - 1));
    EXPECT_EQ(pages.rowCount(), count * 10);
    EXPECT_EQ(pages.find(500), nullptr);
    EXPECT_NE(pages.find(995), nullptr);
}

TEST(RowPages, aPageThatIsHeldAgainMayHaveOtherRows)
{
    RowPages<Row> pages;
    for (int page = 0; page < 40; ++page)
        pages.append(rowsFrom(1000 - page * 10, 10), QString::number(page));
    ASSERT_FALSE(pages.isHeld(3));
    pages.hold(3, rowsFrom(970, 7));
    EXPECT_TRUE(pages.isHeld(3));
    EXPECT_EQ(pages.rowCount(), 397);
    EXPECT_EQ(pages.find(36)->id, 964);
    EXPECT_EQ(pages.placeOf(37).page, 4);
}

TEST(RowPages, aPageThatIsNotHeldKeepsTheIdsOfItsRows)
{
    RowPages<Row> pages;
    pages.append(rowsFrom(9, 2), u"8"_s);
    pages.append(rowsFrom(7, 2), {});
    pages.letGo(1);
    EXPECT_EQ(idsOf(pages), (QList<qint64>{9, 8, 0, 0}));
    EXPECT_EQ(pages.rowOf(6), 3);
    pages.remove(1, 2);
    EXPECT_EQ(pages.rowCount(), 2);
    EXPECT_EQ(pages.idAt(1), 6);
    EXPECT_EQ(pages.find(1), nullptr);
}

TEST(RowPages, betweenTwoPagesARowGoesIntoTheOneThatIsHeld)
{
    RowPages<Row> pages;
    pages.append(rowsFrom(9, 2), u"8"_s);
    pages.append(rowsFrom(7, 2), u"6"_s);
    pages.append(rowsFrom(5, 2), {});
    pages.letGo(1);
    pages.insert(pages.insertionAt(2), {Row{70}});
    pages.insert(pages.insertionAt(5), {Row{50}});
    EXPECT_EQ(idsOf(pages), (QList<qint64>{9, 8, 70, 0, 0, 50, 5, 4}));
    EXPECT_EQ(pages.rowCount(), 8);
    EXPECT_EQ(pages.countOf(1), 2);
}

TEST(RowPages, aFirstPageThatIsEmptyTakesRowsAgain)
{
    RowPages<Row> pages;
    pages.append(rowsFrom(9, 2), u"8"_s);
    pages.append(rowsFrom(7, 2), {});
    pages.letGo(1);
    pages.remove(0, 2);
    pages.insert(pages.insertionAt(0), {Row{10}});
    EXPECT_EQ(idsOf(pages), (QList<qint64>{10, 0, 0}));
    EXPECT_EQ(pages.countOf(0), 1);
}

TEST(RowPages, aPageThatIsCutGoesOnInTheNextOne)
{
    RowPages<Row> pages;
    pages.append(rowsFrom(9, 4), u"6"_s);
    pages.append(rowsFrom(5, 2), {});
    const quint64 key = pages.keyOf(1);
    pages.split({0, 3}, u"7"_s);
    EXPECT_EQ(idsOf(pages), (QList<qint64>{9, 8, 7, 6, 5, 4}));
    EXPECT_EQ(pages.beginOf(1), u"7"_s);
    EXPECT_EQ(pages.endOf(1), u"6"_s);
    EXPECT_EQ(pages.countOf(1), 1);
    EXPECT_EQ(pages.pageOf(key), 2);
}

TEST(RowPages, thePageThatWasReadLastIsHeldLongest)
{
    RowPages<Row> pages;
    for (int page = 0; page < RowPages<Row>::maxHeld; ++page)
        pages.append(rowsFrom(1000 - page * 10, 10), QString::number(page));
    ASSERT_NE(pages.find(15), nullptr); // page 1 is read once more
    pages.append(rowsFrom(10, 10), {});
    EXPECT_TRUE(pages.isHeld(1));
    EXPECT_FALSE(pages.isHeld(2));
}

} // namespace

} // namespace norvane
