#include "NorvaneSMS/console/ConsoleFixture.h"

#include "foundation/Globals.h"

#include <QPushButton>
#include <QTest>

namespace norvane {

using namespace Qt::StringLiterals;

class ClearAndStop : public ConsoleFixture
{
protected:
    void loadRunning(qint32 queueSize)
    {
        script.status = 1;
        script.queueSize = queueSize;
        loadAsServer();
        show();
        takeCalls();
    }
    void press(const char *button)
    {
        QTest::mouseClick(control<QPushButton>(button), Qt::LeftButton);
    }
};

TEST_F(ClearAndStop, stopWithAnEmptyQueueStopsWithoutAQuestion)
{
    loadRunning(0);
    press("btnStop");
    EXPECT_EQ(takeCalls(), (QStringList{u"GetQueueSize"_s, u"StopEngine"_s}));
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(ClearAndStop, stopWithMessagesWaitingAsksWithTheirCount)
{
    loadRunning(7);
    press("btnStop");
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first(),
              (RecordingMessageBoxes::Shown{GS(3760017, 7), MessageBoxes::Icon::None,
                                            MessageBoxes::Buttons::YesNo, u"Norvane SMS"_s}));
    EXPECT_EQ(takeCalls(), (QStringList{u"GetQueueSize"_s, u"StopEngine"_s}));
}

TEST_F(ClearAndStop, noLeavesTheEngineRunning)
{
    boxes.yesNoAnswer = MessageBoxes::Answer::No;
    loadRunning(1);
    press("btnStop");
    EXPECT_EQ(takeCalls(), QStringList{u"GetQueueSize"_s});
}

TEST_F(ClearAndStop, clearOfAnEmptyQueueAsksNothing)
{
    loadRunning(0);
    press("btnClearQueue");
    EXPECT_EQ(takeCalls(), QStringList{u"GetQueueSize"_s});
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(ClearAndStop, clearOfOneMessageAsks)
{
    loadRunning(1);
    press("btnClearQueue");
    EXPECT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(takeCalls(), (QStringList{u"GetQueueSize"_s, u"ClearQueue"_s}));
}

TEST_F(ClearAndStop, clearAsksAndLeavesTheRedrawingToTheEngine)
{
    loadRunning(3);
    press("btnClearQueue");
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first(),
              (RecordingMessageBoxes::Shown{GS(3760016), MessageBoxes::Icon::None,
                                            MessageBoxes::Buttons::YesNo, u"Norvane SMS"_s}));
    EXPECT_EQ(takeCalls(), (QStringList{u"GetQueueSize"_s, u"ClearQueue"_s}));
}

TEST_F(ClearAndStop, clearIsNotDoneOnNo)
{
    boxes.yesNoAnswer = MessageBoxes::Answer::No;
    loadRunning(3);
    press("btnClearQueue");
    EXPECT_EQ(takeCalls(), QStringList{u"GetQueueSize"_s});
}

TEST_F(ClearAndStop, startAsksNothingAndChangesNoButtonByItself)
{
    script.queueSize = 3;
    loadAsServer();
    show();
    takeCalls();
    press("btnStart");
    EXPECT_EQ(takeCalls(), QStringList{u"StartEngine"_s});
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(control("btnStart")->isEnabled());
    EXPECT_FALSE(control("btnStop")->isEnabled());
}

} // namespace norvane
