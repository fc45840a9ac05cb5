#include "foundation/ui/EngineWaitNotice.h"

#include "foundation/Globals.h"
#include "support/LoadedLanguage.h"

#include <QApplication>
#include <QLabel>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int quietFor = 1500;

class EngineWaitNoticeTest : public ::testing::Test
{
protected:
    static QWidget *window()
    {
        for (QWidget *const each : QApplication::topLevelWidgets()) {
            if (each->objectName() == "EngineWaitNotice"_L1 && each->isVisible())
                return each;
        }
        return nullptr;
    }

    const LoadedLanguage language{u"ESN"_s};
    EngineWaitNotice notice{quietFor};
};

TEST_F(EngineWaitNoticeTest, aStartThatIsQuickIsWorthNoWord)
{
    for (const qint64 passed : {0, 10, quietFor - 1})
        notice.waiting(passed);
    EXPECT_EQ(window(), nullptr);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    notice.ended();
}

TEST_F(EngineWaitNoticeTest, aStartThatTakesItsTimeIsToldInAWindowUntilItEnds)
{
    notice.waiting(quietFor);
    ASSERT_NE(window(), nullptr);
    EXPECT_EQ(window()->findChild<QLabel *>()->text(), GS(3760092));
    EXPECT_FALSE(GS(3760092).isEmpty());
    ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    notice.waiting(quietFor + 10);
    window()->close();
    EXPECT_NE(window(), nullptr) << "it stays as long as the wait";
    notice.ended();
    EXPECT_EQ(window(), nullptr);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_F(EngineWaitNoticeTest, itsWindowIsServedAsLongAsTheWaitLasts)
{
    notice.waiting(quietFor);
    for (int round = 1; round <= 3; ++round) {
        bool handled = false;
        QMetaObject::invokeMethod(
            window(), [&handled] { handled = true; }, Qt::QueuedConnection);
        notice.waiting(quietFor + round);
        EXPECT_TRUE(handled) << round;
    }
    notice.ended();
}

TEST_F(EngineWaitNoticeTest, itsEndIsNotTheProgramsEnd)
{
    bool ends = false;
    const auto connection =
        QObject::connect(qApp, &QGuiApplication::lastWindowClosed, [&ends] { ends = true; });
    notice.waiting(quietFor);
    notice.ended();
    QCoreApplication::processEvents();
    QObject::disconnect(connection);
    EXPECT_FALSE(ends);
}

TEST_F(EngineWaitNoticeTest, besideAWindowThatIsUpThePointerIsEnoughAndNoEventIsHandled)
{
    QWidget console;
    console.show();
    QCoreApplication::processEvents();
    bool handled = false;
    QMetaObject::invokeMethod(
        &console, [&handled] { handled = true; }, Qt::QueuedConnection);
    notice.waiting(quietFor);
    EXPECT_EQ(window(), nullptr);
    EXPECT_NE(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_FALSE(handled);
    notice.ended();
    QCoreApplication::processEvents();
    EXPECT_TRUE(handled);
}

TEST_F(EngineWaitNoticeTest, itCanBeShownAgain)
{
    for (int round = 0; round < 2; ++round) {
        notice.waiting(quietFor);
        EXPECT_NE(window(), nullptr);
        notice.ended();
        EXPECT_EQ(window(), nullptr);
    }
}

} // namespace

} // namespace norvane
