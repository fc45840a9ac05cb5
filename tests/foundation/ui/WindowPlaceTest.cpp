#include "foundation/ui/WindowPlace.h"

#include "foundation/ui/FormSetUp.h"
#include "support/WaitUntil.h"

#include <QAbstractEventDispatcher>
#include <QResizeEvent>
#include <QScreen>
#include <QTest>
#include <QWidget>
#include <QWindow>

#include <gtest/gtest.h>

#include <xcb/xproto.h>

namespace norvane {

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

    /// The window system tells of a size, as on the way to the one that it was asked for.
    void tellSize(QSize size)
    {
        QWindow *const handle = window.windowHandle();
        QResizeEvent event(size, handle->size());
        QCoreApplication::sendEvent(handle, &event);
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

TEST_F(WindowPlaceTest, whatIsToldOnTheWayToTheSizeThatWasAskedForIsNoWishOfTheOperator)
{
    place.setOuterSize(Asked);
    show();
    place.setOuterSize(Asked * 2);
    place.setOuterSize(Asked * 2); // asks for no more than what is on its way
    tellSize(Asked);
    EXPECT_TRUE(place.keepsOuterSize());
    settle(); // it has come
    tellSize(Asked);
    EXPECT_FALSE(place.keepsOuterSize());
}

TEST_F(WindowPlaceTest, whatIsToldOnTheWayToTheFirstShowingIsNoWishOfTheOperator)
{
    window.setWindowFlag(Qt::FramelessWindowHint);
    place.setOuterSize(Asked);
    window.show();
    tellSize(Asked / 2);
    EXPECT_TRUE(place.keepsOuterSize());
}

TEST_F(WindowPlaceTest, whatIsToldWithAFrameThatIsNotFollowedYetIsNoWishOfTheOperator)
{
    place.setOuterSize(Asked);
    show();
    QWindow *const handle = window.windowHandle();
    handle->setFlag(Qt::FramelessWindowHint);
    handle->setWindowState(Qt::WindowNoState);
    ASSERT_TRUE(frame().isNull());
    tellSize(Asked / 2);
    EXPECT_TRUE(place.keepsOuterSize());
}

TEST_F(WindowPlaceTest, frameOfAWindowThatWasThereBeforeIsFollowed)
{
    QWidget shown;
    shown.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&shown, hangMs));
    settle();
    const WindowPlace &later = WindowPlace::of(&shown);
    ASSERT_FALSE(later.frame().isNull());
    QWindow *const handle = shown.windowHandle();
    handle->setFlag(Qt::FramelessWindowHint);
    handle->setWindowState(Qt::WindowNoState);
    settle();
    xcb_property_notify_event_t event = {};
    event.response_type = XCB_PROPERTY_NOTIFY;
    event.window = static_cast<xcb_window_t>(shown.winId());
    qintptr result = 0;
    QAbstractEventDispatcher::instance()->filterNativeEvent("xcb_generic_event_t", &event, &result);
    settle();
    EXPECT_TRUE(later.frame().isNull());
}

TEST_F(WindowPlaceTest, whatAMinimisedWindowIsToldIsNoWishOfTheOperator)
{
    place.setOuterSize(Asked);
    place.centre();
    show();
    window.setWindowState(Qt::WindowMinimized);
    settle();
    tellSize(Asked / 2);
    settle();
    EXPECT_TRUE(place.keepsOuterSize());
    window.setWindowState(Qt::WindowNoState);
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
        EXPECT_TRUE(place.keepsOuterSize());
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
    EXPECT_TRUE(place.presentFrame().isNull());
    EXPECT_EQ(place.frame(), normal);
    window.setWindowState(Qt::WindowNoState);
    settle();
    ASSERT_TRUE(frame().isNull()) << "it is still there when the window is back";
    notice();
    EXPECT_EQ(place.frame(), normal);
    EXPECT_EQ(window.size(), Asked.shrunkBy(normal));
    changeFrame(true);
    EXPECT_EQ(outer().size(), Asked);
}

TEST_F(WindowPlaceTest, frameThatTheEnlargedWindowHadIsFollowedOnceTheWindowIsBackAsAsked)
{
    place.setOuterSize(Asked);
    show();
    window.windowHandle()->setFlag(Qt::FramelessWindowHint);
    window.setWindowState(Qt::WindowMaximized);
    settle();
    ASSERT_TRUE(frame().isNull());
    window.windowHandle()->setFlag(Qt::FramelessWindowHint, false);
    window.setWindowState(Qt::WindowNoState);
    settle();
    ASSERT_FALSE(frame().isNull());
    place.setOuterSize(Asked * 2);
    settle();
    changeFrame(false);
    EXPECT_TRUE(place.frame().isNull());
    EXPECT_EQ(window.size(), Asked * 2);
}

TEST_F(WindowPlaceTest, dialogThatHasHadNoFrameIsStillExpectedToHaveItsOwners)
{
    place.centre();
    show();
    QWidget dialog(&window, Qt::Dialog | Qt::FramelessWindowHint);
    dialog.resize(Asked);
    WindowPlace &ofDialog = WindowPlace::of(&dialog);
    ofDialog.centre();
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog, hangMs));
    settle();
    EXPECT_EQ(ofDialog.frame(), frame());
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

} // namespace norvane
