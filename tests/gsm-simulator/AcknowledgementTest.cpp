#include "gsm-simulator/TurnedClock.h"

namespace norvane {

namespace simulator {

namespace {

/// A modem of phase 2+, whose terminal acknowledges what is routed to it.
class Acknowledgements : public TurnedClock
{
protected:
    void SetUp() override { modem.ask("AT+CSMS=1;+CNMI=2,1,0,1"); }

    TalkingModem modem{settings()};
};

} // namespace

TEST_F(Acknowledgements, theNextOneComesWhenThisOneIsAcknowledged)
{
    modem.submitWithRequest();
    EXPECT_EQ(modem.submitWithRequest(), "+CMGS: 1|OK");
    EXPECT_TRUE(modem.lines("AT+CNMA").startsWith("OK|+CDS: 25|07914306000000F00601"));
    EXPECT_EQ(modem.lines("AT+CNMA=0"), "OK");
    EXPECT_EQ(modem.interpreter.nextWake(), std::nullopt);
}

TEST_F(Acknowledgements, areRefusedWhereNoneIsExpected)
{
    EXPECT_EQ(modem.ask("AT+CNMA"), "+CMS ERROR: 340");
    EXPECT_EQ(modem.ask("AT+CNMA=1,2"), "+CMS ERROR: 340");
    modem.submitWithRequest();
    EXPECT_EQ(modem.ask("AT+CNMA"), "OK");
    EXPECT_EQ(modem.ask("AT+CNMA"), "+CMS ERROR: 340");
    modem.ask("AT+CSMS=0");
    modem.submitWithRequest();
    EXPECT_EQ(modem.ask("AT+CNMA"), "+CMS ERROR: 340");
}

TEST_F(Acknowledgements, withoutOneRoutingEndsAndTheNetworkDeliversAgain)
{
    EXPECT_TRUE(modem.submitWithRequest().contains("+CDS: "));
    EXPECT_EQ(modem.interpreter.nextWake(), m_now.addSecs(5));
    pass(4999);
    modem.wake();
    EXPECT_EQ(modem.ask("AT+CNMI?"), "+CNMI: 2,1,0,1,0|OK");
    pass(1);
    EXPECT_EQ(modem.wake(), "");
    EXPECT_EQ(modem.ask("AT+CNMI?;+CNMA"), "+CNMI: 2,0,0,0,0|+CMS ERROR: 340");
    EXPECT_EQ(modem.lines("AT+CNMI=2,1,0,1"), "OK");
    EXPECT_EQ(modem.interpreter.nextWake(), m_now.addSecs(10));
    pass(9999);
    EXPECT_EQ(modem.wake(), "");
    pass(1);
    EXPECT_TRUE(modem.wake().startsWith("+CDS: 25|07914306000000F00600"));
    EXPECT_EQ(modem.ask("AT+CNMA"), "OK");
}

TEST_F(Acknowledgements, theTimeRunsOutEvenWhileACommandIsBeingWritten)
{
    modem.submitWithRequest();
    modem.say("AT+CN");
    pass(5000);
    modem.wake();
    EXPECT_EQ(modem.lines("MI?"), "+CNMI: 2,0,0,0,0|OK");
}

TEST_F(Acknowledgements, aNegativeOneLeavesTheRoutingAndIsDeliveredAgain)
{
    modem.submitWithRequest();
    EXPECT_EQ(modem.lines("AT+CNMA=2"), "OK");
    EXPECT_EQ(modem.ask("AT+CNMI?"), "+CNMI: 2,1,0,1,0|OK");
    pass(10'000);
    EXPECT_TRUE(modem.wake().startsWith("+CDS: 25|"));
}

TEST_F(Acknowledgements, mayHaveAPduOfTheirOwn)
{
    modem.submitWithRequest();
    EXPECT_EQ(modem.say("AT+CNMA=1,2\r"), "\r\n> ");
    EXPECT_EQ(modem.say("0000\x1A"), "\r\nOK\r\n");
    modem.submitWithRequest();
    modem.say("AT+CNMA=1,2\r");
    EXPECT_EQ(modem.say("\"0000\"\x1A"), "\r\nOK\r\n");
    modem.submitWithRequest();
    modem.say("AT+CNMA=2,3\r");
    EXPECT_EQ(modem.say("00C500\x1A"), "\r\nOK\r\n");
    EXPECT_EQ(modem.interpreter.nextWake(), m_now.addSecs(10));
}

TEST_F(Acknowledgements, aPduThatIsNoneAcknowledgesNothing)
{
    for (const char *bad : {"00", "000000", "00x0", "", "\"0000"}) {
        modem.submitWithRequest();
        EXPECT_EQ(modem.say("AT+CNMA=1,2\r"), "\r\n> ");
        EXPECT_EQ(modem.say(QByteArray(bad) + '\x1A'), "\r\n+CMS ERROR: 304\r\n") << bad;
        EXPECT_EQ(modem.ask("AT+CNMA"), "OK") << bad;
    }
}

TEST_F(Acknowledgements, aCancelledPduAcknowledgesNothing)
{
    modem.submitWithRequest();
    modem.say("AT+CNMA=1,2\r");
    EXPECT_EQ(modem.say("00\x1B"), "\r\nOK\r\n");
    EXPECT_EQ(modem.ask("AT+CNMA"), "OK");
}

TEST_F(Acknowledgements, inTextModeHaveNoArguments)
{
    modem.ask("AT+CMGF=1;+CSMP=49");
    modem.submitText("\"1\"", "x");
    EXPECT_EQ(modem.ask("AT+CNMA=0"), "+CMS ERROR: 302");
    EXPECT_EQ(modem.ask("AT+CNMA"), "OK");
}

TEST_F(Acknowledgements, aTerminalThatLeavesPhaseTwoPlusOwesNone)
{
    for (const char *end : {"AT+CSMS=0", "ATZE0"}) {
        modem.ask("AT+CSMS=1;+CNMI=2,1,0,1");
        modem.submitWithRequest();
        modem.ask(end);
        pass(5000);
        modem.wake();
        EXPECT_EQ(modem.interpreter.nextWake(), std::nullopt) << end;
        EXPECT_EQ(modem.lines("AT+CNMI=2,1,0,1"), "OK") << end;
    }
}

TEST_F(Acknowledgements, areNotNeededForWhatIsStored)
{
    modem.ask("AT+CNMI=2,1,0,2");
    EXPECT_TRUE(modem.submitWithRequest().endsWith("+CDSI: \"SR\",1"));
    EXPECT_TRUE(modem.submitWithRequest().endsWith("+CDSI: \"SR\",2"));
    EXPECT_EQ(modem.ask("AT+CNMA"), "+CMS ERROR: 340");
}

TEST_F(Acknowledgements, theTimeForThemIsASetting)
{
    ModemSettings quick = settings();
    quick.reception.acknowledgementTimeout = std::chrono::milliseconds(100);
    quick.reception.redeliverAfter = std::chrono::milliseconds(300);
    TalkingModem other(quick);
    other.ask("AT+CSMS=1;+CNMI=2,1,0,1");
    other.submitWithRequest();
    EXPECT_EQ(other.interpreter.nextWake(), m_now.addMSecs(100));
    pass(100);
    other.ask("AT+CNMI=2,1,0,1");
    EXPECT_EQ(other.interpreter.nextWake(), m_now.addMSecs(300));
}

} // namespace simulator

} // namespace norvane
