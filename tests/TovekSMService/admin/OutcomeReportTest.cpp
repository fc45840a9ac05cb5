#include "TovekSMService/admin/OutcomeReport.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

using ReportLines::Format;

namespace {

OutcomeRow row()
{
    return {7,
            u"2026-05-01T12:00:03"_s,
            u"2026-05-01T12:00:00"_s,
            u"+34600111222"_s,
            u"Hola"_s,
            1,
            u"17"_s,
            DeliveryState::Delivered,
            u"2026-05-01T12:00:09"_s};
}

TEST(OutcomeReport, aLineHasTheSameFieldsInBothFormats)
{
    EXPECT_EQ(OutcomeReport::line(row(), Format::Csv),
              u"2026-05-01T12:00:03,2026-05-01T12:00:00,+34600111222,sent,1,17,"
              "Hola,delivered,2026-05-01T12:00:09\r\n"_s);
    EXPECT_EQ(OutcomeReport::line(row(), Format::Text),
              u"2026-05-01T12:00:03\t2026-05-01T12:00:00\t+34600111222\tsent\t1\t17\t"
              "Hola\tdelivered\t2026-05-01T12:00:09\n"_s);
}

TEST(OutcomeReport, aFailureHasItsCodeAsANumberAndNoReference)
{
    OutcomeRow failed = row();
    failed.code = -39;
    failed.reference.clear();
    failed.delivery = DeliveryState::None;
    failed.deliveredAt.clear();
    failed.text = u"a\r\n\"b\"\u2028c"_s;
    EXPECT_EQ(OutcomeReport::line(failed, Format::Csv),
              u"2026-05-01T12:00:03,2026-05-01T12:00:00,+34600111222,failed,-39,,"
              "\"a\r\n\"\"b\"\"\u2028c\",,\r\n"_s);
    EXPECT_EQ(OutcomeReport::line(failed, Format::Text),
              u"2026-05-01T12:00:03\t2026-05-01T12:00:00\t+34600111222\tfailed\t-39\t"
              "\ta  \"b\" c\t\t\n"_s);
}

} // namespace

} // namespace norvane
