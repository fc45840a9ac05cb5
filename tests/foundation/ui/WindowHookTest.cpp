#include "foundation/ui/WindowHook.h"

#include "support/WaitUntil.h"

#include <QPointer>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>

namespace norvane {

namespace {

constexpr WindowLimits server{300, 200, 700, 600};
constexpr WindowLimits client{250, 180, 250, 180};

class WindowHookTest : public ::testing::Test
{
protected:
    WindowHookTest() { window.resize(400, 300); }

    QSize frame() const { return window.frameSize() - window.size(); }
    void show()
    {
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window, hangMs));
    }
    /// Lets all events be dealt with that are on their way.
    static void settle()
    {
        for (int i = 0; i < 10; ++i)
            QCoreApplication::processEvents();
    }
    /// Takes the frame away, which the window learns of when it moves.
    void changeFrame()
    {
        ASSERT_NE(frame(), QSize(0, 0));
        window.setWindowFlag(Qt::FramelessWindowHint);
        show();
        window.move(window.pos() + QPoint(5, 5));
        EXPECT_TRUE(waitUntil([this] { return frame() == QSize(0, 0); }));
        settle();
    }

    QWidget window;
};

TEST_F(WindowHookTest, limitsAreOfTheOuterSize)
{
    show();
    const WindowHook hook(&window, server);
    EXPECT_EQ(window.minimumSize(), QSize(300, 200) - frame());
    EXPECT_EQ(window.maximumSize(), QSize(700, 600) - frame());
}

TEST_F(WindowHookTest, outerSizeStaysBetweenTheLimits)
{
    show();
    const WindowHook hook(&window, server);
    window.resize(10, 10);
    EXPECT_EQ(window.frameSize(), QSize(300, 200));
    window.resize(5000, 5000);
    EXPECT_EQ(window.frameSize(), QSize(700, 600));
    window.resize(500, 450);
    EXPECT_EQ(window.size(), QSize(500, 450));
}

TEST_F(WindowHookTest, equalLimitsFixTheSize)
{
    show();
    const WindowHook hook(&window, client);
    EXPECT_EQ(window.frameSize(), QSize(250, 180));
    window.resize(600, 600);
    EXPECT_EQ(window.frameSize(), QSize(250, 180));
    window.resize(1, 1);
    EXPECT_EQ(window.frameSize(), QSize(250, 180));
}

TEST_F(WindowHookTest, newLimitsComeWithTheirSize)
{
    show();
    WindowHook hook(&window, server);
    hook.setLimits(client, {250, 180});
    EXPECT_EQ(window.frameSize(), QSize(250, 180));
    hook.setLimits(server, {640, 480});
    EXPECT_EQ(window.frameSize(), QSize(640, 480));
    EXPECT_EQ(window.minimumSize(), QSize(300, 200) - frame());
}

TEST_F(WindowHookTest, frameThatComesWithTheShowingIsTakenOffTheLimitsAndTheAskedSizeKept)
{
    ASSERT_EQ(frame(), QSize(0, 0));
    const WindowHook hook(&window, server);
    EXPECT_EQ(window.minimumSize(), QSize(300, 200));
    show();
    ASSERT_NE(frame(), QSize(0, 0));
    EXPECT_EQ(window.minimumSize(), QSize(300, 200) - frame());
    EXPECT_EQ(window.maximumSize(), QSize(700, 600) - frame());
    EXPECT_EQ(window.frameSize(), QSize(400, 300));
}

TEST_F(WindowHookTest, sizeAskedForBeforeTheShowingIsOfTheOuterWindow)
{
    WindowHook hook(&window, server);
    hook.setLimits(client, {250, 180});
    show();
    ASSERT_NE(frame(), QSize(0, 0));
    EXPECT_EQ(window.frameSize(), QSize(250, 180));
    EXPECT_EQ(window.minimumSize(), window.maximumSize());
}

TEST_F(WindowHookTest, frameThatChangesIsFollowedAndTheAskedSizeKept)
{
    show();
    const WindowHook hook(&window, server);
    const QSize outer = window.frameSize();
    changeFrame();
    ASSERT_EQ(frame(), QSize(0, 0));
    EXPECT_EQ(window.minimumSize(), QSize(300, 200));
    EXPECT_EQ(window.maximumSize(), QSize(700, 600));
    EXPECT_EQ(window.frameSize(), outer);
}

TEST_F(WindowHookTest, sizeThatTheOperatorGaveIsNotTakenBack)
{
    show();
    const WindowHook hook(&window, server);
    window.resize(520, 410);
    settle();
    changeFrame();
    ASSERT_EQ(frame(), QSize(0, 0));
    EXPECT_EQ(window.minimumSize(), QSize(300, 200));
    EXPECT_EQ(window.size(), QSize(520, 410));
}

TEST_F(WindowHookTest, limitsSmallerThanTheFrameComeToNothing)
{
    show();
    const WindowHook hook(&window, WindowLimits{1, 1, 700, 600});
    EXPECT_GE(window.minimumSize().width(), 0);
    EXPECT_LE(window.minimumSize().width(), 1);
    window.resize(5, 5);
    EXPECT_EQ(window.size(), QSize(5, 5));
}

TEST_F(WindowHookTest, removedHookTakesTheLimitsOff)
{
    show();
    auto hook = std::make_unique<WindowHook>(&window, client);
    hook.reset();
    EXPECT_EQ(window.minimumSize(), QSize(0, 0));
    EXPECT_EQ(window.maximumSize(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
    window.resize(900, 700);
    EXPECT_EQ(window.size(), QSize(900, 700));
}

TEST_F(WindowHookTest, hookEndsWithItsWindow)
{
    auto *const other = new QWidget;
    other->resize(400, 300);
    const QPointer<WindowHook> hook(new WindowHook(other, server));
    delete other;
    EXPECT_FALSE(hook);
}

} // namespace

} // namespace norvane
