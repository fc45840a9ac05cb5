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

TEST(CellText, serialNumbersAreMomentsOfEitherCalendar)
{
    const QList<std::tuple<double, bool, const char *>> cases{
        {46346, false, "2026-11-20"},
        {46346.5, false, "2026-11-20 12:00:00"},
        {44884, true, "2026-11-20"},
        {0.395833333333, false, "09:30:00"},
        {0.9999999, false, "1900-01-01"},
        {1, false, "1900-01-01"},
        {59, false, "1900-02-28"},
        {61, false, "1900-03-01"},
        {2958465, false, "9999-12-31"},
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
        {14, "", true},
        {22, "", true},
        {23, "", false},
        {47, "", true},
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
    };
    for (const auto &[identifier, code, isDate] : cases)
        EXPECT_EQ(CellText::isDateFormat(identifier, QString::fromLatin1(code)), isDate) << code;
}
