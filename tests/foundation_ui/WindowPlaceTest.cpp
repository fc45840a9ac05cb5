#include "foundation/ui/WindowPlace.h"

#include "foundation/ui/FormSetUp.h"
#include "support/WaitUntil.h"

#include <QAbstractEventDispatcher>
#include <QScreen>
#include <QTest>
#include <QWidget>
#include <QWindow>

#include <gtest/gtest.h>

#include <xcb/xproto.h>

namespace {

constexpr QSize Asked(300, 200);

class WindowPlaceTest : public ::testing::Test
{
protected:
    void show()
    {
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window, hangMs));
        ASSERT_FALSE(frame().isNull()) << "this platform draws a frame";
        settle();
    }
    /// Lets all events be dealt with that are on their way.
    static void settle()
    {
        for (int i = 0; i < 10; ++i)
            QCoreApplication::processEvents();
    }

    QMargins frame() const { return window.windowHandle()->frameMargins(); }
    QRect outer() const { return window.windowHandle()->frameGeometry(); }
    QRect middle(QSize size) const
    {
        const QRect screen = window.screen()->geometry();
        return {screen.topLeft() + FormSetUp::centred(size, screen.size()), size};
    }

    /// Changes the frame as a window manager does: the toolkit raises no event.
    void changeFrameUnnoticed(bool framed)
    {
        QWindow *const handle = window.windowHandle();
        handle->setFlag(Qt::FramelessWindowHint, !framed);
        handle->setWindowState(Qt::WindowNoState); // which it is in already
        settle();
        ASSERT_EQ(frame().isNull(), !framed);
    }
    /// The notice that the window manager has noted something about the window.
    void notice()
    {
        xcb_property_notify_event_t event = {};
        event.response_type = XCB_PROPERTY_NOTIFY;
        event.window = static_cast<xcb_window_t>(window.winId());
        qintptr result = 0;
        QAbstractEventDispatcher::instance()->filterNativeEvent("xcb_generic_event_t", &event,
                                                                &result);
        settle();
    }
    void changeFrame(bool framed)
    {
        changeFrameUnnoticed(framed);
        notice();
    }
    /// As the operator does it, by the window manager.
    void putByOperator(const QRect &inner)
    {
        window.windowHandle()->setGeometry(inner);
        settle();
        ASSERT_EQ(window.geometry(), inner);
    }

    QWidget window;
    WindowPlace &place = WindowPlace::of(&window);
};

TEST_F(WindowPlaceTest, aWindowHasOne)
{
    EXPECT_EQ(&WindowPlace::of(&window), &place);
}

TEST_F(WindowPlaceTest, outerSizeThatWasAskedForHoldsWithEveryFrame)
{
    place.setOuterSize(Asked);
    EXPECT_EQ(window.size(), Asked) << "no frame is known yet";
    show();
    EXPECT_EQ(outer().size(), Asked);
    changeFrame(false);
    EXPECT_EQ(window.size(), Asked);
    changeFrame(true);
    EXPECT_EQ(outer().size(), Asked);
    EXPECT_NE(window.size(), Asked);
}

TEST_F(WindowPlaceTest, centredWindowStaysInTheMiddleWithEveryFrame)
{
    window.resize(Asked);
    place.centre();
    show();
    EXPECT_EQ(outer(), middle(Asked.grownBy(frame())));
    changeFrame(false);
    EXPECT_EQ(outer(), middle(Asked));
    changeFrame(true);
    EXPECT_EQ(outer(), middle(Asked.grownBy(frame())));
}

TEST_F(WindowPlaceTest, frameIsFollowedWhenTheNoticeOfItComes)
{
    place.setOuterSize(Asked);
    show();
    changeFrameUnnoticed(false);
    EXPECT_NE(outer().size(), Asked);
    notice();
    EXPECT_EQ(outer().size(), Asked);
}

TEST_F(WindowPlaceTest, sizeThatTheOperatorGaveStays)
{
    place.setOuterSize(Asked);
    place.centre();
    show();
    const QRect own(20, 30, 410, 320);
    putByOperator(own);
    EXPECT_FALSE(place.keepsOuterSize());
    changeFrame(false);
    EXPECT_EQ(window.geometry(), own);
}

TEST_F(WindowPlaceTest, placeThatTheOperatorGaveStaysAndTheSizeIsKeptAllTheSame)
{
    place.setOuterSize(Asked);
    place.centre();
    show();
    putByOperator(window.geometry().translated(40, 50));
    const QPoint own = window.geometry().topLeft();
    changeFrame(false);
    EXPECT_EQ(window.geometry(), QRect(own, Asked));
}

TEST_F(WindowPlaceTest, whatTheProgramAsksForNextHoldsAgain)
{
    place.setOuterSize(Asked);
    show();
    putByOperator({20, 30, 410, 320});
    place.setOuterSize(Asked);
    place.centre();
    settle();
    changeFrame(false);
    EXPECT_EQ(outer(), middle(Asked));
}

TEST_F(WindowPlaceTest, enlargedWindowIsLeftAlone)
{
    place.setOuterSize(Asked);
    show();
    for (const Qt::WindowState state : {Qt::WindowMaximized, Qt::WindowFullScreen}) {
        window.setWindowState(state);
        settle();
        const QRect enlarged = window.geometry();
        ASSERT_GT(enlarged.width(), Asked.width());
        notice();
        EXPECT_EQ(window.geometry(), enlarged);
        window.setWindowState(Qt::WindowNoState);
        settle();
        EXPECT_EQ(outer().size(), Asked);
    }
}

TEST_F(WindowPlaceTest, frameOfTheEnlargedWindowIsNotTakenForThatOfTheNormalOne)
{
    place.setOuterSize(Asked);
    show();
    const QMargins normal = frame();
    window.windowHandle()->setFlag(Qt::FramelessWindowHint); // from the next state on
    window.setWindowState(Qt::WindowMaximized);
    settle();
    ASSERT_TRUE(frame().isNull());
    window.setWindowState(Qt::WindowNoState);
    settle();
    ASSERT_TRUE(frame().isNull()) << "it is still there when the window is back";
    notice();
    EXPECT_EQ(place.frame(), normal);
    EXPECT_EQ(window.size(), Asked.shrunkBy(normal));
    changeFrame(true);
    EXPECT_EQ(outer().size(), Asked);
}

TEST_F(WindowPlaceTest, dialogIsExpectedToHaveItsOwnersFrame)
{
    place.centre();
    show();
    QWidget dialog(&window, Qt::Dialog);
    dialog.resize(Asked);
    CenterForm(&dialog);
    EXPECT_EQ(dialog.pos(), middle(Asked.grownBy(frame())).topLeft());
}

} // namespace
