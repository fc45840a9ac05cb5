#include "import/sheets/CellText.h"

#include <gtest/gtest.h>

#include <limits>

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
    EXPECT_EQ(CellText::ofBoolean(true), u"True"_qs);
    EXPECT_EQ(CellText::ofBoolean(false), u"False"_qs);
}

TEST(CellText, aDayHasItsTimeBehindItUnlessThatIsMidnight)
{
    EXPECT_EQ(CellText::ofDateTime(2026, 3, 5, 0, 0, 0), u"2026-03-05"_qs);
    EXPECT_EQ(CellText::ofDateTime(2026, 3, 5, 0, 0, 0.9), u"2026-03-05"_qs);
    EXPECT_EQ(CellText::ofDateTime(2026, 3, 5, 0, 0, 1), u"2026-03-05 00:00:01"_qs);
    EXPECT_EQ(CellText::ofDateTime(2026, 3, 5, 23, 59, 59.9), u"2026-03-05 23:59:59"_qs);
    EXPECT_EQ(CellText::ofDateTime(2026, 3, 5, 24, 0, 0), u"2026-03-05"_qs) << "no time";
    EXPECT_EQ(CellText::ofDateTime(2026, 2, 29, 12, 0, 0), QString()) << "no day";
}

TEST(CellText, serialNumbersAreMomentsOfEitherCalendar)
{
    const QList<std::tuple<double, bool, const char *>> cases{
        {46346, false, "2026-11-20"},
        {46346.5, false, "2026-11-20 12:00:00"},
        {44884, true, "2026-11-20"},
        {0.395833333333, false, "09:30:00"},
        {0.9999999, false, "1900-01-01"},
        {0, false, "00:00:00"},
        {0.5, true, "12:00:00"},
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
        EXPECT_EQ(CellText::ofSerial(days, from1904), QLatin1String(text)) << days;
}

TEST(CellText, aDatesFormatIsToldFromANumbers)
{
    const QList<std::tuple<int, const char *, bool>> cases{
        {0, "", false},
        {13, "", false},
        {14, "", true},
        {22, "", true},
        {23, "", false},
        {26, "", false},
        {27, "", true},
        {36, "", true},
        {37, "", false},
        {44, "", false},
        {45, "", true},
        {47, "", true},
        {48, "", false},
        {49, "", false},
        {50, "", true},
        {58, "", true},
        {59, "", false},
        {164, "dd/mm/yyyy", true},
        {164, "General", false},
        {164, "#,##0.00", false},
        {164, "[Red]0", false},
        {164, "[h]:mm", true},
        {164, "\"day\" 0", false},
        {164, "0\\d", false},
        {164, "0;d", false},
        {164, "HH:MM", true},
        {164, "[$-40A]d mmm", true},
        {164, "[hh]", true},
        {164, "[M]", true},
        {164, "[S]", true},
        {164, "[h", false},
        {164, "0[", false},
        {164, "[hijri]0", false},
        {164, "0_d", false},
        {164, "*d0", false},
        {164, "0_dd", true},
        {164, "\"d\"\"s\"0", false},
        {164, "\"0\"d", true},
        {164, "[Red]d", true},
        {164, "[Red]\"]\"d", true},
        {164, "y", true},
        {164, "s", true},
        {164, "Generald", true},
        {164, "GENERAL", false},
    };
    for (const auto &[identifier, code, isDate] : cases)
        EXPECT_EQ(CellText::isDateFormat(identifier, QString::fromLatin1(code)), isDate) << code;
}
