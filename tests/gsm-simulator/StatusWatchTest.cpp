#include "gsm-simulator/StatusWatch.h"

#include "gsm-simulator/TurnedClock.h"

namespace norvane {

namespace simulator {

namespace {

class StatusWatchTest : public TurnedClock
{
protected:
    TalkingModem modem{settings()};
};

} // namespace

TEST_F(StatusWatchTest, aChangeOfTheRegistrationIsToldAsMuchAsIsAsked)
{
    modem.control("registered 2");
    EXPECT_EQ(modem.wake(), "");
    modem.ask("AT+CREG=1;+CGREG=1");
    EXPECT_EQ(modem.wake(), "");
    modem.control("registered 5");
    EXPECT_EQ(modem.wake(), "+CREG: 5|+CGREG: 5");
    EXPECT_EQ(modem.wake(), "");
    modem.ask("AT+CREG=2;+CGREG=0");
    modem.control("registered 3");
    EXPECT_EQ(modem.wake(), "+CREG: 3");
    modem.control("registered 1");
    EXPECT_EQ(modem.wake(), "+CREG: 1,\"00A1\",\"0000C3D4\"");
}

TEST_F(StatusWatchTest, aChangeWaitsUntilTheCommandIsWritten)
{
    modem.ask("AT+CREG=1");
    modem.say("AT+CS");
    modem.control("registered 0");
    EXPECT_EQ(modem.wake(), "");
    EXPECT_EQ(modem.lines("Q"), "+CSQ: 20,99|OK|+CREG: 0");
}

TEST_F(StatusWatchTest, whatACommandChangesIsToldBehindItsAnswer)
{
    EXPECT_EQ(modem.lines("AT+CREG=1;+CFUN=4"), "OK|+CREG: 0");
    EXPECT_EQ(modem.lines("AT+CFUN=1"), "OK|+CREG: 1");
}

TEST_F(StatusWatchTest, theEndOfTheSearchIsToldWhenItComes)
{
    ModemSettings slow = settings();
    slow.registerAfter = std::chrono::milliseconds(1000);
    TalkingModem searching(slow);
    EXPECT_EQ(searching.interpreter.nextWake(), std::nullopt);
    searching.ask("AT+CREG=1");
    EXPECT_EQ(searching.interpreter.nextWake(), m_now.addMSecs(1000));
    pass(1000);
    EXPECT_EQ(searching.wake(), "+CREG: 1");
}

TEST_F(StatusWatchTest, indicatorsAreToldByTheirPlaces)
{
    modem.control("signal 31");
    EXPECT_EQ(modem.wake(), "");
    modem.ask("AT+CMER=3,0,0,1");
    modem.control("signal 1");
    EXPECT_EQ(modem.wake(), "+CIEV: 2,1");
    modem.control("signal 2");
    EXPECT_EQ(modem.wake(), "");
    modem.control("signal 99");
    EXPECT_EQ(modem.wake(), "+CIEV: 2,0");
    modem.control("registered 5");
    EXPECT_EQ(modem.wake(), "+CIEV: 6,1");
    modem.control("registered 0");
    EXPECT_EQ(modem.wake(), "+CIEV: 3,0|+CIEV: 6,0");
    modem.ask("AT+CMER=0");
    modem.control("registered 1");
    EXPECT_EQ(modem.wake(), "");
}

TEST_F(StatusWatchTest, unreadMessagesAndAFullMemoryAreIndicators)
{
    ModemSettings small = settings();
    small.reception.memories = {{"SM", 1}};
    TalkingModem full(small);
    full.ask("AT+CMER=3,0,0,1;+CNMI=2,1");
    EXPECT_EQ(full.deliver(R"({"from":"1","text":"x"})"), "+CMTI: \"SM\",1|+CIEV: 4,1|+CIEV: 7,1");
    EXPECT_TRUE(full.lines("AT+CMGR=1").endsWith("OK|+CIEV: 4,0"));
    EXPECT_EQ(full.lines("AT+CMGD=1"), "OK|+CIEV: 7,0");
}

} // namespace simulator

} // namespace norvane
