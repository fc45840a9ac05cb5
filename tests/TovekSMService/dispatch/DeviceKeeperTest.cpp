#include "TovekSMService/dispatch/DeviceKeeper.h"

#include "TovekSMService/dispatch/DispatcherFixture.h"
#include "TovekSMService/dispatch/OpenStore.h"
#include "contract/ErrorCodes.h"

namespace norvane {

namespace {

/// A keeper that is asked to keep the device whenever it says that something has changed.
class DeviceKeeperTest : public ModemFixture
{
protected:
    using State = Modem::State;

    DeviceKeeperTest()
    {
        QObject::connect(&m_keeper, &DeviceKeeper::changed, [this] { keep(); });
        QObject::connect(&m_outbox, &Outbox::warned,
                         [this](int code) { m_events.append(u"warned %1"_s.arg(code)); });
        QObject::connect(&m_keeper, &DeviceKeeper::deviceInfo,
                         [this](const DeviceDetails &) { m_events.append(u"info"_s); });
    }

    static DispatcherTimings timings()
    {
        DispatcherTimings timings;
        timings.keepTestedMs = 500;
        timings.conditionMs = 5000;
        return timings;
    }
    static DeviceSettings device(const QString &parameter = u"/dev/fake, 9600"_s,
                                 qint32 protocol = 1)
    {
        return {0, QString(), 1, protocol, parameter};
    }
    /// @return whether messages have their turn
    bool keep()
    {
        if (std::exchange(m_keeping, true))
            return false;
        const bool isFree = m_keeper.keep();
        m_keeping = false;
        return isFree;
    }
    void test()
    {
        m_keeper.test([this](qint32 result) { m_events.append(u"tested %1"_s.arg(result)); });
        keep();
    }
    void startReady()
    {
        m_keeper.putInForce(device(), DeviceKeeper::Reopening::IfChanged);
        m_state.running = true;
        keep();
        ASSERT_TRUE(until([this] { return m_modem->state() == State::Ready; }));
    }

    QTemporaryDir m_folder;
    SetClock m_clock{m_time};
    std::unique_ptr<Store> m_store = openStore(m_folder);
    RunState m_state;
    QStringList m_events;
    Outbox m_outbox{m_store->database(), m_store->outcomes(), timings(), m_time};
    DeviceKeeper m_keeper{m_store->settings(),
                          *m_modem,
                          m_clock,
                          m_outbox,
                          m_state,
                          RetryPolicy([] { return 0.0; }),
                          timings(),
                          EngineSettings()};

    bool m_keeping = false;
};

TEST_F(DeviceKeeperTest, aStoppedEngineLeavesTheDeviceAlone)
{
    m_keeper.putInForce(device(), DeviceKeeper::Reopening::IfChanged);
    EXPECT_FALSE(keep());
    EXPECT_EQ(m_modem->state(), State::Closed);
    EXPECT_EQ(m_time.alarms(), 0);
}

TEST_F(DeviceKeeperTest, aStartedEngineOpensTheDeviceForMessages)
{
    startReady();
    EXPECT_TRUE(m_keeper.isFree());
    EXPECT_TRUE(keep());
    EXPECT_TRUE(m_keeper.knownDevice().has_value());
    EXPECT_EQ(m_events, QStringList{u"info"_s});
    m_state.running = false;
    EXPECT_FALSE(keep());
    EXPECT_EQ(m_modem->state(), State::Closed);
}

TEST_F(DeviceKeeperTest, aTestOpensTheDeviceOfAStoppedEngineForAMoment)
{
    m_keeper.putInForce(device(), DeviceKeeper::Reopening::IfChanged);
    test();
    ASSERT_TRUE(until([this] { return m_events.contains(u"tested 1"_s); }));
    EXPECT_EQ(m_modem->state(), State::Ready);
    EXPECT_FALSE(keep());
    m_time.pass(500);
    EXPECT_EQ(m_modem->state(), State::Closed);
}

TEST_F(DeviceKeeperTest, aTestComesBeforeMessages)
{
    startReady();
    m_keeper.test([](qint32) {});
    EXPECT_FALSE(m_keeper.isFree());
    EXPECT_FALSE(keep());
    EXPECT_EQ(m_modem->state(), State::Busy);
}

TEST_F(DeviceKeeperTest, otherSettingsCloseTheDeviceAndOpenItAnew)
{
    startReady();
    const int openings = m_line->openings;
    m_keeper.putInForce(device(), DeviceKeeper::Reopening::IfChanged);
    EXPECT_TRUE(m_keeper.isFree()) << "the same ones";
    for (const auto reopening :
         {DeviceKeeper::Reopening::Always, DeviceKeeper::Reopening::IfChanged}) {
        m_keeper.putInForce(
            reopening == DeviceKeeper::Reopening::Always ? device() : device(u"/dev/fake, 19200"_s),
            reopening);
        EXPECT_FALSE(m_keeper.isFree());
        keep();
        EXPECT_FALSE(m_keeper.knownDevice().has_value());
        ASSERT_TRUE(until([this] { return m_modem->state() == State::Ready; }));
    }
    EXPECT_EQ(m_line->openings, openings + 2);
}

TEST_F(DeviceKeeperTest, settingsThatNoDeviceHasAreWarnedOfWithoutTouchingOne)
{
    m_state.running = true;
    for (const auto &[settings, code] :
         {std::pair(device(u"/dev/fake, 9600"_s, 2), ErrorCode::notSupported),
          std::pair(device(u"/dev/fake, 9600"_s, 3), ErrorCode::notSupported),
          std::pair(device(u"/dev/fake, 9600"_s, 0), ErrorCode::portProperty),
          std::pair(device(u"/dev/fake, 9600"_s, 4), ErrorCode::portProperty),
          std::pair(device(QString()), ErrorCode::portProperty)}) {
        m_events.clear();
        m_keeper.putInForce(settings, DeviceKeeper::Reopening::Always);
        keep();
        EXPECT_EQ(m_events, QStringList{u"warned %1"_s.arg(code)});
        EXPECT_EQ(m_keeper.fault().code, code);
    }
    EXPECT_EQ(m_line->openings, 0);
}

TEST_F(DeviceKeeperTest, eachModeAndProtocolOfTheDialogEndsInADeviceOrInAClearCode)
{
    m_state.running = true;
    for (int mode = 1; mode <= 3; ++mode) {
        for (int protocol = 1; protocol <= 3; ++protocol) {
            SCOPED_TRACE(testing::Message() << "mode " << mode << ", protocol " << protocol);
            DeviceSettings settings = device(u"/dev/fake, 9600"_s, protocol);
            settings.ConnectionMode = mode;
            m_events.clear();
            m_keeper.putInForce(settings, DeviceKeeper::Reopening::Always);
            keep();
            const bool works = protocol == 1 && mode != 2;
            if (works) {
                EXPECT_TRUE(until([this] { return m_modem->state() == State::Ready; }));
                m_modem->close();
            } else {
                EXPECT_EQ(m_events, QStringList{u"warned %1"_s.arg(ErrorCode::notSupported)});
                EXPECT_EQ(m_keeper.fault().text.contains("infrared"_L1), protocol == 1);
            }
        }
    }
}

TEST_F(DeviceKeeperTest, theConditionIsRefreshedBeforeMessages)
{
    startReady();
    m_changed->clear();
    m_time.pass(4999);
    EXPECT_EQ(m_changed->count(), 0);
    ASSERT_TRUE(until([this] { return m_changed->count() == 1; }));
    EXPECT_TRUE(m_keeper.isFree());
    EXPECT_EQ(m_events, QStringList{u"info"_s}) << "that alone is no event";
}

TEST_F(DeviceKeeperTest, nothingIsKnownOfTheDeviceOfAnotherStore)
{
    startReady();
    m_keeper.forgetSettings();
    m_state.running = false;
    EXPECT_FALSE(m_keeper.isInForce(device()));
    EXPECT_FALSE(m_keeper.knownDevice().has_value());
    keep();
    EXPECT_EQ(m_modem->state(), State::Closed);
}

TEST_F(DeviceKeeperTest, anEngineThatEndsAnswersTheTestsThatWait)
{
    startReady();
    test();
    m_keeping = true; // nothing else has its turn meanwhile
    m_keeper.shutDown();
    EXPECT_EQ(m_events.last(), u"tested %1"_s.arg(ErrorCode::portClosed));
    EXPECT_EQ(m_modem->state(), State::Closed);
}

} // namespace

} // namespace norvane
