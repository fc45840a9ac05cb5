#include "NorvaneSheetReader/CellText.h"

#include <gtest/gtest.h>

#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

TEST(CellText, numbersHaveUpTo15DigitsAndNoExponentBelow1E15)
{
    const QList<std::pair<double, const char *>> cases{
        {912345678, "912345678"},
        {0, "0"},
        {-0.0, "0"},
        {-2.5, "-2.5"},
        {0.1, "0.1"},
        {0.1 + 0.2, "0.3"},
        {1.0 / 3, "0.333333333333333"},
        {351912345678901, "351912345678901"},
        {999999999999999, "999999999999999"},
        {1e15, "1E+15"},
        {1234567890123456, "1.23456789012346E+15"},
        {1e14, "100000000000000"},
        {0.00001, "0.00001"},
        {-1.5e-7, "-0.00000015"},
        {1e300, "1E+300"},
    };
    for (const auto &[number, text] : cases)
        EXPECT_EQ(CellText::ofNumber(number), QLatin1String(text));
    EXPECT_TRUE(CellText::ofNumber(std::numeric_limits<double>::infinity()).isNull());
    EXPECT_TRUE(CellText::ofNumber(std::numeric_limits<double>::quiet_NaN()).isNull());
}

TEST(CellText, aBooleanIsAWord)
{
    EXPECT_EQ(CellText::ofBoolean(true), u"True"_s);
    EXPECT_EQ(CellText::ofBoolean(false), u"False"_s);
}

TEST(CellText, aDayHasItsTimeBehindItUnlessThatIsMidnight)
{
    const QList<std::pair<const char *, const char *>> cases{
        {"2026-03-05", "2026-03-05"},
        {"2026-03-05T00:00:00", "2026-03-05"},
        {"2026-03-05T00:00:00.4999999", "2026-03-05"},
        {"2026-03-05T00:00:00.5", "2026-03-05 00:00:01"},
        {"2026-03-05T00:00:01,49", "2026-03-05 00:00:01"},
        {"2026-03-05T23:59:59.9999999", "2026-03-06"},
        {"2026-03-05T12:30:15Z", "2026-03-05 12:30:15"},
        {"2026-03-05T12:30Z", "2026-03-05 12:30:00"},
        {"2026-03-05T12:30+01:00", "2026-03-05 12:30:00"},
        {"2026-03-05T12:30-05:00", "2026-03-05 12:30:00"},
        {"2026-03-29T02:30:00", "2026-03-29 02:30:00"}, // not an hour of every local time
        {"2026-03-05T24:61:00", "2026-03-05"},
        {"1899-12-30", "00:00:00"},
        {"1899-12-31T09:29:59.9999999", "09:30:00"},
        {"1899-12-29", "1899-12-29"},
        {"1904-01-01", "1904-01-01"},
        {"2026-02-29T12:00:00", ""},
        {"12:00:00", ""},
        {"", ""},
    };
    for (const auto &[moment, text] : cases)
        EXPECT_EQ(CellText::ofMoment(QLatin1String(moment)), QLatin1String(text)) << moment;
}

TEST(CellText, daysAreMomentsOfEitherCalendar)
{
    const QList<std::tuple<double, bool, const char *>> cases{
        {46346, false, "2026-11-20"},
        {46346.5, false, "2026-11-20 12:00:00"},
        {44884, true, "2026-11-20"},
        {0.395833333333, false, "09:30:00"},
        {0.9999999, false, "1900-01-01"},
        {0, false, "00:00:00"},
        {0, true, "1904-01-01"},
        {0.5, true, "1904-01-01 12:00:00"},
        {1, true, "1904-01-02"},
        {1, false, "1900-01-01"},
        {59, false, "1900-02-28"},
        {60, false, "1900-02-28"}, // the day that there never was
        {61, false, "1900-03-01"},
        {2958465, false, "9999-12-31"},
        {2958465.999, false, "9999-12-31 23:58:34"},
        {2958465.9999999, false, "2958465.9999999"},
        {2957003, true, "9999-12-31"},
        {2957004, true, "2957004"},
        {2958466, false, "2958466"},
        {-1, false, "-1"},
    };
    for (const auto &[days, from1904, text] : cases)
        EXPECT_EQ(CellText::ofDays(days, CellText::Kind::Date, from1904), QLatin1String(text))
            << days;
}

TEST(CellText, aTimeCountsItsHoursOnBeyondADay)
{
    const QList<std::pair<double, const char *>> cases{
        {0, "00:00:00"},           {0.5, "12:00:00"},          {0.9999999, "24:00:00"},
        {1.5, "36:00:00"},         {46346.5, "1112316:00:00"}, {-0.5, "-12:00:00"},
        {-0.000001, "00:00:00"},   {1.0 / 86400, "00:00:01"},  {0.4 / 86400, "00:00:00"},
        {0.5 / 86400, "00:00:01"}, {1e10, "10000000000"},
    };
    for (const auto &[days, text] : cases) {
        for (const bool from1904 : {false, true})
            EXPECT_EQ(CellText::ofDays(days, CellText::Kind::Time, from1904), QLatin1String(text));
    }
    EXPECT_EQ(CellText::ofDays(1.5, CellText::Kind::Number, false), u"1.5"_s);
}

TEST(CellText, formatsOfDatesTimesAndNumbersAreToldApart)
{
    using enum CellText::Kind;
    const QList<std::tuple<int, const char *, CellText::Kind>> cases{
        {0, "", Number},
        {13, "", Number},
        {14, "", Date},
        {17, "", Date},
        {18, "", Time},
        {21, "", Time},
        {22, "", Date},
        {23, "", Number},
        {26, "", Number},
        {27, "", Date},
        {31, "", Date},
        {32, "", Time},
        {33, "", Time},
        {34, "", Date},
        {36, "", Date},
        {37, "", Number},
        {44, "", Number},
        {45, "", Time},
        {47, "", Time},
        {48, "", Number},
        {49, "", Number},
        {50, "", Date},
        {58, "", Date},
        {59, "", Number},
        {164, "dd/mm/yyyy", Date},
        {164, "dd/mm/yyyy hh:mm", Date},
        {164, "d mmm", Date},
        {164, "mmm hh:mm", Date},
        {164, "mm", Date},
        {164, "mm:ss", Time},
        {164, "h:mm AM/PM", Time},
        {164, "General", Number},
        {164, "#,##0.00", Number},
        {164, "[Red]0", Number},
        {164, "[h]:mm", Time},
        {164, "[mm]:ss", Time},
        {164, "\"day\" 0", Number},
        {164, "0\\d", Number},
        {164, "0;d", Number},
        {164, "HH:MM", Time},
        {164, "[$-40A]d mmm", Date},
        {164, "[$-F400]h:mm:ss", Time},
        {164, "[hh]", Time},
        {164, "[M]", Time},
        {164, "[S]", Time},
        {164, "[h", Number},
        {164, "0[", Number},
        {164, "[hijri]0", Number},
        {164, "0_d", Number},
        {164, "*d0", Number},
        {164, "0_dd", Date},
        {164, "\"d\"\"s\"0", Number},
        {164, "\"0\"d", Date},
        {164, "[Red]d", Date},
        {164, "[Red]\"]\"d", Date},
        {164, "y", Date},
        {164, "s", Time},
        {164, "Generald", Date},
        {164, "GENERAL", Number},
    };
    for (const auto &[identifier, code, kind] : cases)
        EXPECT_EQ(CellText::kindOf(identifier, QString::fromLatin1(code)), kind)
            << identifier << code;
}

} // namespace norvane
