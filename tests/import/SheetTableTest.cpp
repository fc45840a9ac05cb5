#include "import/sheets/SheetTable.h"

#include "engine/RaisedFailure.h"

#include <gtest/gtest.h>

#include <ctime>

class Table : public ::testing::Test
{
protected:
    CellBudget budget;
    SheetTable table{u"Hoja1"_qs, budget};
};

TEST_F(Table, theFirstRowThatHoldsAnythingGivesTheNames)
{
    table.set(2, 0, u" Nombre\n "_qs);
    table.set(2, 1, u"nombre"_qs);
    table.set(2, 2, u"NOMBRE1"_qs);
    table.set(2, 4, u"F4"_qs);
    table.set(4, 6, u"x"_qs);
    table.finish();
    EXPECT_EQ(table.fields(), (QStringList{u"Nombre"_qs, u"nombre1"_qs, u"NOMBRE11"_qs, u"F4"_qs,
                                           u"F41"_qs, u"F6"_qs, u"F7"_qs}));
    EXPECT_EQ(table.rows(), 2);
    EXPECT_FALSE(table.value(0, 6));
    EXPECT_EQ(table.value(1, 6), u"x"_qs);
    EXPECT_EQ(table.fieldIndex(u"NoMbRe"_qs), 0);
    EXPECT_EQ(table.fieldIndex(u"f7"_qs), 6);
    EXPECT_FALSE(table.fieldIndex(u"F8"_qs));
}

TEST_F(Table, asManyEqualNamesAsASheetHasColumnsAreToldApart)
{
    for (qint32 column = 0; column <= SheetTable::LastColumn; ++column)
        table.set(0, column, column % 2 == 0 ? u"n"_qs : u"N"_qs);
    const std::clock_t begun = std::clock(); // of the processor: the machine may be busy
    table.finish();
    EXPECT_LT((std::clock() - begun) / CLOCKS_PER_SEC, 5) << "each name begins its search anew";
    EXPECT_EQ(table.fields().at(3), u"N3"_qs);
    EXPECT_EQ(table.fields().last(), u"N16383"_qs);
    EXPECT_EQ(table.fieldIndex(u"n16383"_qs), SheetTable::LastColumn);
}

TEST_F(Table, ofTwoValuesForOneCellTheLastCounts)
{
    table.set(1, 0, u"a"_qs);
    table.set(0, 0, u"H"_qs);
    table.set(1, 0, u"b"_qs);
    table.finish();
    EXPECT_EQ(table.value(0, 0), u"b"_qs);
    EXPECT_EQ(table.rows(), 1);
}

TEST_F(Table, aSheetWithoutValuesHasNeitherFieldsNorRows)
{
    table.set(7, 7, QString());
    table.finish();
    EXPECT_TRUE(table.fields().isEmpty());
    EXPECT_EQ(table.rows(), 0);
}

TEST_F(Table, aCellBeyondTheSheetIsAFailure)
{
    table.set(SheetTable::LastRow, SheetTable::LastColumn, u"x"_qs);
    for (const auto &[row, column] :
         {std::pair{SheetTable::LastRow + 1, 0}, {0, SheetTable::LastColumn + 1}, {-1, 0}, {0, -1}})
        EXPECT_EQ(raisedNumber([&, r = row, c = column] { table.set(r, c, u"x"_qs); }),
                  SheetFailure::BadFile);
}
