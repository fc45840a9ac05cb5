#include "foundation/ui/Twips.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

TEST(TwipsTest, inchHasFourteenHundredAndForty)
{
    EXPECT_EQ(Twips::perPixel(96), 15);
    EXPECT_EQ(Twips::perPixel(120), 12);
    EXPECT_EQ(Twips::perPixel(144), 10);
    EXPECT_EQ(Twips::perPixel(192), 7.5F);
    EXPECT_EQ(Twips::perPixel(72), 20);
}

TEST(TwipsTest, placesBecomePixels)
{
    EXPECT_EQ(Twips::toPixels({150, 210, 1155, 840}, {15, 15}), QRect(10, 14, 77, 56));
    EXPECT_EQ(Twips::toPixels({0, 0, 15015, 7275}, {15, 15}), QRect(0, 0, 1001, 485));
    EXPECT_EQ(Twips::toPixels({-15, -30, 30, 60}, {15, 15}), QRect(-1, -2, 2, 4));
    EXPECT_EQ(Twips::toPixels({}, {15, 15}), QRect(0, 0, 0, 0));
}

TEST(TwipsTest, eachDirectionHasItsOwnMeasure)
{
    EXPECT_EQ(Twips::toPixels({300, 300, 600, 600}, {10, 15}), QRect(30, 20, 60, 40));
}

TEST(TwipsTest, edgesAreRoundedByThemselves)
{
    // 20 twips are 1.33 pixels: the edges at 10 and 30 stand at 1 and 2.
    EXPECT_EQ(Twips::toPixels({10, 10, 20, 20}, {15, 15}), QRect(1, 1, 1, 1));
    EXPECT_EQ(Twips::toPixels({0, 0, 20, 20}, {15, 15}), QRect(0, 0, 1, 1));
    EXPECT_EQ(Twips::toPixels({20, 20, 20, 20}, {15, 15}), QRect(1, 1, 2, 2));
}

TEST(TwipsTest, controlsThatTouchInTwipsTouchInPixels)
{
    for (const double scale : {15.0, 12.0, 10.0, 7.5, 13.0909}) {
        for (float left = 4000; left < 4040; ++left) {
            const QRect first = Twips::toPixels({left, 0, 630, 510}, {scale, scale});
            const QRect second = Twips::toPixels({left + 630, 0, 630, 510}, {scale, scale});
            EXPECT_EQ(first.x() + first.width(), second.x()) << scale << ' ' << left;
        }
    }
}

} // namespace

} // namespace norvane
