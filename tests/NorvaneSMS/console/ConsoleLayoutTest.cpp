#include "NorvaneSMS/console/ConsoleLayout.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

using Twips::Rect;

constexpr float designWidth = 15015;
constexpr float designHeight = 7275;

ConsoleLayout resized(float width, float height)
{
    ConsoleLayout layout;
    resizeConsole(layout, width, height);
    return layout;
}

/// The layout at the window's design size.
ConsoleLayout workedLayout()
{
    ConsoleLayout layout;
    layout.picMiddlePanel = {0, 3255, 8670, 2355};
    layout.fraCommunication = {150, 0, 8325, 2355};
    layout.txtTerm = {165, 300, 7965, 1755};
    layout.picLateralPanel = {8610, 0, 6405, 7275};
    layout.fraSentDetails = {15, 4360, 6255, 2775};
    layout.fraQueueDetails = {15, 135, 6255, 4075};
    layout.grdQueue = {150, 300, 5955, 3075};
    layout.grdSentDetails = {150, 300, 5955, 2325};
    layout.btnClearQueue = {5475, 3475, 630, 510};
    layout.btnStop = {4845, 3475, 630, 510};
    layout.btnStart = {4215, 3475, 630, 510};
    return layout;
}

void expectSame(const ConsoleLayout &actual, const ConsoleLayout &expected)
{
    const struct
    {
        const char *name;
        Rect ConsoleLayout::*control;
    } controls[] = {
        {"picMiddlePanel", &ConsoleLayout::picMiddlePanel},
        {"picLateralPanel", &ConsoleLayout::picLateralPanel},
        {"fraCommunication", &ConsoleLayout::fraCommunication},
        {"txtTerm", &ConsoleLayout::txtTerm},
        {"fraQueueDetails", &ConsoleLayout::fraQueueDetails},
        {"fraSentDetails", &ConsoleLayout::fraSentDetails},
        {"grdQueue", &ConsoleLayout::grdQueue},
        {"grdSentDetails", &ConsoleLayout::grdSentDetails},
        {"btnStart", &ConsoleLayout::btnStart},
        {"btnStop", &ConsoleLayout::btnStop},
        {"btnClearQueue", &ConsoleLayout::btnClearQueue},
    };
    for (const auto &[name, control] : controls) {
        const Rect &is = actual.*control;
        const Rect &should = expected.*control;
        EXPECT_EQ(is, should) << name << ": " << is.left << ' ' << is.top << ' ' << is.width << ' '
                              << is.height;
    }
    EXPECT_EQ(actual, expected);
}

TEST(ConsoleLayoutTest, startsAtTheDesignValues)
{
    const ConsoleLayout layout;
    EXPECT_EQ(layout.topPanelHeight, 3300);
    EXPECT_EQ(layout.bottomPanelHeight, 1620);
    EXPECT_EQ(layout.messageFrameWidth, 8325);
    EXPECT_EQ(layout.picMiddlePanel, (Rect{0, 3255, 8670, 2445}));
    EXPECT_EQ(layout.picLateralPanel, (Rect{8610, 0, 6345, 10290}));
    EXPECT_EQ(layout.fraCommunication, (Rect{150, 0, 8325, 2355}));
    EXPECT_EQ(layout.txtTerm, (Rect{165, 300, 7965, 1875}));
    EXPECT_EQ(layout.fraQueueDetails, (Rect{15, 135, 6270, 4170}));
    EXPECT_EQ(layout.fraSentDetails, (Rect{15, 4380, 6270, 2775}));
    EXPECT_EQ(layout.grdQueue, (Rect{150, 300, 5940, 3030}));
    EXPECT_EQ(layout.grdSentDetails, (Rect{150, 300, 5940, 2205}));
    EXPECT_EQ(layout.btnStart, (Rect{4170, 3510, 630, 510}));
    EXPECT_EQ(layout.btnStop, (Rect{4815, 3510, 630, 510}));
    EXPECT_EQ(layout.btnClearQueue, (Rect{5460, 3510, 630, 510}));
}

TEST(ConsoleLayoutTest, designSizeOfTheWindow)
{
    expectSame(resized(designWidth, designHeight), workedLayout());
}

TEST(ConsoleLayoutTest, sameSizeOnceMoreChangesNothing)
{
    ConsoleLayout layout = workedLayout();
    resizeConsole(layout, designWidth, designHeight);
    expectSame(layout, workedLayout());
}

TEST(ConsoleLayoutTest, rightColumnTakesTheWidthAndLogAndQueueTakeTheHeight)
{
    ConsoleLayout expected = workedLayout();
    expected.picMiddlePanel.height = 2955;
    expected.fraCommunication.height = 2955;
    expected.txtTerm.height = 2355;
    expected.picLateralPanel = {8610, 0, 7405, 7875};
    expected.fraSentDetails = {15, 4960, 7255, 2775};
    expected.fraQueueDetails = {15, 135, 7255, 4675};
    expected.grdQueue = {150, 300, 6955, 3675};
    expected.grdSentDetails = {150, 300, 6955, 2325};
    expected.btnClearQueue = {6475, 4075, 630, 510};
    expected.btnStop = {5845, 4075, 630, 510};
    expected.btnStart = {5215, 4075, 630, 510};

    expectSame(resized(designWidth + 1000, designHeight + 600), expected);
    ConsoleLayout layout = workedLayout();
    resizeConsole(layout, designWidth + 1000, designHeight + 600);
    expectSame(layout, expected);
}

TEST(ConsoleLayoutTest, wayBackGivesTheSameAsTheWayThere)
{
    ConsoleLayout layout = workedLayout();
    resizeConsole(layout, 30000, 16000);
    resizeConsole(layout, designWidth, designHeight);
    expectSame(layout, workedLayout());
}

TEST(ConsoleLayoutTest, buttonsStandFlushAndRightAlignedBelowTheQueue)
{
    for (const float extra : {0.F, 7.F, 333.F, 1000.F}) {
        const ConsoleLayout layout = resized(designWidth + extra, designHeight + extra);
        EXPECT_EQ(layout.btnStart.left + layout.btnStart.width, layout.btnStop.left);
        EXPECT_EQ(layout.btnStop.left + layout.btnStop.width, layout.btnClearQueue.left);
        EXPECT_EQ(layout.btnClearQueue.left + layout.btnClearQueue.width,
                  layout.grdQueue.left + layout.grdQueue.width);
        EXPECT_EQ(layout.btnStart.top, layout.grdQueue.top + layout.grdQueue.height + 100);
        EXPECT_EQ(layout.btnStop.top, layout.btnStart.top);
        EXPECT_EQ(layout.btnClearQueue.top, layout.btnStart.top);
    }
}

TEST(ConsoleLayoutTest, clientModeLeavesTheRightColumnItsOldSizeOffTheWindow)
{
    ConsoleLayout expected = workedLayout();
    expected.picLateralPanel = {8610, 0, 6345, 10290};
    expected.fraSentDetails = {15, 7375, 6195, 2775};
    expected.fraQueueDetails = {15, 135, 6195, 7090};
    expected.grdQueue = {150, 300, 5895, 6090};
    expected.grdSentDetails = {150, 300, 5895, 2325};
    expected.btnClearQueue = {5415, 6490, 630, 510};
    expected.btnStop = {4785, 6490, 630, 510};
    expected.btnStart = {4155, 6490, 630, 510};
    expectSame(resized(8490, designHeight), expected);
}

TEST(ConsoleLayoutTest, changeFromServerToClientKeepsTheRightColumn)
{
    ConsoleLayout layout = workedLayout();
    resizeConsole(layout, 8490, designHeight);
    expectSame(layout, workedLayout());
    resizeConsole(layout, designWidth, designHeight);
    expectSame(layout, workedLayout());
}

TEST(ConsoleLayoutTest, minimisedWindowFailsSilentlyAndRestoringSetsAllRight)
{
    for (const auto &[width, height] : {std::pair{0.F, 0.F}, std::pair{2400.F, 15.F}}) {
        ConsoleLayout layout = workedLayout();
        resizeConsole(layout, width, height);
        expectSame(layout, workedLayout());
        resizeConsole(layout, designWidth + 1000, designHeight + 600);
        expectSame(layout, resized(designWidth + 1000, designHeight + 600));
    }
}

TEST(ConsoleLayoutTest, minimisedBeforeTheFirstResizeIsSetRightToo)
{
    ConsoleLayout layout;
    resizeConsole(layout, 0, 0);
    resizeConsole(layout, designWidth, designHeight);
    expectSame(layout, workedLayout());
}

TEST(ConsoleLayoutTest, arithmeticIsOnSinglePrecisionNumbers)
{
    const ConsoleLayout layout = resized(15015.3F, 7275.7F);
    EXPECT_EQ(layout.picLateralPanel.width, 15015.3F - 8610);
    EXPECT_EQ(layout.picMiddlePanel.height, 7275.7F - 3300 - 1620);
    EXPECT_EQ(layout.fraSentDetails.top, 7275.7F - 2775 - 140);
}

// Each step by itself: a size below zero leaves that control as it stands, and those after it go
// on.

TEST(ConsoleLayoutStepTest, middlePanelNeedsRoomBetweenTheDockedPanels)
{
    ConsoleLayout layout = workedLayout();
    resizeConsole(layout, designWidth, 4919);
    EXPECT_EQ(layout.picMiddlePanel, workedLayout().picMiddlePanel);
    EXPECT_EQ(layout.picLateralPanel.height, 4919);
    resizeConsole(layout, designWidth, 4920); // nothing left is no failure
    EXPECT_EQ(layout.picMiddlePanel, (Rect{0, 3255, 8670, 0}));
}

TEST(ConsoleLayoutStepTest, middlePanelGoesToTheLeftEdge)
{
    ConsoleLayout layout;
    layout.picMiddlePanel = {77, 88, 99, 11};
    resizeConsole(layout, designWidth, designHeight);
    EXPECT_EQ(layout.picMiddlePanel, (Rect{0, 88, 99, 2355}));
    EXPECT_EQ(layout.fraCommunication.height, 2355);
}

TEST(ConsoleLayoutStepTest, communicationFrameFollowsTheMessageFrameAndTheMiddlePanel)
{
    ConsoleLayout layout;
    layout.fraCommunication = {1, 2, 3, 4};
    layout.messageFrameWidth = -1;
    resizeConsole(layout, designWidth, designHeight);
    EXPECT_EQ(layout.fraCommunication, (Rect{1, 2, 3, 4}));
    layout.messageFrameWidth = 8000;
    resizeConsole(layout, designWidth, designHeight);
    EXPECT_EQ(layout.fraCommunication, (Rect{150, 0, 8000, 2355}));
}

TEST(ConsoleLayoutStepTest, lateralPanelNeedsAWindowWiderThanItsLeft)
{
    ConsoleLayout layout = workedLayout();
    layout.picLateralPanel.top = 5;
    resizeConsole(layout, 8609, designHeight);
    EXPECT_EQ(layout.picLateralPanel, (Rect{8610, 5, 6405, 7275}));
    resizeConsole(layout, 8610, designHeight);
    EXPECT_EQ(layout.picLateralPanel, (Rect{8610, 0, 0, 7275}));
}

TEST(ConsoleLayoutStepTest, lateralPanelNeedsAHeight)
{
    ConsoleLayout layout = workedLayout();
    resizeConsole(layout, designWidth, -1);
    EXPECT_EQ(layout.picLateralPanel, workedLayout().picLateralPanel);
}

TEST(ConsoleLayoutStepTest, terminalNeedsTwiceItsTopInTheFrame)
{
    ConsoleLayout layout = workedLayout();
    resizeConsole(layout, designWidth, 4920 + 599);
    EXPECT_EQ(layout.fraCommunication.height, 599);
    EXPECT_EQ(layout.txtTerm, workedLayout().txtTerm);
    resizeConsole(layout, designWidth, 4920 + 601);
    EXPECT_EQ(layout.txtTerm, (Rect{165, 300, 7965, 1}));
}

TEST(ConsoleLayoutStepTest, framesOfTheRightColumnNeedMoreThanTheirMargin)
{
    ConsoleLayout layout = workedLayout();
    resizeConsole(layout, 8610 + 149, designHeight + 600);
    EXPECT_EQ(layout.picLateralPanel.width, 149);
    EXPECT_EQ(layout.fraSentDetails, workedLayout().fraSentDetails);
    EXPECT_EQ(layout.fraQueueDetails, workedLayout().fraQueueDetails);
    EXPECT_EQ(layout.grdQueue, workedLayout().grdQueue);
    resizeConsole(layout, 8610 + 150, designHeight);
    EXPECT_EQ(layout.fraSentDetails, (Rect{15, 4360, 0, 2775}));
    EXPECT_EQ(layout.fraQueueDetails, (Rect{15, 135, 0, 4075}));
    EXPECT_EQ(layout.grdQueue, workedLayout().grdQueue); // its width would be below zero
}

TEST(ConsoleLayoutStepTest, sentFrameMayStandAboveTheWindow)
{
    ConsoleLayout layout = workedLayout();
    resizeConsole(layout, designWidth, 2000);
    EXPECT_EQ(layout.fraSentDetails, (Rect{15, -915, 6255, 2775}));
}

TEST(ConsoleLayoutStepTest, queueFrameNeedsRoomAboveTheSentFrame)
{
    ConsoleLayout layout = workedLayout();
    resizeConsole(layout, designWidth, 2775 + 140 + 284); // one twip short
    EXPECT_EQ(layout.fraSentDetails.top, 284);
    EXPECT_EQ(layout.fraQueueDetails, workedLayout().fraQueueDetails);
    resizeConsole(layout, designWidth, 2775 + 140 + 285);
    EXPECT_EQ(layout.fraQueueDetails, (Rect{15, 135, 6255, 0}));
}

TEST(ConsoleLayoutStepTest, queueGridNeedsAThousandInItsFrame)
{
    ConsoleLayout layout = workedLayout();
    resizeConsole(layout, designWidth + 1000, 2775 + 140 + 285 + 999);
    EXPECT_EQ(layout.fraQueueDetails.height, 999);
    EXPECT_EQ(layout.grdQueue, workedLayout().grdQueue);
    EXPECT_EQ(layout.btnClearQueue, workedLayout().btnClearQueue); // it goes by the grid
    EXPECT_EQ(layout.grdSentDetails.width, 6955);                  // the steps after it go on
    resizeConsole(layout, designWidth, 2775 + 140 + 285 + 1000);
    EXPECT_EQ(layout.grdQueue, (Rect{150, 300, 5955, 0}));
    EXPECT_EQ(layout.btnClearQueue, (Rect{5475, 400, 630, 510}));
}

TEST(ConsoleLayoutStepTest, sentGridNeedsFourHundredAndFiftyInItsFrame)
{
    ConsoleLayout layout = workedLayout();
    layout.fraSentDetails.height = 449;
    resizeConsole(layout, designWidth + 1000, designHeight);
    EXPECT_EQ(layout.grdSentDetails, workedLayout().grdSentDetails);
    layout.fraSentDetails.height = 450;
    resizeConsole(layout, designWidth + 1000, designHeight);
    EXPECT_EQ(layout.grdSentDetails, (Rect{150, 300, 6955, 0}));
}

TEST(ConsoleLayoutStepTest, buttonsFollowOneAnother)
{
    ConsoleLayout layout = workedLayout();
    layout.btnStop.width = 700;
    layout.btnStart.height = 400;
    resizeConsole(layout, designWidth, designHeight);
    EXPECT_EQ(layout.btnClearQueue, (Rect{5475, 3475, 630, 510}));
    EXPECT_EQ(layout.btnStop, (Rect{4775, 3475, 700, 510}));
    EXPECT_EQ(layout.btnStart, (Rect{4145, 3475, 630, 400}));

    layout.btnStop = {1, 2, -3, 4};
    resizeConsole(layout, designWidth, designHeight);
    EXPECT_EQ(layout.btnStop, (Rect{1, 2, -3, 4}));
    EXPECT_EQ(layout.btnStart, (Rect{1 - 630, 2, 630, 400}));
}

} // namespace

} // namespace norvane
