#include "NorvaneSMS/console/WindowSizer.h"

#include "NorvaneSMS/app/mode/ModeWindow.h"
#include "foundation/Globals.h"
#include "foundation/ui/FormSetUp.h"

#include <QScreen>
#include <QWidget>

#include <gtest/gtest.h>

namespace norvane {

namespace {

class WindowSizerTest : public testing::Test
{
protected:
    ~WindowSizerTest() override { gWindowLimits = {}; }

    QSize outerSize(bool serverMode) const
    {
        return ModeWindow::outerPixels(serverMode, twipsPerPixel(&m_window));
    }

    QWidget m_window;
    WindowSizer m_sizer{&m_window};
};

TEST_F(WindowSizerTest, givesTheWindowTheSizeOfItsMode)
{
    for (const bool serverMode : {true, false, true}) {
        m_sizer.setMode(serverMode);
        EXPECT_EQ(m_window.frameSize(), outerSize(serverMode)) << serverMode;
        EXPECT_EQ(gWindowLimits.minimumWidth, outerSize(serverMode).width());
    }
}

TEST_F(WindowSizerTest, takesTheLimitsFromTheScreen)
{
    m_sizer.setMode(true);
    EXPECT_NEAR(gWindowLimits.maximumWidth, m_window.screen()->size().width(), 1);
    m_sizer.setMode(false);
    EXPECT_EQ(gWindowLimits.maximumWidth, outerSize(false).width());
}

TEST_F(WindowSizerTest, bringsAnEnlargedWindowBackToItsSize)
{
    m_sizer.setMode(true);
    m_window.show();
    for (const Qt::WindowState state : {Qt::WindowMaximized, Qt::WindowFullScreen}) {
        m_window.setWindowState(state);
        ASSERT_EQ(m_window.windowState(), state);
        m_sizer.setMode(false);
        EXPECT_EQ(m_window.windowState(), Qt::WindowNoState);
        EXPECT_EQ(m_window.frameSize(), outerSize(false));
    }
}

TEST_F(WindowSizerTest, holdsTheOperatorToTheLimitsWhileItWatches)
{
    m_sizer.setMode(true);
    const QSize free = m_window.minimumSize();
    m_sizer.watch();
    m_window.resize(10, 10);
    EXPECT_EQ(m_window.frameSize(), outerSize(true));
    m_sizer.unwatch();
    EXPECT_EQ(m_window.minimumSize(), free);
    m_window.resize(10, 10);
    EXPECT_EQ(m_window.size(), QSize(10, 10));
}

TEST_F(WindowSizerTest, anotherModeMovesTheLimitsThatAreWatched)
{
    m_sizer.setMode(true);
    m_sizer.watch();
    m_sizer.setMode(false);
    EXPECT_EQ(m_window.frameSize(), outerSize(false));
    m_window.resize(2000, 1000);
    EXPECT_EQ(m_window.frameSize(), outerSize(false)) << "a client has one size";
}

} // namespace

} // namespace norvane
