#include "TovekSMService/admin/ReportLines.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

using ReportLines::Format;

namespace {

TEST(ReportLines, aMomentIsADayOrADayWithATime)
{
    for (const char *const right : {"2026-02-28", "2026-02-28T23:59:59"})
        EXPECT_EQ(ReportLines::moment(QLatin1String(right)), QLatin1String(right));
    for (const char *const wrong :
         {"", "yesterday", "2026-02-30", "2026-2-3", "2026-02-28T24:00:00", "2026-02-28 10:00:00",
          "2026-02-28T10:00", "2026-02-28x", "28.02.2026"})
        EXPECT_FALSE(ReportLines::moment(QLatin1String(wrong))) << wrong;
}

TEST(ReportLines, thereAreTwoFormats)
{
    EXPECT_EQ(ReportLines::formatNamed(u"text"_s), Format::Text);
    EXPECT_EQ(ReportLines::formatNamed(u"csv"_s), Format::Csv);
    EXPECT_FALSE(ReportLines::formatNamed(u"CSV"_s));
    EXPECT_FALSE(ReportLines::formatNamed(QString()));
}

TEST(ReportLines, whatWouldPartALineOfTextIsABlank)
{
    EXPECT_EQ(ReportLines::line({{u"a\tb"_s}, {u"c\r\nd"_s}, {u"e\u2028f\x1B[2J"_s}}, Format::Text),
              u"a b\tc  d\te f [2J\n"_s);
    EXPECT_EQ(ReportLines::line({{u"=1+1"_s}, {QString()}}, Format::Text), u"=1+1\t\n"_s);
}

TEST(ReportLines, aRecordOfCsvKeepsWhatItsFieldsHold)
{
    EXPECT_EQ(ReportLines::line({{u"a,b"_s}, {QString()}, {u"c\nd"_s}}, Format::Csv),
              u"\"a,b\",,\"c\nd\"\r\n"_s);
}

TEST(ReportLines, aNumberOfOurOwnIsNoFormula)
{
    EXPECT_EQ(ReportLines::line({{u"-39"_s, true}, {u"-39"_s}}, Format::Csv), u"-39,'-39\r\n"_s);
}

} // namespace

} // namespace norvane
