#include "common/Csv.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

TEST(Csv, aFieldIsQuotedWhereItMustBe)
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
        EXPECT_EQ(Csv::field(QString::fromUtf16(one.text)), QString::fromUtf16(one.field));
}

TEST(Csv, whatASpreadsheetWouldReckonIsText)
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
        {u"\t=1", u"\"'\t'=1\""},
        {u"\rx", u"\"'\rx\""},
        {u"\uFF1D1", u"'\uFF1D1"},
        {u"=HYPERLINK(\"http://x\",\"y\")", u"\"'=HYPERLINK(\"\"http://x\"\",\"\"y\"\")\""},
        {u"+34600111222", u"+34600111222"},
        {u"+", u"'+"},
        {u"+34 600", u"'+34 600"},
        {u"1=1", u"1=1"},
    };
    for (const auto &one : cases)
        EXPECT_EQ(Csv::field(QString::fromUtf16(one.text)), QString::fromUtf16(one.field));
}

TEST(Csv, whatFollowsAnotherEndOfACellIsTextToo)
{
    const struct
    {
        const char16_t *text;
        const char16_t *field;
    } cases[] = {
        {u"hola;=HYPERLINK(\"x\");", u"\"hola;'=HYPERLINK(\"\"x\"\");\""},
        {u"a,+1-1", u"\"a,'+1-1\""},
        {u"a\t-1", u"\"a\t'-1\""},
        {u"a\r\n@b", u"\"a\r\n'@b\""},
        {u"a\n=1", u"\"a\n'=1\""},
        {u"a\r=1", u"\"a\r'=1\""},
        {u"a;  =1", u"\"a;'  =1\""},
        {u"a;\"=1;", u"\"a;'\"\"=1;\""},
        {u"a;\uFF1D1", u"\"a;'\uFF1D1\""},
        {u"=1;=2", u"\"'=1;'=2\""},
        {u"a;;=1", u"\"a;;'=1\""},
        {u"a;+34600111222;b", u"\"a;+34600111222;b\""},
        {u"a; b=1, c-d", u"\"a; b=1, c-d\""},
        {u";", u"\";\""},
    };
    for (const auto &one : cases)
        EXPECT_EQ(Csv::field(QString::fromUtf16(one.text)), QString::fromUtf16(one.field));
}

} // namespace

} // namespace norvane
