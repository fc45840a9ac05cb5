#include "TovekSMService/host/DeviceProcess.h"

namespace {

QString warning(int code)
{
    return QStringLiteral("WarningError %1").arg(code);
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
        plugIn({QStringLiteral("--pin"), QStringLiteral("4711")});
        use(m_device->link(), QStringLiteral("4711"));
        ASSERT_TRUE(hears(QStringLiteral("DeviceInfo"))) << cycle;
        EXPECT_EQ(count(QStringLiteral("WarningError -27")), 0);
        restart();
        ASSERT_TRUE(hears(QStringLiteral("DeviceInfo"))) << cycle;
    }
    EXPECT_EQ(triesLeftAfterTheEngine(), 3);
}

TEST_F(SimSafety, aWrongPinCostsOneTryWhateverComesAfter)
{
    plugIn({QStringLiteral("--pin"), QStringLiteral("4711")});
    startHeard();
    use(m_device->link(), QStringLiteral("1111"));
    call("StartEngine");
    ASSERT_TRUE(hears(warning(-27)));
    use(m_device->link(), QStringLiteral("1111"));
    ASSERT_TRUE(hears(warning(-27)));
    for (int times = 0; times < 2; ++times) {
        restart();
        ASSERT_TRUE(hears(warning(-27)));
    }
    EXPECT_EQ(triesLeftAfterTheEngine(), 2);

    // A changed PIN is tried once; with the last try nothing is, not even the right one.
    startHeard();
    use(m_device->link(), QStringLiteral("2222"));
    ASSERT_TRUE(hears(warning(-27)));
    restart();
    ASSERT_TRUE(hears(warning(-27)));
    use(m_device->link(), QStringLiteral("4711"));
    ASSERT_TRUE(hears(warning(-30)));
    restart();
    ASSERT_TRUE(hears(warning(-30)));
    EXPECT_EQ(triesLeftAfterTheEngine(), 1);
}

TEST_F(SimSafety, anotherSimGetsAnAttemptOfItsOwn)
{
    plugIn({QStringLiteral("--pin"), QStringLiteral("1111"), QStringLiteral("--iccid"),
            QStringLiteral("8934071100275844103")});
    startHeard();
    use(m_device->link(), QStringLiteral("4711"));
    call("StartEngine");
    ASSERT_TRUE(hears(warning(-27)));
    plugIn({QStringLiteral("--pin"), QStringLiteral("4711"), QStringLiteral("--iccid"),
            QStringLiteral("8934071100275844111")});
    use(m_device->link(), QStringLiteral("4711"));
    ASSERT_TRUE(hears(QStringLiteral("DeviceInfo")));
    // The first one again, in the same device: still refused, without a try.
    plugIn({QStringLiteral("--pin"), QStringLiteral("1111"), QStringLiteral("--iccid"),
            QStringLiteral("8934071100275844103")});
    use(m_device->link(), QStringLiteral("4711"));
    ASSERT_TRUE(hears(warning(-27)));
    EXPECT_EQ(triesLeftAfterTheEngine(), 3);
}

TEST_F(SimSafety, aSimThatAsksForItsPukIsLeftAlone)
{
    plugIn({QStringLiteral("--pin"), QStringLiteral("4711")});
    {
        PortClient client(m_device->link());
        for (int times = 0; times < 3; ++times)
            refuse(client);
    }
    startHeard();
    use(m_device->link(), QStringLiteral("4711"));
    call("StartEngine");
    ASSERT_TRUE(hears(warning(-31)));
    stop();
    PortClient client(m_device->link());
    EXPECT_TRUE(client.ask("AT+CPINR=\"SIM PUK\"").contains("SIM PUK,10"));
}

TEST_F(SimSafety, aSimWithoutASetPinIsNotTried)
{
    plugIn({QStringLiteral("--pin"), QStringLiteral("4711")});
    startHeard();
    use(m_device->link());
    call("StartEngine");
    ASSERT_TRUE(hears(warning(-30)));
    EXPECT_EQ(triesLeftAfterTheEngine(), 3);
}

} // namespace
