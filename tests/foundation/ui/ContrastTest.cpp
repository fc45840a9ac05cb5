#include "foundation/ui/Contrast.h"
#include "foundation/ui/Look.h"

#include <gtest/gtest.h>

#include <cmath>

namespace norvane {

namespace {

TEST(ContrastTest, ratioIsThatOfTheLuminances)
{
    EXPECT_DOUBLE_EQ(Contrast::ratio(Qt::black, Qt::white), 21);
    EXPECT_DOUBLE_EQ(Contrast::ratio(Qt::white, Qt::black), 21);
    EXPECT_DOUBLE_EQ(Contrast::ratio(QColor(7, 8, 9), QColor(7, 8, 9)), 1);
    // Worked by hand: pure red has the luminance 0.2126.
    EXPECT_NEAR(Contrast::ratio(Qt::red, Qt::white), 1.05 / 0.2626, 0.001);
    EXPECT_NEAR(Contrast::ratio(QColor(0, 255, 0), Qt::black), 0.7652 / 0.05, 0.001);
    // (119 / 255 + 0.055) / 1.055 to the power of 2.4 is 0.1845.
    EXPECT_NEAR(Contrast::ratio(QColor(0x77, 0x77, 0x77), Qt::white), 1.05 / 0.2345, 0.01);
}

TEST(ContrastTest, fadedTextGoesNoFurtherThanItCanBeRead)
{
    for (const QColor ground :
         {QColor(Qt::white), QColor(0xEF, 0xEF, 0xEF), QColor(0x31, 0x36, 0x3B)}) {
        const QColor text = Contrast::ratio(ground, Qt::black) > 10 ? Qt::black : Qt::white;
        const QColor shown = Contrast::faded(text, ground);
        EXPECT_GE(Contrast::ratio(shown, ground), Contrast::least);
        EXPECT_LT(Contrast::ratio(shown, ground), 6);
    }
}

TEST(ContrastTest, textThatCanHardlyBeReadIsNotFaded)
{
    EXPECT_EQ(Contrast::faded(QColor(0x80, 0x80, 0x80), Qt::white), QColor(0x80, 0x80, 0x80));
}

TEST(ContrastTest, colourThatIsFarEnoughStaysAndAnotherMovesAway)
{
    EXPECT_EQ(Contrast::apart(QColor(0x20, 0x40, 0x80), Qt::white), QColor(0x20, 0x40, 0x80));
    const QColor moved = Contrast::apart(QColor(0x3D, 0xAE, 0xE9), Qt::white);
    EXPECT_GE(Contrast::ratio(Qt::white, moved), Contrast::least);
    EXPECT_GT(moved.blue(), moved.red()); // still of its hue
    const QColor bright = Contrast::apart(QColor(0x40, 0x40, 0x40), Qt::black);
    EXPECT_GE(Contrast::ratio(Qt::black, bright), Contrast::least);
    const QColor outline = Contrast::apart(QColor(0x20, 0x60, 0x80), QColor(0x31, 0x36, 0x3B), 3);
    EXPECT_GE(Contrast::ratio(outline, QColor(0x31, 0x36, 0x3B)), 3);
    EXPECT_LT(Contrast::ratio(outline, QColor(0x31, 0x36, 0x3B)), 3.5);
}

TEST(ContrastTest, darkDesktopIsToldByItsColours)
{
    QPalette bright(QColor(0xEF, 0xEF, 0xEF));
    EXPECT_FALSE(Contrast::isDark(bright));
    EXPECT_EQ(Contrast::plainGround(bright), QColor(Qt::white));
    QPalette dark(QColor(0x31, 0x36, 0x3B));
    EXPECT_TRUE(Contrast::isDark(dark));
    EXPECT_EQ(Contrast::plainGround(dark), QColor(Qt::black));
}

TEST(ContrastTest, readableColoursKeepWhatCanBeReadAlready)
{
    QPalette colours(QColor(0xEF, 0xEF, 0xEF));
    colours.setColor(QPalette::Highlight, QColor(0x10, 0x20, 0x60));
    colours.setColor(QPalette::HighlightedText, Qt::white);
    const QPalette made = readable(colours);
    for (const QPalette::ColorRole role : {QPalette::Window, QPalette::WindowText, QPalette::Base,
                                           QPalette::Text, QPalette::Highlight})
        EXPECT_EQ(made.color(QPalette::Active, role), colours.color(QPalette::Active, role))
            << role;
    EXPECT_GE(Contrast::ratio(made.color(QPalette::Disabled, QPalette::WindowText),
                              made.color(QPalette::Disabled, QPalette::Window)),
              Contrast::least);
}

} // namespace

} // namespace norvane
