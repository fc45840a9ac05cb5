#include "NorvaneSMS/console/ConsoleFixture.h"

#include "NorvaneSMS/console/QueueGridFixture.h"
#include "foundation/Globals.h"
#include "foundation/ui/FatalReport.h"

#include <QMetaObject>
#include <QTableView>
#include <QTest>

#include <string>

namespace norvane {

using namespace Qt::StringLiterals;

class FatalFailure : public ConsoleFixture
{
protected:
    FatalFailure() : m_previous(FatalReport::setTerminate([this](int code) { exitCode = code; })) {}
    ~FatalFailure() override { FatalReport::setTerminate(m_previous); }

    /// Raises SMSSent as the engine's events arrive: from the event loop.
    void raiseSentFromTheLoop(qint32 queueCount)
    {
        QMetaObject::invokeMethod(
            engine(), [this, queueCount] { Q_EMIT engine()->SMSSent(u"1"_s, u"x"_s, queueCount); },
            Qt::QueuedConnection);
        QCoreApplication::processEvents();
    }

    int exitCode = 0;

private:
    FatalReport::Terminate m_previous;
};

TEST_F(FatalFailure, sixHundredWaitingAt59SecondsEndTheProgramWithAnOverflow)
{
    loadAsServer();
    now.setTime(QTime(9, 0, 0));
    raiseSentFromTheLoop(0);
    now = now.addSecs(59);
    raiseSentFromTheLoop(600);
    EXPECT_EQ(exitCode, 1);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first(),
              (RecordingMessageBoxes::Shown{u"Overflow - 6"_s, MessageBoxes::Icon::Critical,
                                            MessageBoxes::Buttons::Ok, u"Norvane SMS"_s}));
}

TEST_F(FatalFailure, at555WaitingItStillFits)
{
    loadAsServer();
    now.setTime(QTime(9, 0, 0));
    raiseSentFromTheLoop(0);
    now = now.addSecs(59);
    raiseSentFromTheLoop(555);
    EXPECT_EQ(exitCode, 0);
    EXPECT_TRUE(text("lblEstimated").contains(u"9:05:45"_s));
}

TEST_F(FatalFailure, lineRowAndCaptionStandWhenTheEstimateOverflows)
{
    loadAsServer();
    now.setTime(QTime(9, 0, 59)); // measured from the zero date
    const QString estimate = text("lblEstimated");
    QStringList behindTheBox;
    boxes.whileShown = [&] {
        const QAbstractItemModel *const sent = control<QTableView>("grdSentDetails")->model();
        for (int row = 0; row < sent->rowCount(); ++row)
            behindTheBox.append(sent->index(row, 2).data().toString());
        behindTheBox << terminal() << caption("fraSentDetails") << text("lblEstimated");
    };
    raiseSentFromTheLoop(600);
    boxes.whileShown = nullptr;
    EXPECT_EQ(exitCode, 1);
    EXPECT_EQ(behindTheBox, (QStringList{u"x"_s, GS(3760023, u"1"_s) + u"\r\n"_s,
                                         GS(3760009) + u" ( 1 )"_s, estimate}));
}

TEST_F(FatalFailure, aFailureWhileTheBoxIsOpenShowsNoSecondBox)
{
    loadAsServer();
    boxes.whileShown = [this] { raiseSentFromTheLoop(40'000); };
    raiseSentFromTheLoop(40'000);
    EXPECT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(exitCode, 1);
}

TEST_F(FatalFailure, anEngineThatFailsInAnEventIsFatal)
{
    loadAsServer();
    script.failingCalls.enqueue(4); // GetQueue of the event; three calls were made at load
    QMetaObject::invokeMethod(
        engine(), [this] { Q_EMIT engine()->SMSQueueChanged(1); }, Qt::QueuedConnection);
    QCoreApplication::processEvents();
    EXPECT_EQ(exitCode, 1);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(boxes.shown.first().text.endsWith(u" - 462"_s));
}

struct FailingPress
{
    const char *name;
    const char *button;
    const char *failingCall;
};

class FatalPress : public FatalFailure, public testing::WithParamInterface<FailingPress>
{};

TEST_P(FatalPress, endsTheProgram)
{
    script.queueSize = 1;
    loadAsServer();
    show();
    control(GetParam().button)->setEnabled(true);
    script.failingCall = QLatin1String(GetParam().failingCall);
    takeCalls();
    QTest::mouseClick(control(GetParam().button), Qt::LeftButton);
    EXPECT_EQ(exitCode, 1);
    ASSERT_FALSE(boxes.shown.isEmpty());
    EXPECT_TRUE(boxes.shown.last().text.endsWith(u" - 462"_s));
    EXPECT_EQ(boxes.shown.last().icon, MessageBoxes::Icon::Critical);
    EXPECT_EQ(takeCalls().last(), QLatin1String(GetParam().failingCall)) << "nothing follows it";
}

INSTANTIATE_TEST_SUITE_P(
    Each, FatalPress,
    testing::Values(FailingPress{"start", "btnStart", "StartEngine"},
                    FailingPress{"sizeBeforeStop", "btnStop", "GetQueueSize"},
                    FailingPress{"stop", "btnStop", "StopEngine"},
                    FailingPress{"sizeBeforeClear", "btnClearQueue", "GetQueueSize"},
                    FailingPress{"clear", "btnClearQueue", "ClearQueue"},
                    FailingPress{"settingsForTheDialog", "btnDeviceConfig", "GetDeviceSettings"}),
    [](const auto &each) { return std::string(each.param.name); });

/// What the operator does in the queue's grid, with an engine that fails for it.
class FatalInTheGrid : public QueueGridTest
{
protected:
    FatalInTheGrid() : m_previous(FatalReport::setTerminate([this](int code) { exitCode = code; }))
    {}
    ~FatalInTheGrid() override { FatalReport::setTerminate(m_previous); }

    void expectFatal()
    {
        EXPECT_EQ(exitCode, 1);
        ASSERT_FALSE(boxes.shown.isEmpty());
        EXPECT_TRUE(boxes.shown.last().text.endsWith(u" - 462"_s));
    }

    int exitCode = 0;

private:
    FatalReport::Terminate m_previous;
};

TEST_F(FatalInTheGrid, anEditThatTheEngineDoesNotTakeEndsTheProgram)
{
    showQueue(3);
    script.failingCall = update;
    edit(2, 1, u"699"_s);
    expectFatal();
    EXPECT_EQ(takeCalls().last(), update);
}

TEST_F(FatalInTheGrid, aDeletionThatTheEngineDoesNotTakeEndsTheProgram)
{
    showQueue(3);
    script.failingCall = update;
    select({2});
    pressDelete();
    expectFatal();
    EXPECT_EQ(takeCalls().last(), update);
}

TEST_F(FatalInTheGrid, aStatusThatTheEngineDoesNotGiveEndsTheProgram)
{
    showQueue(3);
    script.failingCall = status;
    beginEdit(1, 1);
    expectFatal();

    boxes.shown.clear();
    exitCode = 0;
    script.failingCall = status;
    select({1});
    pressDelete();
    expectFatal();
}

} // namespace norvane
