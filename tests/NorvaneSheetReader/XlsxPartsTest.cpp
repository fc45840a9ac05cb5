#include "NorvaneSheetReader/SheetFile.h"
#include "NorvaneSheetReader/SpreadsheetFixture.h"
#include "support/RaisedFailure.h"

namespace norvane {

using namespace Qt::StringLiterals;

using S = QStringList;

namespace {

QByteArray relation(const QByteArray &id, const QByteArray &type, const QByteArray &target)
{
    return "<Relationship Id=\"" + id + "\" Type=\"x/" + type + "\" Target=\"" + target + "\"/>";
}

QByteArray relations(const QByteArray &within)
{
    return "<Relationships>" + within + "</Relationships>";
}

QByteArray worksheetOf(const QByteArray &text)
{
    return "<worksheet><sheetData><row><c t=\"inlineStr\"><is><t>N</t></is></c></row>"
           "<row><c t=\"inlineStr\"><is><t>" +
           text + "</t></is></c></row></sheetData></worksheet>";
}

/// A workbook of one sheet, whose parts are called like this.
QByteArray bookWith(const QByteArray &toBook, const QByteArray &toSheet)
{
    return zipOf({{"_rels/.rels", relations(relation("r0", "officeDocument", toBook))},
                  {"xl/workbook.xml", "<workbook xmlns:r=\"r\"><sheets><sheet name=\"A\" "
                                      "r:id=\"r1\"/></sheets></workbook>"},
                  {"xl/_rels/workbook.xml.rels", relations(relation("r1", "worksheet", toSheet))},
                  {"xl/worksheets/sheet.xml", worksheetOf("in xl")},
                  {"other/sheet.xml", worksheetOf("in other")}});
}

} // namespace

TEST_F(Spreadsheets, targetsOfAnXlsxAreResolvedFromTheFolderOfTheirSource)
{
    const QList<std::pair<QByteArray, QString>> cases{
        {"worksheets/sheet.xml", u"in xl"_s},
        {"./worksheets/sheet.xml", u"in xl"_s},
        {"/xl/worksheets/sheet.xml", u"in xl"_s},
        {"worksheets/./sheet.xml", u"in xl"_s},
        {"../xl/worksheets/sheet.xml", u"in xl"_s},
        {"../other/sheet.xml", u"in other"_s},
        {"worksheets/../../other/sheet.xml", u"in other"_s},
        {"../../../other/sheet.xml", u"in other"_s},
    };
    for (const auto &[target, text] : cases) {
        openBytes(bookWith("xl/workbook.xml", target));
        EXPECT_EQ(values(u"N"_s), S{text}) << target.constData();
    }
    for (const char *toBook : {"./xl/workbook.xml", "/xl/workbook.xml", "xl/../xl/workbook.xml"}) {
        openBytes(bookWith(toBook, "worksheets/sheet.xml"));
        EXPECT_EQ(values(u"N"_s), S{u"in xl"_s}) << toBook;
    }
    EXPECT_EQ(raisedNumber([&] { openBytes(bookWith("xl/workbook.xml", "../sheet.xml")); }),
              SheetFailure::BadFile);
}

TEST_F(Spreadsheets, escapedCharactersOfAnXlsxAreDecoded)
{
    openBytes(xlsxOf(
        "<row><c t=\"inlineStr\"><is><t>N</t></is></c></row>"
        "<row><c t=\"inlineStr\"><is><t>a_x000D_b</t></is></c></row>"
        "<row><c t=\"s\"><v>0</v></c></row>"
        "<row><c t=\"str\"><v>_x0041__x0062_</v></c></row>"
        "<row><c t=\"inlineStr\"><is><t>_x005F_x0041_</t></is></c></row>"
        "<row><c t=\"inlineStr\"><is><t>_X0041_ _x041_ _x00G1_ _x+041_ _x0x41_ _x0041</t></is></c>"
        "</row>",
        "<si><r><t>_x00e1</t></r><r><t>_x00e1_</t></r></si>"));
    EXPECT_EQ(values(u"N"_s), (S{u"a\rb"_s, u"_x00e1á"_s, u"Ab"_s, u"_x0041_"_s,
                                 u"_X0041_ _x041_ _x00G1_ _x+041_ _x0x41_ _x0041"_s}));
}

TEST_F(Spreadsheets, hiddenSheetsOfAnXlsxAndAnOdsAreAsTheOthers)
{
    openBytes(zipOf(
        {{"_rels/.rels", relations(relation("r0", "officeDocument", "workbook.xml"))},
         {"workbook.xml", "<workbook xmlns:r=\"r\"><sheets>"
                          "<sheet name=\"Uno\" state=\"hidden\" r:id=\"r1\"/>"
                          "<sheet name=\"Dos_x0021_\" state=\"veryHidden\" r:id=\"r2\"/>"
                          "<sheet name=\"Tres\" r:id=\"r1\"/></sheets></workbook>"},
         {"_rels/workbook.xml.rels",
          relations(relation("r1", "worksheet", "a.xml") + relation("r2", "worksheet", "b.xml"))},
         {"a.xml", worksheetOf("1")},
         {"b.xml", worksheetOf("2")}}));
    EXPECT_EQ(connection.sheets(), (S{u"Uno"_s, u"Dos!"_s, u"Tres"_s}));
    EXPECT_EQ(values(u"Dos!"_s, u"N"_s), S{u"2"_s});

    const QByteArray cell = "<t:table-row><t:table-cell o:value-type=\"string\"><x:p>N</x:p>"
                            "</t:table-cell></t:table-row>";
    openBytes(odsOf(cell + "</t:table><t:table t:name=\"Dos\" t:style-name=\"hidden\">" + cell));
    EXPECT_EQ(connection.sheets(), (S{u"Hoja1"_s, u"Dos"_s}));
}

TEST_F(Spreadsheets, daysAreCountedFrom1904WhereAnXlsxSaysSo)
{
    for (const char *told : {"1", "true"}) {
        openBytes(zipOf(
            {{"_rels/.rels", relations(relation("r0", "officeDocument", "workbook.xml"))},
             {"workbook.xml",
              QByteArray("<workbook xmlns:r=\"r\"><workbookPr date1904=\"") + told +
                  "\"/><sheets><sheet name=\"A\" r:id=\"r1\"/></sheets></workbook>"},
             {"_rels/workbook.xml.rels",
              relations(relation("r1", "worksheet", "a.xml") + relation("r2", "styles", "s.xml"))},
             {"s.xml", "<styleSheet><cellXfs><xf numFmtId=\"14\"/></cellXfs></styleSheet>"},
             {"a.xml", "<worksheet><row><c t=\"str\"><v>N</v></c></row><row><c s=\"0\">"
                       "<v>44884</v></c></row></worksheet>"}}));
        EXPECT_EQ(values(u"N"_s), S{u"2026-11-20"_s}) << told;
    }
}

} // namespace norvane
