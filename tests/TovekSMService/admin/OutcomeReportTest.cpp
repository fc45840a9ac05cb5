#include "TovekSMService/admin/OutcomeReport.h"

#include <gtest/gtest.h>

using OutcomeReport::Format;

namespace {

OutcomeRow row()
{
    return {QStringLiteral("2026-05-01T12:00:03"),
            QStringLiteral("2026-05-01T12:00:00"),
            QStringLiteral("+34600111222"),
            QStringLiteral("Hola"),
            1,
            QStringLiteral("17")};
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
              QStringLiteral("2026-05-01T12:00:03,2026-05-01T12:00:00,+34600111222,sent,1,17,"
                             "Hola\r\n"));
    EXPECT_EQ(OutcomeReport::line(row(), Format::Text),
              QStringLiteral("2026-05-01T12:00:03\t2026-05-01T12:00:00\t+34600111222\tsent\t1\t17\t"
                             "Hola\n"));
}

TEST(OutcomeReport, aFailureHasItsCodeAsANumberAndNoReference)
{
    OutcomeRow failed = row();
    failed.code = -39;
    failed.reference.clear();
    failed.text = QStringLiteral("a\r\n\"b\"\u2028c");
    EXPECT_EQ(OutcomeReport::line(failed, Format::Csv),
              QStringLiteral("2026-05-01T12:00:03,2026-05-01T12:00:00,+34600111222,failed,-39,,"
                             "\"a\r\n\"\"b\"\"\u2028c\"\r\n"));
    EXPECT_EQ(OutcomeReport::line(failed, Format::Text),
              QStringLiteral("2026-05-01T12:00:03\t2026-05-01T12:00:00\t+34600111222\tfailed\t-39\t"
                             "\ta  \"b\" c\n"));
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
    EXPECT_EQ(OutcomeReport::formatNamed(QStringLiteral("text")), Format::Text);
    EXPECT_EQ(OutcomeReport::formatNamed(QStringLiteral("csv")), Format::Csv);
    EXPECT_FALSE(OutcomeReport::formatNamed(QStringLiteral("CSV")));
    EXPECT_FALSE(OutcomeReport::formatNamed(QString()));
}

} // namespace
