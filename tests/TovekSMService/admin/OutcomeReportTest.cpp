#include "TovekSMService/admin/OutcomeReport.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

using OutcomeReport::Format;

namespace {

OutcomeRow row()
{
    return {u"2026-05-01T12:00:03"_s,
            u"2026-05-01T12:00:00"_s,
            u"+34600111222"_s,
            u"Hola"_s,
            1,
            u"17"_s};
}

TEST(OutcomeReport, aCsvFieldIsQuotedWhereItMustBe)
{
    const struct
    {
        const char16_t *text;
        const char16_t *field;
    } cases[] = {
        {u"", u""},
        {u"plain ñ€", u"plain ñ€"},
        {u"a,b", u"\"a,b\""},
        {u"a;b", u"\"a;b\""},
        {u"a\tb", u"\"a\tb\""},
        {u"say \"x\"", u"\"say \"\"x\"\"\""},
        {u"two\r\nlines", u"\"two\r\nlines\""},
        {u"\"", u"\"\"\"\""},
    };
    for (const auto &one : cases)
        EXPECT_EQ(OutcomeReport::csvField(QString::fromUtf16(one.text)),
                  QString::fromUtf16(one.field));
}

TEST(OutcomeReport, whatASpreadsheetWouldReckonIsText)
{
    const struct
    {
        const char16_t *text;
        const char16_t *field;
    } cases[] = {
        {u"=1+1", u"'=1+1"},
        {u"+1-1", u"'+1-1"},
        {u"-39", u"'-39"},
        {u"@SUM(A1)", u"'@SUM(A1)"},
        {u"  =1", u"'  =1"},
        {u"\t=1", u"\"'\t=1\""},
        {u"\rx", u"\"'\rx\""},
        {u"\uFF1D1", u"'\uFF1D1"},
        {u"=HYPERLINK(\"http://x\",\"y\")", u"\"'=HYPERLINK(\"\"http://x\"\",\"\"y\"\")\""},
        {u"+34600111222", u"+34600111222"},
        {u"+", u"'+"},
        {u"+34 600", u"'+34 600"},
        {u"1=1", u"1=1"},
    };
    for (const auto &one : cases)
        EXPECT_EQ(OutcomeReport::csvField(QString::fromUtf16(one.text)),
                  QString::fromUtf16(one.field));
}

TEST(OutcomeReport, aLineHasTheSameFieldsInBothFormats)
{
    EXPECT_EQ(OutcomeReport::line(row(), Format::Csv),
              u"2026-05-01T12:00:03,2026-05-01T12:00:00,+34600111222,sent,1,17,"
              "Hola\r\n"_s);
    EXPECT_EQ(OutcomeReport::line(row(), Format::Text),
              u"2026-05-01T12:00:03\t2026-05-01T12:00:00\t+34600111222\tsent\t1\t17\t"
              "Hola\n"_s);
}

TEST(OutcomeReport, aFailureHasItsCodeAsANumberAndNoReference)
{
    OutcomeRow failed = row();
    failed.code = -39;
    failed.reference.clear();
    failed.text = u"a\r\n\"b\"\u2028c"_s;
    EXPECT_EQ(OutcomeReport::line(failed, Format::Csv),
              u"2026-05-01T12:00:03,2026-05-01T12:00:00,+34600111222,failed,-39,,"
              "\"a\r\n\"\"b\"\"\u2028c\"\r\n"_s);
    EXPECT_EQ(OutcomeReport::line(failed, Format::Text),
              u"2026-05-01T12:00:03\t2026-05-01T12:00:00\t+34600111222\tfailed\t-39\t"
              "\ta  \"b\" c\n"_s);
}

TEST(OutcomeReport, aMomentIsADayOrADayWithATime)
{
    for (const char *const right : {"2026-02-28", "2026-02-28T23:59:59"})
        EXPECT_EQ(OutcomeReport::moment(QLatin1String(right)), QLatin1String(right));
    for (const char *const wrong :
         {"", "yesterday", "2026-02-30", "2026-2-3", "2026-02-28T24:00:00", "2026-02-28 10:00:00",
          "2026-02-28T10:00", "2026-02-28x", "28.02.2026"})
        EXPECT_FALSE(OutcomeReport::moment(QLatin1String(wrong))) << wrong;
}

TEST(OutcomeReport, thereAreTwoFormats)
{
    EXPECT_EQ(OutcomeReport::formatNamed(u"text"_s), Format::Text);
    EXPECT_EQ(OutcomeReport::formatNamed(u"csv"_s), Format::Csv);
    EXPECT_FALSE(OutcomeReport::formatNamed(u"CSV"_s));
    EXPECT_FALSE(OutcomeReport::formatNamed(QString()));
}

} // namespace

} // namespace norvane
