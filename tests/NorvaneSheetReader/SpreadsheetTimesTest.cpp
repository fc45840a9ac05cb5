#include "NorvaneSheetReader/SheetFile.h"
#include "NorvaneSheetReader/SpreadsheetFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

using S = QStringList;

// The same dates, times and durations (tests/data/import/times.pl) in each kind of workbook.

class Times : public Spreadsheets, public ::testing::WithParamInterface<const char *>
{
protected:
    static S times()
    {
        return {u"36:00:00"_s, u"1112316:00:00"_s, u"00:00:00"_s,
                u"00:30:00"_s, u"1112310:00:00"_s, u"1112310:00:00"_s,
                u"24:00:00"_s, u"00:00:00"_s,      u"09:30:00"_s};
    }
    /// What the last cell, half a day below zero, comes out as. One of the programs writes it as a
    /// number.
    static QString belowZero()
    {
        return QByteArray(GetParam()).contains("gnumeric") ? u"-0.5"_s : u"-12:00:00"_s;
    }
};

TEST_P(Times, comeOutAlikeFromEachKindOfWorkbook)
{
    openReal(GetParam());
    const S behind{u"00:00:00"_s,
                   u"00:00:00"_s,
                   u"09:30:00"_s,
                   u"2026-11-20 12:00:00"_s,
                   u"2026-11-20 12:00:01"_s,
                   u"2026-11-20 06:00:00"_s,
                   u"2026-11-20 06:00:00"_s,
                   belowZero()};
    EXPECT_EQ(values(u"N"_s), times() + behind);
}

INSTANTIATE_TEST_SUITE_P(Spreadsheets, Times,
                         ::testing::Values("times.xls", "times.xlsx", "times-gnumeric.ods",
                                           "times-libreoffice.ods"));

class TimesFrom1904 : public Times
{};

TEST_P(TimesFrom1904, comeOutAlikeFromEachKindOfWorkbook)
{
    openReal(GetParam());
    const S behind{u"1904-01-01"_s,          u"1904-01-01"_s,
                   u"1904-01-01 09:30:00"_s, u"2030-11-21 12:00:00"_s,
                   u"2030-11-21 12:00:01"_s, u"2030-11-21 06:00:00"_s,
                   u"2030-11-21 06:00:00"_s, belowZero()};
    EXPECT_EQ(values(u"N"_s), times() + behind);
}

INSTANTIATE_TEST_SUITE_P(Spreadsheets, TimesFrom1904,
                         ::testing::Values("times-1904.xls", "times-1904.xlsx",
                                           "times-1904-gnumeric.ods",
                                           "times-1904-libreoffice.ods"));

TEST_F(Spreadsheets, durationsOfAnOdsAreReadInEachNotation)
{
    const QList<std::pair<QByteArray, QString>> cases{
        {"PT10H", u"10:00:00"_s},
        {"PT90S", u"00:01:30"_s},
        {"PT90M", u"01:30:00"_s},
        {"P1DT2H", u"26:00:00"_s},
        {"P2D", u"48:00:00"_s},
        {"-PT1H30M", u"-01:30:00"_s},
        {"-P1DT1S", u"-24:00:01"_s},
        {"PT1112316H00M00S", u"1112316:00:00"_s},
        {"PT01112316H00M00S", u"1112316:00:00"_s},
        {"PT9H29M59,999971S", u"09:30:00"_s},
        {"PT0S", u"00:00:00"_s},
        {"PT", u"(null)"_s},
        {"P", u"(null)"_s},
        {"P1DT", u"(null)"_s},
        {"P1Y", u"(null)"_s},
        {"PT1H1H", u"(null)"_s},
        {"10:00", u"(null)"_s},
    };
    QByteArray rows = "<t:table-row><t:table-cell o:value-type=\"string\"><x:p>N</x:p>"
                      "</t:table-cell></t:table-row>";
    S expected;
    for (const auto &[written, text] : cases) {
        rows += "<t:table-row><t:table-cell o:value-type=\"time\" o:time-value=\"" + written +
                "\"/><t:table-cell o:value-type=\"float\" o:value=\"1\"/></t:table-row>";
        expected.append(text);
    }
    openBytes(odsOf(rows));
    EXPECT_EQ(values(u"N"_s), expected);
}

TEST_F(Spreadsheets, aCellOfAnOdsWithTextAndWithoutATypeIsItsText)
{
    openBytes(odsOf("<t:table-row><t:table-cell><x:p>N</x:p></t:table-cell></t:table-row>"
                    "<t:table-row><t:table-cell><x:p>912345678</x:p></t:table-cell></t:table-row>"
                    "<t:table-row><t:table-cell/></t:table-row>"
                    "<t:table-row><t:table-cell t:formula=\"of:=1\"/></t:table-row>"
                    "<t:table-row><t:table-cell><x:p>a</x:p><x:p>b</x:p></t:table-cell>"
                    "</t:table-row>"));
    EXPECT_EQ(values(u"N"_s), (S{u"912345678"_s, u"(null)"_s, u"(null)"_s, u"a\nb"_s}));
}

} // namespace norvane
