#include "system/WholePath.h"

#include <csignal>

namespace norvane {

using namespace Qt::StringLiterals;

/// The console's window when the engine goes and nothing restarts it.
class EngineGone : public WholePath
{
protected:
    bool isShownAs(qint32 text)
    {
        return eventually([&] { return label("lblEngineStatus") == GS(text); });
    }
};

TEST_F(EngineGone, theConsoleShowsItAsStoppedAndTheNextSendBringsItBack)
{
    QTest::mouseClick(control<QPushButton>("btnStart"), Qt::LeftButton);
    ASSERT_TRUE(isShownAs(3760014));
    const qint64 pid = enginePid();
    ASSERT_GT(pid, 0);
    ASSERT_EQ(::kill(static_cast<pid_t>(pid), SIGKILL), 0);
    EXPECT_TRUE(isShownAs(3760026));
    EXPECT_TRUE(control<QPushButton>("btnStart")->isEnabled());
    EXPECT_FALSE(control<QPushButton>("btnStop")->isEnabled());

    send(u"912345678"_s, u"Hola"_s);
    waitForReceived(1);
    EXPECT_TRUE(isShownAs(3760014));
}

} // namespace norvane
