#include "NorvaneSMS/console/DeviceTestRun.h"

#include "common/NumberedFailure.h"
#include "support/RecordingEngine.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

class DeviceTestRunTest : public testing::Test
{
protected:
    QStringList takeCalls() { return std::exchange(m_script.calls, {}); }

    const QString m_deliver = u"DeliverPendingEvents"_s;
    RecordingEngine::Script m_script;
    RecordingEngine m_engine{m_script};
    DeviceTestRun m_run{m_engine};
};

TEST_F(DeviceTestRunTest, stopsAnEngineThatRunsAndStartsItAgain)
{
    m_script.status = SMSManager::running;
    takeCalls();
    m_run.stopEngine();
    EXPECT_EQ(takeCalls(),
              (QStringList{u"GetEngineStatus"_s, m_deliver, u"StopEngine"_s, m_deliver}));
    m_run.test();
    EXPECT_EQ(takeCalls(), (QStringList{u"TestDevice"_s, m_deliver}));
    m_run.restartEngine();
    EXPECT_EQ(takeCalls(), (QStringList{u"StartEngine"_s, m_deliver}));
}

TEST_F(DeviceTestRunTest, leavesAnEngineThatDoesNotRunAsItIs)
{
    for (const qint32 status : {SMSManager::stopped, 2, -1}) {
        m_script.status = status;
        takeCalls();
        m_run.stopEngine();
        m_run.test();
        m_run.restartEngine();
        EXPECT_EQ(takeCalls(),
                  (QStringList{u"GetEngineStatus"_s, m_deliver, u"TestDevice"_s, m_deliver}))
            << status;
    }
}

TEST_F(DeviceTestRunTest, oneAloneOfTheResultsIsAnAnswer)
{
    for (const qint32 result : {SMSManager::deviceAnswered, 0, -1, 2}) {
        m_script.testResult = result;
        EXPECT_EQ(m_run.test(), result == 1) << result;
    }
}

TEST_F(DeviceTestRunTest, eventsOfATestAreHandledBeforeItReturns)
{
    bool handled = false;
    m_script.inTestDevice = [&] {
        m_script.pendingEvents.append([&](SMSManager &) { handled = true; });
    };
    m_run.test();
    EXPECT_TRUE(handled);
}

TEST_F(DeviceTestRunTest, aTestThatFailsStartsNothing)
{
    m_script.status = SMSManager::running;
    m_script.failingCall = u"TestDevice"_s;
    m_run.stopEngine();
    EXPECT_THROW(m_run.test(), NumberedFailure);
    EXPECT_FALSE(m_script.calls.contains(u"StartEngine"_s));
}

} // namespace

} // namespace norvane
