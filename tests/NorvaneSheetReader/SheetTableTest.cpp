#include "NorvaneSheetReader/SheetTable.h"

#include "common/SpreadsheetConnection.h"
#include "common/platform/ProcessLimits.h"
#include "support/Allocations.h"
#include "support/RaisedFailure.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

class Table : public ::testing::Test
{
protected:
    const std::shared_ptr<CellTexts> texts = std::make_shared<CellTexts>();
    SheetTable table{u"Hoja1"_s, texts};
};

TEST_F(Table, theFirstRowThatHoldsAnythingGivesTheNames)
{
    table.set(2, 0, u" Nombre\n "_s);
    table.set(2, 1, u"nombre"_s);
    table.set(2, 2, u"NOMBRE1"_s);
    table.set(2, 4, u"F4"_s);
    table.set(4, 6, u"x"_s);
    table.finish();
    EXPECT_EQ(table.fields(), (QStringList{u"Nombre"_s, u"nombre1"_s, u"NOMBRE11"_s, u"F4"_s,
                                           u"F41"_s, u"F6"_s, u"F7"_s}));
    EXPECT_EQ(table.rows(), 2);
    EXPECT_FALSE(table.value(0, 6));
    EXPECT_EQ(table.value(1, 6), u"x"_s);
    EXPECT_EQ(table.fieldIndex(u"NoMbRe"_s), 0);
    EXPECT_EQ(table.fieldIndex(u"f7"_s), 6);
    EXPECT_FALSE(table.fieldIndex(u"F8"_s));
}

TEST_F(Table, asManyEqualNamesAsASheetHasColumnsAreToldApart)
{
    for (qint32 column = 0; column <= SheetTable::maxColumn; ++column)
        table.set(0, column, column % 2 == 0 ? u"n"_s : u"N"_s);
    const Allocations made = allocationsOf([&] { table.finish(); });
    EXPECT_LT(made.count, 30 * SheetTable::maxColumn) << "each name begins its search anew";
    EXPECT_EQ(table.fields().at(3), u"N3"_s);
    EXPECT_EQ(table.fields().last(), u"N16383"_s);
    EXPECT_EQ(table.fieldIndex(u"n16383"_s), SheetTable::maxColumn);
}

TEST_F(Table, ofTwoValuesForOneCellTheLastCounts)
{
    table.set(1, 0, u"a"_s);
    table.set(0, 0, u"H"_s);
    table.set(1, 0, u"b"_s);
    table.finish();
    EXPECT_EQ(table.value(0, 0), u"b"_s);
    EXPECT_EQ(table.rows(), 1);
}

TEST_F(Table, aSheetWithoutValuesHasNeitherFieldsNorRows)
{
    table.set(7, 7, QString());
    table.finish();
    EXPECT_TRUE(table.fields().isEmpty());
    EXPECT_EQ(table.rows(), 0);
}

namespace {

/// Fills a sheet with as many cells as a workbook may hold, each with a text of its own, within the
/// reader's memory; ends the process with 0 if that goes well.
[[noreturn]] void fillWithinTheReadersMemory()
{
    limitThisProcess(quint64{1} << 30, 1000);
    constexpr qint32 columns = 16;
    SheetTable large(u"Hoja1"_s, std::make_shared<CellTexts>());
    for (qint32 i = 0; i < CellTexts::maxCells; ++i)
        large.set(i / columns, i % columns, QString::number(600'000'000 + i));
    large.finish();
    std::_Exit(large.value(large.rows() - 1, columns - 1) == u"605999999"_s ? 0 : 1);
}

} // namespace

TEST(LargeTable, sixMillionCellsFitIntoTheReadersMemory)
{
    EXPECT_EXIT(fillWithinTheReadersMemory(), ::testing::ExitedWithCode(0), "");
}

TEST_F(Table, moreThanSixMillionCellsAreAFailure)
{
    for (qint64 i = 0; i < CellTexts::maxCells; ++i)
        texts->countCell();
    const auto failure = raisedFailure([&] { table.set(0, 0, u"x"_s); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->number(), SheetFailure::BadFile);
    EXPECT_EQ(failure->description(), u"The workbook holds more than 6,000,000 cells."_s);
}

TEST_F(Table, textsAreKeptAsTheyAre)
{
    const QStringList kept{
        u""_s,    u"912345678"_s, u"Jos\u00e9"_s, u"\u20ac"_s, QString(3'000'000, u'\u20ac'),
        u"a\0b"_s};
    QList<CellTexts::Place> places;
    for (const QString &text : kept)
        places.append(texts->add(text));
    for (qsizetype i = 0; i < kept.size(); ++i)
        EXPECT_TRUE(texts->at(places.at(i)) == kept.at(i)) << i;
    EXPECT_FALSE(texts->at(places.first()).isNull());
    EXPECT_TRUE(texts->at(texts->add(QString())).isNull());
}

TEST_F(Table, moreTextThanTheMemoryHasRoomForIsAFailure)
{
    const QString million(1 << 20, u'x');
    const auto failure = raisedFailure([&] {
        for (qint32 row = 0; row < 300; ++row)
            table.set(row, 0, million);
    });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->description(), u"The workbook holds more than 256 MiB of text."_s);
}

TEST_F(Table, aCellBeyondTheSheetIsAFailure)
{
    table.set(SheetTable::lastRow, SheetTable::maxColumn, u"x"_s);
    for (const auto &[row, column] :
         {std::pair{SheetTable::lastRow + 1, 0}, {0, SheetTable::maxColumn + 1}, {-1, 0}, {0, -1}})
        EXPECT_EQ(raisedNumber([&, r = row, c = column] { table.set(r, c, u"x"_s); }),
                  SheetFailure::BadFile);
}

} // namespace norvane
