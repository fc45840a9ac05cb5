#include "NorvaneSMS/app/mode/ModeWindow.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

constexpr QSize FullHd(1920 * 15, 1080 * 15);
constexpr QSizeF Usual(15, 15);

TEST(ModeWindowTest, serverIsWideAndClientIsNarrow)
{
    EXPECT_EQ(ModeWindow::outerSize(true), QSize(15135, 7785));
    EXPECT_EQ(ModeWindow::outerSize(false), QSize(8610, 7785));
}

TEST(ModeWindowTest, serverGrowsUpToTheScreen)
{
    EXPECT_EQ(ModeWindow::limits(true, FullHd, Usual), (WindowLimits{1009, 519, 1920, 1080}));
}

TEST(ModeWindowTest, clientHasOneSize)
{
    EXPECT_EQ(ModeWindow::limits(false, FullHd, Usual), (WindowLimits{574, 519, 574, 519}));
    EXPECT_EQ(ModeWindow::limits(false, QSize(100, 100), Usual),
              (WindowLimits{574, 519, 574, 519}));
}

TEST(ModeWindowTest, remainderOfATwipIsCutOff)
{
    // 15135 / 12 = 1261.25, 7785 / 12 = 648.75, 8610 / 12 = 717.5
    const QSizeF fine(12, 12);
    EXPECT_EQ(ModeWindow::limits(true, QSize(24011, 12011), fine),
              (WindowLimits{1261, 648, 2000, 1000}));
    EXPECT_EQ(ModeWindow::limits(false, FullHd, fine), (WindowLimits{717, 648, 717, 648}));
}

TEST(ModeWindowTest, maximumHeightGoesByTheHorizontalMeasure)
{
    const QSizeF flat(10, 15);
    const WindowLimits server = ModeWindow::limits(true, QSize(20000, 15000), flat);
    EXPECT_EQ(server, (WindowLimits{1513, 519, 2000, 1500}));
    const WindowLimits client = ModeWindow::limits(false, QSize(20000, 15000), flat);
    EXPECT_EQ(client, (WindowLimits{861, 519, 861, 778}));
}

} // namespace

} // namespace norvane
