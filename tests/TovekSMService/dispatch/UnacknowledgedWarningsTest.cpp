#include "TovekSMService/dispatch/UnacknowledgedWarnings.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Warning = UnacknowledgedWarnings::Warning;

Warning portGone(int place)
{
    return {-2, u"/dev/tty%1"_s.arg(place)};
}

TEST(UnacknowledgedWarnings, eachHasANumberOfItsOwnThatNoOutcomeHas)
{
    UnacknowledgedWarnings warnings;
    const qint64 first = warnings.add(portGone(1));
    const qint64 second = warnings.add(portGone(2));
    EXPECT_LT(first, 0);
    EXPECT_LT(second, 0);
    EXPECT_NE(first, second);
    EXPECT_EQ(warnings.remove(first), portGone(1));
    EXPECT_EQ(warnings.remove(first), std::nullopt);
    ASSERT_EQ(warnings.entries().size(), 1);
    EXPECT_EQ(warnings.entries().constFirst().warning, portGone(2));
    EXPECT_EQ(warnings.entries().constFirst().report, second);
    EXPECT_NE(warnings.add(portGone(1)), first) << "no number comes twice";
}

TEST(UnacknowledgedWarnings, theSameOneIsKeptOnce)
{
    UnacknowledgedWarnings warnings;
    EXPECT_EQ(warnings.add(portGone(1)), warnings.add(portGone(1)));
    EXPECT_EQ(warnings.entries().size(), 1);
}

TEST(UnacknowledgedWarnings, theyAreNotKeptWithoutEnd)
{
    UnacknowledgedWarnings warnings;
    for (int place = 0; place < UnacknowledgedWarnings::maxWarnings; ++place)
        EXPECT_NE(warnings.add(portGone(place)), 0);
    EXPECT_EQ(warnings.add(portGone(1000)), 0);
    EXPECT_NE(warnings.add(portGone(0)), 0) << "that one has its place";
    EXPECT_EQ(warnings.entries().size(), UnacknowledgedWarnings::maxWarnings);
    EXPECT_EQ(warnings.remove(0), std::nullopt);
}

} // namespace

} // namespace norvane
