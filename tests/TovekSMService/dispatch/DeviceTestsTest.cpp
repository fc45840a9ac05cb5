#include "TovekSMService/dispatch/DeviceTests.h"

#include "TovekSMService/dispatch/DeviceBreaker.h"
#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "TovekSMService/dispatch/OpenStore.h"
#include "TovekSMService/dispatch/Outbox.h"
#include "contract/ErrorCodes.h"
#include "support/TurnedTime.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class DeviceTestsTest : public testing::Test
{
protected:
    DeviceTestsTest()
    {
        m_device.imei = u"490154203237518"_s;
        m_device.model = u"M1"_s;
        m_device.simId = u"8934"_s;
        QObject::connect(&m_outbox, &Outbox::warned, [this](int code, const QString &text) {
            m_events.append(u"warned %1 %2"_s.arg(code).arg(text));
        });
        QObject::connect(&m_tests, &DeviceTests::ended, [this] { m_events.append(u"ended"_s); });
    }

    static DispatcherTimings timings()
    {
        DispatcherTimings timings;
        timings.testAnswerMs = 1000;
        timings.keepTestedMs = 50;
        return timings;
    }
    void add(const QString &name)
    {
        m_tests.add(
            [this, name](qint32 result) { m_events.append(u"%1 %2"_s.arg(name).arg(result)); });
    }
    QStringList takeEvents() { return std::exchange(m_events, {}); }

    QTemporaryDir m_folder;
    TurnedTime m_time;
    std::unique_ptr<Store> m_store = openStore(m_folder);
    Outbox m_outbox{m_store->database(), m_store->outcomes(), timings(), m_time};
    DeviceBreaker m_breaker{m_outbox, RetryPolicy([] { return 0.0; }), timings(), 3, m_time};
    DeviceDetails m_device;
    QStringList m_events;
    DeviceTests m_tests{m_breaker, timings(), m_time};
};

TEST_F(DeviceTestsTest, aDeviceThatPassesAnswersEveryTestThatWaits)
{
    EXPECT_FALSE(m_tests.arePending());
    add(u"one"_s);
    add(u"two"_s);
    EXPECT_TRUE(m_tests.arePending());
    m_tests.pass(m_device);
    EXPECT_EQ(takeEvents(), (QStringList{u"one 1"_s, u"two 1"_s}));
    EXPECT_FALSE(m_tests.arePending());
    m_tests.pass(m_device);
    EXPECT_TRUE(takeEvents().isEmpty()) << "each one once";
}

TEST_F(DeviceTestsTest, theReasonOfAFailureComesBeforeTheAnswers)
{
    add(u"one"_s);
    add(u"two"_s);
    m_tests.fail(ErrorCode::portNotFound, u"gone"_s);
    EXPECT_EQ(takeEvents(), (QStringList{u"warned -2 gone"_s, u"one -2"_s, u"two -2"_s}));
}

TEST_F(DeviceTestsTest, whatNobodyAskedForIsNoTest)
{
    m_tests.pass(m_device);
    m_tests.fail(ErrorCode::portNotFound, u"gone"_s);
    EXPECT_TRUE(takeEvents().isEmpty());
    EXPECT_FALSE(m_tests.isDeviceHeld());
    EXPECT_EQ(m_time.alarms(), 0);
}

TEST_F(DeviceTestsTest, aTestIsAnsweredWithinItsTimeLimit)
{
    add(u"one"_s);
    m_time.pass(600);
    add(u"two"_s);
    m_time.pass(399);
    EXPECT_TRUE(takeEvents().isEmpty());
    m_time.pass(1);
    EXPECT_EQ(takeEvents(), (QStringList{u"warned -39 the test took too long"_s, u"one -39"_s,
                                         u"two -39"_s, u"ended"_s}))
        << "the limit is that of the first one";
    m_time.pass(60'000);
    EXPECT_TRUE(takeEvents().isEmpty());
}

TEST_F(DeviceTestsTest, aTestThatIsAskedForInAnAnswerHasATimeLimitOfItsOwn)
{
    m_tests.add([this](qint32) { add(u"next"_s); });
    m_time.pass(500);
    m_tests.pass(m_device);
    EXPECT_TRUE(m_tests.arePending());
    m_time.pass(999);
    EXPECT_TRUE(m_tests.arePending());
    m_time.pass(1);
    EXPECT_FALSE(m_tests.arePending());
    EXPECT_TRUE(m_events.contains(u"next -39"_s));
}

TEST_F(DeviceTestsTest, aDeviceThatHasPassedIsHeldForAMoment)
{
    add(u"one"_s);
    m_tests.pass(m_device);
    takeEvents();
    m_time.pass(49);
    EXPECT_TRUE(m_tests.isDeviceHeld());
    m_time.pass(1);
    EXPECT_FALSE(m_tests.isDeviceHeld());
    EXPECT_EQ(takeEvents(), QStringList{u"ended"_s});
}

TEST_F(DeviceTestsTest, aDeviceThatIsReleasedOrFailsIsNotHeld)
{
    add(u"one"_s);
    m_tests.pass(m_device);
    m_tests.releaseDevice();
    EXPECT_FALSE(m_tests.isDeviceHeld());
    add(u"two"_s);
    m_tests.pass(m_device);
    add(u"three"_s);
    m_tests.fail(ErrorCode::noRespond, u"silent"_s);
    EXPECT_FALSE(m_tests.isDeviceHeld());
    takeEvents();
    m_time.pass(60'000);
    EXPECT_TRUE(takeEvents().isEmpty());
}

TEST_F(DeviceTestsTest, theDeviceThatWasReportedToATestIsKnownForAMoment)
{
    EXPECT_FALSE(m_tests.wasJustReported(m_device));
    add(u"one"_s);
    m_tests.pass(m_device);
    EXPECT_TRUE(m_tests.wasJustReported(m_device));
    DeviceDetails same = m_device;
    same.signal = 42;
    same.networkInfo = u"Norvane Mobile (home)"_s;
    EXPECT_TRUE(m_tests.wasJustReported(same)) << "what comes and goes doesn't matter";
    for (QString DeviceDetails::*const detail :
         {&DeviceDetails::imei, &DeviceDetails::model, &DeviceDetails::simId}) {
        DeviceDetails other = m_device;
        other.*detail = u"other"_s;
        EXPECT_FALSE(m_tests.wasJustReported(other));
    }
    add(u"two"_s);
    EXPECT_FALSE(m_tests.wasJustReported(m_device)) << "the next test wants a report of its own";
    m_tests.pass(m_device);
    m_time.pass(50);
    EXPECT_FALSE(m_tests.wasJustReported(m_device));
}

} // namespace

} // namespace norvane
