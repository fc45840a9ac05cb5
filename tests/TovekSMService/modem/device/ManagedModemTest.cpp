#include "TovekSMService/modem/device/ManagedModem.h"

#include "TovekSMService/modem/manager/ManagerNames.h"
#include "contract/ErrorCodes.h"
#include "gsm-simulator/RunningSimulator.h"
#include "support/ModemManagerDaemon.h"
#include "support/TurnedTime.h"
#include "support/WaitUntil.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Lets every PIN leave.
class OpenGate : public PinGate
{
public:
    Decision mayTry(const SimIdentity &, const QString &, std::optional<int>) override
    {
        return Decision::Try;
    }
    void accepted(const SimIdentity &, const QString &) override {}
    void refused(const SimIdentity &, const QString &) override {}
};

/// A modem on a real modem manager, whose own waiting is turned by the test.
class ManagedModemTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        if (ModemManagerDaemon::isInstalled())
            s_daemon = std::make_unique<ModemManagerDaemon>();
    }
    static void TearDownTestSuite() { s_daemon.reset(); }

    ManagedModemTest()
        : m_modem([] { return s_daemon->connection(); }, m_gate, ModemTimings(), m_time),
          m_ready(&m_modem, &Modem::ready), m_failed(&m_modem, &Modem::failed),
          m_partFailed(&m_modem, &Modem::partFailed)
    {}
    ~ManagedModemTest() override
    {
        if (m_device) {
            m_device.reset(); // what is still to be answered is over
            s_daemon->detach(m_name);
        }
    }

    void SetUp() override
    {
        if (!s_daemon)
            GTEST_SKIP() << "ModemManager is not installed";
        ASSERT_TRUE(s_daemon->isRunning());
    }
    void plugIn(const QStringList &options = {})
    {
        m_device = std::make_unique<RunningSimulator>(options, RunningSimulator::Port::Socket);
        m_name = u"device%1"_s.arg(++s_devices);
        ASSERT_FALSE(s_daemon->attach(m_name, m_device->socketPath()).isEmpty());
    }
    /// As another program may have done before; no time of the modem's passes meanwhile.
    void enable()
    {
        QDBusMessage question = QDBusMessage::createMethodCall(
            Manager::service, s_daemon->modemPath(m_name), Manager::modem, u"Enable"_s);
        question << true;
        const QDBusMessage answer = s_daemon->connection().call(question, QDBus::Block, hangMs);
        EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << qPrintable(answer.errorMessage());
    }
    /// Waits until the modem would look at the device again, and lets that much time pass.
    /// @return false once there is nothing to wait for any more
    bool passOneLook()
    {
        const int poll = ModemTimings().simPollMs;
        EXPECT_TRUE(waitUntil([&] { return hasEnded() || m_time.untilNext() == poll; }));
        if (hasEnded())
            return false;
        m_time.pass(poll);
        return true;
    }
    bool hasEnded() const { return m_ready.count() + m_failed.count() > 0; }

    static inline std::unique_ptr<ModemManagerDaemon> s_daemon;
    static inline int s_devices = 0;
    QString m_name;
    std::unique_ptr<RunningSimulator> m_device;
    OpenGate m_gate;
    TurnedTime m_time;
    ManagedModem m_modem;
    QSignalSpy m_ready;
    QSignalSpy m_failed;
    QSignalSpy m_partFailed;
};

TEST_F(ManagedModemTest, aDeviceOfAnotherImeiIsWaitedForAndThenToldOf)
{
    plugIn({u"--imei"_s, u"490154203237518"_s});
    m_modem.open(ManagerParameter{u"356938035643809"_s}, {});
    while (passOneLook())
        continue;
    ASSERT_EQ(m_failed.count(), 1);
    const auto failure = m_failed.first().first().value<ModemFailure>();
    EXPECT_EQ(failure.code, ErrorCode::portNotFound);
    EXPECT_EQ(failure.text, u"the modem manager has no device with the IMEI 356938035643809"_s);
    EXPECT_FALSE(failure.needsOperator);
    EXPECT_EQ(m_time.elapsed(), ModemTimings().managerMs);
}

TEST_F(ManagedModemTest, aManagerWithoutADeviceSaysSo)
{
    m_modem.open(ManagerParameter{}, {});
    while (passOneLook())
        continue;
    ASSERT_EQ(m_failed.count(), 1);
    const auto failure = m_failed.first().first().value<ModemFailure>();
    EXPECT_EQ(failure.code, ErrorCode::portNotFound);
    EXPECT_EQ(failure.text, u"the modem manager has no device that can send"_s);
}

TEST_F(ManagedModemTest, aDeviceWithoutANetworkIsReadyAfterAWhileAndSaysWhyNothingLeaves)
{
    plugIn({u"--registered"_s, u"0"_s});
    enable();
    m_modem.open(ManagerParameter{}, {});
    while (passOneLook())
        continue;
    ASSERT_EQ(m_ready.count(), 1);
    EXPECT_EQ(m_time.elapsed(), ModemTimings().networkReadyMs);

    SubmitPart whole;
    whole.whole = WholeMessage{u"600111222"_s, u"Hola"_s, 0, 1};
    m_modem.send(whole);
    ASSERT_TRUE(waitUntil([this] { return m_partFailed.count() == 1; }));
    const auto failure = m_partFailed.first().first().value<SendFailure>();
    EXPECT_EQ(failure.rule.code, ErrorCode::networkService);
    EXPECT_EQ(failure.rule.treatment, Treatment::Device);
    EXPECT_FALSE(failure.mayBeDelivered);
    EXPECT_EQ(m_modem.state(), Modem::State::Ready);

    whole.whole->parts = 3;
    m_modem.send(whole);
    ASSERT_TRUE(waitUntil([this] { return m_partFailed.count() == 2; }));
    EXPECT_FALSE(m_partFailed.last().first().value<SendFailure>().mayBeDelivered)
        << "none of the parts has left";
}

TEST_F(ManagedModemTest, theSimIsKnownByItsNumber)
{
    plugIn({u"--iccid"_s, u"8934071100275844103"_s, u"--imei"_s, u"490154203237518"_s});
    enable();
    m_modem.open(ManagerParameter{}, {});
    while (passOneLook())
        continue;
    ASSERT_EQ(m_ready.count(), 1);
    EXPECT_EQ(m_modem.details().simId, u"8934071100275844103"_s);
    const QSignalSpy changed(&m_modem, &Modem::detailsChanged);
    m_modem.refreshDetails();
    ASSERT_TRUE(waitUntil([&] { return changed.count() == 1; }));
    EXPECT_EQ(m_modem.details().simId, u"8934071100275844103"_s);
}

TEST_F(ManagedModemTest, aMessageThatIsCutOffByClosingIsInDoubt)
{
    plugIn({u"--latency"_s, u"600000"_s});
    enable();
    m_modem.open(ManagerParameter{}, {});
    while (passOneLook())
        continue;
    ASSERT_EQ(m_ready.count(), 1);
    SubmitPart whole;
    whole.whole = WholeMessage{u"600111222"_s, u"Hola"_s, 0, 1};
    m_modem.send(whole);
    ASSERT_TRUE(waitUntil([this] {
        ControlClient client(m_device->controlPath());
        return client.ask("count submitting").contains('1');
    }));
    m_modem.close();
    ASSERT_EQ(m_partFailed.count(), 1);
    EXPECT_TRUE(m_partFailed.first().first().value<SendFailure>().mayBeDelivered);
    EXPECT_EQ(m_failed.count(), 0);
}

TEST_F(ManagedModemTest, whatIsNoWholeMessageIsRefused)
{
    m_modem.send(SubmitPart());
    EXPECT_EQ(m_partFailed.count(), 0) << "whoever sends is told afterwards";
    ASSERT_TRUE(waitUntil([this] { return m_partFailed.count() == 1; }));
    EXPECT_EQ(m_partFailed.first().first().value<SendFailure>().problem, SendProblem::NotSent);
}

} // namespace

} // namespace norvane
