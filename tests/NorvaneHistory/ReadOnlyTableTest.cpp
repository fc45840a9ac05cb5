#include "NorvaneHistory/ReadOnlyTable.h"

#include <QHeaderView>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class ReadOnlyTableTest : public ::testing::Test
{
protected:
    void show(const QSize &size)
    {
        table.showRows({u"Day"_s, u"Reason"_s},
                       {{u"01/01/2026"_s, u"short"_s}, {u"02/01/2026"_s, longText}});
        table.resize(size);
        table.show();
    }

    int textWidth(const QString &text) const { return table.fontMetrics().horizontalAdvance(text); }

    const QString longText = QString(u"a reason "_s).repeated(5);
    ReadOnlyTable table;
};

TEST_F(ReadOnlyTableTest, theLastColumnTakesTheRoomThatIsLeft)
{
    show({900, 200});
    EXPECT_EQ(table.columnWidth(0) + table.columnWidth(1), table.viewport()->width());
    table.resize(700, 200);
    EXPECT_EQ(table.columnWidth(0) + table.columnWidth(1), table.viewport()->width());
}

TEST_F(ReadOnlyTableTest, aTextIsNotCutWhereTheRoomIsTooSmall)
{
    show({150, 200});
    EXPECT_GT(table.columnWidth(0), textWidth(u"02/01/2026"_s));
    EXPECT_GT(table.columnWidth(1), textWidth(longText));
}

TEST_F(ReadOnlyTableTest, rowsStandAsCloseAsTheirTextAllows)
{
    show({900, 200});
    EXPECT_GE(table.rowHeight(1), table.fontMetrics().height());
    EXPECT_LT(table.rowHeight(1), 2 * table.fontMetrics().height());
}

TEST_F(ReadOnlyTableTest, otherRowsTakeThePlaceOfThoseBefore)
{
    show({900, 200});
    table.showRows({u"Word"_s}, {{u"one"_s}});
    ASSERT_EQ(table.rowCount(), 1);
    ASSERT_EQ(table.columnCount(), 1);
    EXPECT_EQ(table.item(0, 0)->text(), u"one"_s);
    EXPECT_EQ(table.columnWidth(0), table.viewport()->width());
}

} // namespace

} // namespace norvane
