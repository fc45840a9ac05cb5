#include "NorvaneSheetReader/BiffFile.h"
#include "NorvaneSheetReader/SpreadsheetFixture.h"
#include "support/RaisedFailure.h"

namespace norvane {

using namespace Qt::StringLiterals;

using S = QStringList;

// Workbooks of the BIFF kind with records and storages that few programs write.

namespace {

constexpr quint16 formula = 0x0006;
constexpr quint16 end = 0x000A;
constexpr quint16 continued = 0x003C;
constexpr quint16 multipleNumbers = 0x00BD;
constexpr quint16 richString = 0x00D6;
constexpr quint16 cellFormat = 0x00E0;
constexpr quint16 sharedStrings = 0x00FC;
constexpr quint16 sharedLabel = 0x00FD;
constexpr quint16 dateMode = 0x0022;
constexpr quint16 number = 0x0203;
constexpr quint16 formulaText = 0x0207;
constexpr quint16 begin = 0x0809;

QByteArray biffSheetOf(const QByteArray &text)
{
    return biffLabel(0, 0, "N") + biffLabel(1, 0, text);
}

QByteArray formatOf(quint16 numberFormat)
{
    return biffRecord(cellFormat, littleShort(0) + littleShort(numberFormat));
}

} // namespace

TEST_F(Spreadsheets, anEmbeddedWorkbookIsNotReadInPlaceOfItsHost)
{
    const QByteArray embedded = biffOf({{"Embedded", biffSheetOf("wrong")}});
    const QByteArray host = biffOf({{"Host", biffSheetOf("right")}});
    openBytes(compoundOf({{u"Workbook"_s, host}, {u"MBD0001"_s, {}, {{u"Workbook"_s, embedded}}}}));
    EXPECT_EQ(connection.sheets(), S{u"Host"_s});
    EXPECT_EQ(values(u"N"_s), S{u"right"_s});
}

TEST_F(Spreadsheets, anEmbeddedStreamOfEncryptionDoesNotMakeItsHostEncrypted)
{
    openBytes(compoundOf({{u"Workbook"_s, biffOf({{"Host", biffSheetOf("right")}})},
                          {u"MBD0001"_s, {}, {{u"EncryptedPackage"_s, "x"}}}}));
    EXPECT_EQ(values(u"N"_s), S{u"right"_s});
}

TEST_F(Spreadsheets, aWorkbookThatIsOnlyEmbeddedIsNone)
{
    const auto opening = [&] {
        openBytes(compoundOf(
            {{u"WordDocument"_s, "text"},
             {u"MBD0001"_s, {}, {{u"Workbook"_s, biffOf({{"Embedded", biffSheetOf("wrong")}})}}}}));
    };
    EXPECT_EQ(raisedNumber(opening), SheetFailure::BadFile);
    EXPECT_EQ(connection.errors(), S{u"The file holds no workbook."_s});
}

TEST_F(Spreadsheets, streamsThatFollowEachOtherInACircleAreRefused)
{
    QByteArray bytes = compoundOf({{u"Workbook"_s, biffOf({{"Host", biffSheetOf("right")}})}});
    // The entry behind the root's is the only one, and leads back to itself.
    bytes.replace(2 * 512 + 128 + 72, 4, littleLong(1));
    EXPECT_EQ(raisedNumber([&] { openBytes(bytes); }), SheetFailure::BadFile);
    EXPECT_EQ(connection.errors(), S{u"The workbook's file is damaged."_s});
}

TEST_F(Spreadsheets, numbersThatShareARecordAreReadCellByCell)
{
    const auto entry = [](quint16 format, quint32 packed) {
        return littleShort(format) + littleLong(packed);
    };
    const QByteArray numbers = littleShort(1) + littleShort(1) + entry(0, (600'000'00 << 2) | 2) +
                               entry(0, (12345 << 2) | 3) + entry(0, 0xBFF80000) +
                               entry(1, (46346 << 2) | 2) + littleShort(4);
    openBytes(xlsOf({{"Hoja1", biffLabel(0, 0, "A") + biffLabel(0, 1, "B") + biffLabel(0, 2, "C") +
                                   biffLabel(0, 3, "D") + biffLabel(0, 4, "E") +
                                   biffRecord(multipleNumbers, numbers)}},
                    formatOf(0) + formatOf(14)));
    EXPECT_EQ(connection.describe(u"Hoja1"_s).fields, (S{u"A"_s, u"B"_s, u"C"_s, u"D"_s, u"E"_s}));
    EXPECT_EQ(values(u"A"_s), S{u"(null)"_s});
    EXPECT_EQ(values(u"B"_s), S{u"60000000"_s});
    EXPECT_EQ(values(u"C"_s), S{u"123.45"_s});
    EXPECT_EQ(values(u"D"_s), S{u"-1.5"_s});
    EXPECT_EQ(values(u"E"_s), S{u"2026-11-20"_s});
}

TEST_F(Spreadsheets, textsGoOnInTheRecordBehindAlsoInLettersOfAnotherWidth)
{
    const QByteArray counts = littleLong(3) + littleLong(3);
    const QByteArray narrow("\0", 1);
    const QByteArray wide("\1", 1);
    // "N"; "912345678", cut behind its fifth letter; "Ñandú", of which the rest is wide.
    const QByteArray strings =
        biffRecord(sharedStrings,
                   counts + littleShort(1) + narrow + "N" + littleShort(9) + narrow + "91234") +
        biffRecord(continued, narrow + "5678" + littleShort(5) + narrow + "\xD1") +
        biffRecord(continued, wide + QByteArray("a\0n\0", 4)) +
        biffRecord(continued, narrow + "d\xFA");
    const auto cell = [](quint16 row, quint32 index) {
        return biffRecord(sharedLabel,
                          littleShort(row) + littleShort(0) + littleShort(0) + littleLong(index));
    };
    openBytes(xlsOf({{"Hoja1", cell(0, 0) + cell(1, 1) + cell(2, 2) + cell(3, 3)}}, strings));
    EXPECT_EQ(values(u"N"_s), (S{u"912345678"_s, u"Ñandú"_s}));
}

TEST_F(Spreadsheets, textsWithLettersOfSeveralKindsAreRead)
{
    const QByteArray place = littleShort(1) + littleShort(0) + littleShort(0);
    const QByteArray runs("\1\0\2\0\3\0", 6);
    const QByteArray header =
        biffRecord(0x0204, littleShort(0) + littleShort(0) + littleShort(0) + littleShort(1) + "N");
    const QByteArray version5 = biffRecord(richString, place + littleShort(4) + "Jos\xE9" + runs);
    openBytes(xlsOf({{"Hoja1", header + version5}}, {}, 0x0500));
    EXPECT_EQ(values(u"N"_s), S{u"José"_s});

    const QByteArray version8 =
        biffRecord(richString, place + littleShort(4) + '\0' + "Jos\xE9" + runs);
    openBytes(xlsOf({{"Hoja1", biffLabel(0, 0, "N") + version8}}));
    EXPECT_EQ(values(u"N"_s), S{u"José"_s});
}

TEST_F(Spreadsheets, aTextThatNoFormulaWaitsForIsNoCells)
{
    const auto text = [](const QByteArray &letters) {
        return biffRecord(formulaText,
                          littleShort(static_cast<quint16>(letters.size())) + '\0' + letters);
    };
    // Row, column and format; a result of the kind text; flags.
    const QByteArray formulaOfText =
        biffRecord(formula, littleShort(1) + littleShort(0) + littleShort(0) + QByteArray(6, '\0') +
                                littleShort(0xFFFF) + QByteArray(8, '\0'));
    openBytes(xlsOf({{"Hoja1", text("before") + biffLabel(0, 0, "N") + formulaOfText +
                                   text("right") + text("behind")}}));
    EXPECT_EQ(connection.describe(u"Hoja1"_s).fields, S{u"N"_s});
    EXPECT_EQ(values(u"N"_s), S{u"right"_s});
}

TEST_F(Spreadsheets, aChartInASheetIsNeitherItsEndNorItsCells)
{
    const QByteArray chart = biffRecord(begin, littleShort(0x0600) + littleShort(0x0020)) +
                             biffLabel(1, 0, "wrong") + biffRecord(end, {});
    openBytes(xlsOf({{"Hoja1", biffLabel(0, 0, "N") + biffLabel(1, 0, "right") + chart +
                                   biffLabel(2, 0, "more")}}));
    EXPECT_EQ(values(u"N"_s), (S{u"right"_s, u"more"_s}));
}

TEST_F(Spreadsheets, daysAreCountedFrom1904WhereAnXlsSaysSo)
{
    const auto cell = [](quint16 row, double days) {
        return biffRecord(number,
                          littleShort(row) + littleShort(0) + littleShort(1) + littleDouble(days));
    };
    const QByteArray cells = biffLabel(0, 0, "N") + cell(1, 44884) + cell(2, 0) + cell(3, 44884.5);
    const QByteArray formats = formatOf(0) + formatOf(22);
    openBytes(xlsOf({{"Hoja1", cells}}, biffRecord(dateMode, littleShort(1)) + formats));
    EXPECT_EQ(values(u"N"_s), (S{u"2026-11-20"_s, u"1904-01-01"_s, u"2026-11-20 12:00:00"_s}));
    openBytes(xlsOf({{"Hoja1", cells}}, biffRecord(dateMode, littleShort(0)) + formats));
    EXPECT_EQ(values(u"N"_s).first(), u"2022-11-19"_s);
}

TEST_F(Spreadsheets, hiddenSheetsOfAnXlsAreAsTheOthers)
{
    openBytes(xlsOf(
        {{"Uno", biffSheetOf("1"), 1}, {"Dos", biffSheetOf("2"), 2}, {"Tres", biffSheetOf("3")}}));
    EXPECT_EQ(connection.sheets(), (S{u"Uno"_s, u"Dos"_s, u"Tres"_s}));
    EXPECT_EQ(values(u"Dos"_s, u"N"_s), S{u"2"_s});
}

} // namespace norvane
