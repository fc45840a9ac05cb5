#include "TovekSMService/host/DeviceProcess.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString warning(int code)
{
    return u"WarningError %1"_s.arg(code);
}

class SimSafety : public DeviceProcess
{
protected:
    static void refuse(PortClient &client)
    {
        client.write("AT+CPIN=\"0000\"\r");
        EXPECT_TRUE(client.readUntil("ERROR\r\n").contains("ERROR"));
    }

    /// Lets go of the device, and counts.
    int triesLeftAfterTheEngine()
    {
        stop();
        return triesLeft();
    }
};

TEST_F(SimSafety, theRightPinUnlocksTheSimAfterEveryPowerCycleAndRestart)
{
    startHeard();
    call("StartEngine");
    for (int cycle = 0; cycle < 3; ++cycle) {
        plugIn({u"--pin"_s, u"4711"_s});
        use(m_device->link(), u"4711"_s);
        ASSERT_TRUE(hears(u"DeviceInfo"_s)) << cycle;
        EXPECT_EQ(count(u"WarningError -27"_s), 0);
        restart();
        ASSERT_TRUE(hears(u"DeviceInfo"_s)) << cycle;
    }
    EXPECT_EQ(triesLeftAfterTheEngine(), 3);
}

TEST_F(SimSafety, aWrongPinCostsOneTryWhateverComesAfter)
{
    plugIn({u"--pin"_s, u"4711"_s});
    startHeard();
    use(m_device->link(), u"1111"_s);
    call("StartEngine");
    ASSERT_TRUE(hears(warning(-27)));
    use(m_device->link(), u"1111"_s);
    ASSERT_TRUE(hears(warning(-27)));
    for (int times = 0; times < 2; ++times) {
        restart();
        ASSERT_TRUE(hears(warning(-27)));
    }
    EXPECT_EQ(triesLeftAfterTheEngine(), 2);

    // A changed PIN is tried once; with the last try nothing is, not even the right one.
    startHeard();
    use(m_device->link(), u"2222"_s);
    ASSERT_TRUE(hears(warning(-27)));
    restart();
    ASSERT_TRUE(hears(warning(-27)));
    use(m_device->link(), u"4711"_s);
    ASSERT_TRUE(hears(warning(-30)));
    restart();
    ASSERT_TRUE(hears(warning(-30)));
    EXPECT_EQ(triesLeftAfterTheEngine(), 1);
}

TEST_F(SimSafety, anotherSimGetsAnAttemptOfItsOwn)
{
    plugIn({u"--pin"_s, u"1111"_s, u"--iccid"_s, u"8934071100275844103"_s});
    startHeard();
    use(m_device->link(), u"4711"_s);
    call("StartEngine");
    ASSERT_TRUE(hears(warning(-27)));
    plugIn({u"--pin"_s, u"4711"_s, u"--iccid"_s, u"8934071100275844111"_s});
    use(m_device->link(), u"4711"_s);
    ASSERT_TRUE(hears(u"DeviceInfo"_s));
    // The first one again, in the same device: still refused, without a try.
    plugIn({u"--pin"_s, u"1111"_s, u"--iccid"_s, u"8934071100275844103"_s});
    use(m_device->link(), u"4711"_s);
    ASSERT_TRUE(hears(warning(-27)));
    EXPECT_EQ(triesLeftAfterTheEngine(), 3);
}

TEST_F(SimSafety, aSimThatAsksForItsPukIsLeftAlone)
{
    plugIn({u"--pin"_s, u"4711"_s});
    {
        PortClient client(m_device->link());
        for (int times = 0; times < 3; ++times)
            refuse(client);
    }
    startHeard();
    use(m_device->link(), u"4711"_s);
    call("StartEngine");
    ASSERT_TRUE(hears(warning(-31)));
    stop();
    PortClient client(m_device->link());
    EXPECT_TRUE(client.ask("AT+CPINR=\"SIM PUK\"").contains("SIM PUK,10"));
}

TEST_F(SimSafety, aSimWithoutASetPinIsNotTried)
{
    plugIn({u"--pin"_s, u"4711"_s});
    startHeard();
    use(m_device->link());
    call("StartEngine");
    ASSERT_TRUE(hears(warning(-30)));
    EXPECT_EQ(triesLeftAfterTheEngine(), 3);
}

} // namespace

} // namespace norvane
