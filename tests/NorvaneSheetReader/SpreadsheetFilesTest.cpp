#include "NorvaneSheetReader/SheetFile.h"
#include "NorvaneSheetReader/SpreadsheetFixture.h"
#include "support/RaisedFailure.h"

namespace norvane {

using namespace Qt::StringLiterals;

using S = QStringList;

class RealFile : public Spreadsheets, public ::testing::WithParamInterface<const char *>
{};

TEST_P(RealFile, isReadAlikeWhateverProgramWroteIt)
{
    connection.open(QStringLiteral(NORVANE_TEST_DATA "/import/") + QLatin1String(GetParam()));
    const QString contacts = u"Contactos"_s;
    EXPECT_EQ(connection.sheets(), (S{contacts, u"Vacía"_s, u"Otra hoja"_s}));
    EXPECT_EQ(connection.describe(contacts),
              (SpreadsheetConnection::Table{{u"Nombre"_s, u"Teléfono"_s, u"Nombre1"_s, u"F4"_s,
                                             u"Fecha"_s, u"Hora"_s, u"Cifra"_s, u"Suma"_s, u"F9"_s,
                                             u"F10"_s},
                                            6}));
    const QString null = u"(null)"_s;
    EXPECT_EQ(values(contacts, u"Nombre"_s),
              (S{u"José"_s, u"Ana"_s, null, u"Rui"_s, null, u"unidas"_s}));
    EXPECT_EQ(values(contacts, u"teléfono"_s),
              (S{u"912345678"_s, u"912 345-678"_s, null, u"   "_s, u"34600123456"_s, null}));
    EXPECT_EQ(values(contacts, u"F4"_s).first(), u"sin nombre"_s);
    EXPECT_EQ(values(contacts, u"Fecha"_s).first(2),
              (S{u"2026-11-20"_s, u"2026-11-20 12:00:00"_s}));
    EXPECT_EQ(values(contacts, u"Hora"_s).first(), u"09:30:00"_s);
    EXPECT_EQ(values(contacts, u"Cifra"_s),
              (S{u"0.1"_s, u"351912345678901"_s, null, u"-2.5"_s, null, null}));
    EXPECT_EQ(values(contacts, u"Suma"_s).first(), u"912345679"_s);
    // One of the programs stores 0 as the result of a formula that gives a text.
    const bool storesNoText = QLatin1String(GetParam()) == "libreoffice.xls"_L1;
    EXPECT_EQ(values(contacts, u"Suma"_s).at(1), storesNoText ? u"0"_s : u"Ana!"_s);
    EXPECT_EQ(values(contacts, u"F10"_s).at(4), u"lejos"_s);
    EXPECT_EQ(connection.describe(u"VACÍA"_s), SpreadsheetConnection::Table());
    EXPECT_EQ(values(u"Otra hoja"_s, u"Num"_s), (S{u"600000001"_s, u"600000001"_s}));
}

INSTANTIATE_TEST_SUITE_P(Spreadsheets, RealFile,
                         ::testing::Values("perl.xls", "gnumeric-biff5.xls", "gnumeric.xls",
                                           "libreoffice.xls", "gnumeric.xlsx", "libreoffice.xlsx",
                                           "gnumeric.ods", "libreoffice.ods"));

class KindsOfCells : public Spreadsheets, public ::testing::WithParamInterface<const char *>
{};

TEST_P(KindsOfCells, booleansErrorsAndResultsOfFormulas)
{
    connection.open(QStringLiteral(NORVANE_TEST_DATA "/import/") + QLatin1String(GetParam()));
    const QString null = u"(null)"_s;
    // One of the programs stores numbers as the results of formulas that it has only loaded.
    const bool storesNumbers = QLatin1String(GetParam()) == "kinds-libreoffice.xls"_L1;
    const S results =
        storesNumbers ? S{u"1"_s, u"0"_s, null, u"0"_s} : S{u"True"_s, u"False"_s, null, u"x1"_s};
    EXPECT_EQ(values(connection.sheets().first(), u"N"_s),
              (S{u"True"_s, u"False"_s, null} + results + S{null, u"12.5"_s}));
}

INSTANTIATE_TEST_SUITE_P(Spreadsheets, KindsOfCells,
                         ::testing::Values("kinds-gnumeric-biff5.xls", "kinds-gnumeric.xls",
                                           "kinds-gnumeric.xlsx", "kinds-gnumeric.ods",
                                           "kinds-libreoffice.xls", "kinds-libreoffice.ods"));

class WithCharts : public Spreadsheets, public ::testing::WithParamInterface<const char *>
{};

TEST_P(WithCharts, sheetsThatAreChartsAreLeftOutAndChartsOnASheetPassedOver)
{
    connection.open(QStringLiteral(NORVANE_TEST_DATA "/import/") + QLatin1String(GetParam()));
    EXPECT_EQ(connection.sheets(), (S{u"Ventas"_s, u"Clientes"_s}));
    const QString sales = u"Ventas"_s;
    EXPECT_EQ(connection.describe(sales),
              (SpreadsheetConnection::Table{{u"Teléfono"_s, u"Importe"_s}, 4}));
    EXPECT_EQ(values(sales, u"Teléfono"_s),
              (S{u"600000001"_s, u"600000002"_s, u"600000003"_s, u"600000009"_s}));
    EXPECT_EQ(values(sales, u"Importe"_s), (S{u"10"_s, u"20"_s, u"30"_s, u"(null)"_s}));
}

INSTANTIATE_TEST_SUITE_P(Spreadsheets, WithCharts, ::testing::Values("charts.xls", "charts.xlsx"));

TEST_F(Spreadsheets, cellsOfEveryKindInAnXlsx)
{
    openBytes(
        xlsxOf("<row><c t=\"inlineStr\"><is><t>N</t></is></c></row>"
               "<row r=\"3\"><c r=\"A3\" t=\"b\"><v>1</v></c></row>"
               "<row><c t=\"b\"><v>0</v></c></row>"
               "<row><c t=\"e\"><v>#N/A</v></c></row>"
               "<row><c t=\"s\"><v>1</v></c></row>"
               "<row><c><f>1+1</f></c></row>"
               "<row><c t=\"str\"><f>A1</f><v>N</v></c></row>"
               "<row><c t=\"s\"><v>99</v></c></row>"
               "<row><c><v>9.12345678E8</v></c></row>",
               "<si><t>zero</t></si><si><r><t>o</t></r><r><t>ne</t></r><rPh><t>x</t></rPh></si>"));
    const QString null = u"(null)"_s;
    EXPECT_EQ(values(u"Hoja1"_s, u"N"_s),
              (S{null, u"True"_s, u"False"_s, null, u"one"_s, null, u"N"_s, null, u"912345678"_s}));
}

TEST_F(Spreadsheets, cellsOfEveryKindInAnOds)
{
    openBytes(
        odsOf("<t:table-row><t:table-cell "
              "o:value-type=\"string\"><x:p>N</x:p></t:table-cell></t:table-row>"
              "<t:table-row t:number-rows-repeated=\"2\"><t:table-cell o:value-type=\"float\" "
              "o:value=\"600\"><x:p>600,00</x:p></t:table-cell></t:table-row>"
              "<t:table-row><t:table-cell o:value-type=\"boolean\" "
              "o:boolean-value=\"true\"/></t:table-row>"
              "<t:table-row><t:table-cell calcext:value-type=\"error\" o:value-type=\"string\">"
              "<x:p>#N/A</x:p></t:table-cell></t:table-row>"
              "<t:table-row><t:table-cell t:formula=\"of:=1\"/></t:table-row>"
              "<t:table-row><t:table-cell o:value-type=\"string\"><o:annotation><x:p>note</x:p>"
              "</o:annotation><x:p>a<x:s x:c=\"2\"/><x:span>b</x:span></x:p><x:p>c</x:p>"
              "</t:table-cell></t:table-row>"
              "<t:table-row t:number-rows-repeated=\"1048000\"><t:table-cell "
              "t:number-columns-repeated=\"16384\"/></t:table-row>"));
    EXPECT_EQ(values(u"Hoja1"_s, u"N"_s),
              (S{u"600"_s, u"600"_s, u"True"_s, u"(null)"_s, u"(null)"_s, u"a  b\nc"_s}));
}

TEST_F(Spreadsheets, anArchiveWithLengthsOf64BitsIsRead)
{
    openBytes(zip64Of({{"content.xml", "<o:document-content xmlns:o=\"o\" xmlns:t=\"t\">"
                                       "<o:body><o:spreadsheet><t:table t:name=\"Hoja1\">"
                                       "<t:table-row><t:table-cell o:value-type=\"float\" "
                                       "o:value=\"7\"/></t:table-row></t:table>"
                                       "</o:spreadsheet></o:body></o:document-content>"}}));
    EXPECT_EQ(connection.describe(u"Hoja1"_s).fields, S{u"7"_s});
}

TEST_F(Spreadsheets, fieldsAndSheetsThatAreNotThereAreFailures)
{
    connection.open(QStringLiteral(NORVANE_TEST_DATA "/import/perl.xls"));
    EXPECT_EQ(raisedNumber([&] { connection.describe(u"Hoja9"_s); }), SheetFailure::NoSuchSheet);
    const auto rows = connection.rows(u"Contactos"_s);
    EXPECT_EQ(raisedNumber([&] { rows->value(u"none"_s); }), 3265);
    EXPECT_EQ(rows->value(u"Nombre"_s), u"José"_s) << "the connection goes on";
}

TEST_F(Spreadsheets, aClosedConnectionAnswersNothing)
{
    EXPECT_EQ(raisedNumber([&] { connection.sheets(); }), 3704);
    EXPECT_EQ(raisedNumber([&] { connection.describe(u"x"_s); }), 3704);
    connection.open(QStringLiteral(NORVANE_TEST_DATA "/import/perl.xls"));
    connection.close();
    EXPECT_EQ(raisedNumber([&] { connection.rows(u"Contactos"_s); }), 3704);
}

TEST_F(Spreadsheets, aReaderThatIsNotThereIsAFailureAboveZero)
{
    HelperConnection none(u"/nowhere/reader"_s);
    EXPECT_EQ(raisedNumber([&] { none.open(u"x"_s); }), 429);
    try {
        none.open(u"x"_s);
    } catch (const NumberedFailure &failure) {
        EXPECT_TRUE(failure.description().contains(u"/nowhere/reader"_s)) << "the program is named";
    }
}

TEST_F(Spreadsheets, filesAreFoundByWhatTheyHoldAndNotByTheirName)
{
    const QString path = folder.filePath(u"really-an.xls"_s);
    QFile::copy(QStringLiteral(NORVANE_TEST_DATA "/import/gnumeric.ods"), path);
    connection.open(path);
    EXPECT_EQ(connection.sheets().size(), 3);
}

} // namespace norvane
