#include "gsm-simulator/TurnedClock.h"

namespace norvane {

namespace simulator {

namespace {

using ModemOnAir = TurnedClock;

/// Whether each accepted message found the link up.
std::vector<bool> linksKept(const TalkingModem &modem)
{
    std::vector<bool> kept;
    for (const AcceptedMessage &message : modem.accepted)
        kept.push_back(message.linkKept);
    return kept;
}

} // namespace

TEST_F(ModemOnAir, inFlightModeItHasASimAndNoNetwork)
{
    ModemSettings inFlight = settings();
    inFlight.functionality = 4;
    TalkingModem modem(inFlight);
    EXPECT_EQ(modem.ask("AT+CFUN?;+CPIN?;+CREG?"), "+CFUN: 4|+CPIN: READY|+CREG: 0,0|OK");
    EXPECT_EQ(modem.submitHello(), "+CMS ERROR: 331");
    EXPECT_EQ(modem.ask("AT+CFUN=1;+CREG?"), "+CREG: 0,1|OK");
    EXPECT_EQ(modem.submitHello(), "+CMGS: 0|OK");
}

TEST_F(ModemOnAir, withMinimumFunctionalityItHasNoSimEither)
{
    ModemSettings off = settings();
    off.functionality = 0;
    TalkingModem modem(off);
    modem.ask("AT+CMEE=1");
    for (const char *command : {"AT+CPIN?", "AT+CIMI", "AT+CCID", "AT+CPINR=\"SIM PIN\""})
        EXPECT_EQ(modem.ask(command), "+CME ERROR: 13") << command;
    EXPECT_EQ(modem.ask("AT+CSCA?"), "+CMS ERROR: 313");
    EXPECT_EQ(modem.ask("AT+CMGS=23"), "+CMS ERROR: 313");
    EXPECT_EQ(modem.ask("AT+CFUN=1;+CPIN?"), "+CPIN: READY|OK");
}

TEST_F(ModemOnAir, aSimThatWasWithoutPowerAsksForItsPinAgain)
{
    ModemSettings withPin = settings();
    withPin.pin = "1234";
    TalkingModem modem(withPin);
    EXPECT_EQ(modem.ask("AT+CPIN=\"1234\";+CFUN=4;+CFUN=1;+CPIN?"), "+CPIN: READY|OK");
    EXPECT_EQ(modem.ask("AT+CFUN=0;+CFUN=1;+CPIN?"), "+CPIN: SIM PIN|OK");
}

TEST_F(ModemOnAir, theRegistrationTakesItsTimeWheneverTheRadioStarts)
{
    ModemSettings slow = settings();
    slow.registerAfter = std::chrono::milliseconds(1000);
    TalkingModem modem(slow);
    for (const char *start : {"AT", "AT+CFUN=4;+CFUN=1", "AT+CFUN=1,1;E0"}) {
        modem.ask(start);
        EXPECT_EQ(modem.ask("AT+CREG?"), "+CREG: 0,2|OK") << start;
        EXPECT_EQ(modem.submitHello(), "+CMS ERROR: 331") << start;
        pass(999);
        EXPECT_EQ(modem.ask("AT+CREG?"), "+CREG: 0,2|OK") << start;
        pass(1);
        EXPECT_EQ(modem.ask("AT+CREG?"), "+CREG: 0,1|OK") << start;
        EXPECT_EQ(modem.ask("AT+CFUN=1;+CREG?"), "+CREG: 0,1|OK") << "it was on already";
    }
}

TEST_F(ModemOnAir, theLinkIsKeptForARowOfMessagesAndClosedByAPause)
{
    TalkingModem modem(settings());
    modem.submitHello();
    modem.submitHello();
    EXPECT_EQ(modem.ask("AT+CMMS=1"), "OK");
    modem.submitHello();
    pass(5000);
    modem.submitHello();
    EXPECT_EQ(modem.ask("AT+CMMS?"), "+CMMS: 1|OK");
    pass(5001);
    EXPECT_EQ(modem.ask("AT+CMMS?"), "+CMMS: 0|OK");
    modem.submitHello();
    EXPECT_EQ(linksKept(modem), std::vector<bool>({false, false, false, true, false}));
}

TEST_F(ModemOnAir, keptForGoodTheSettingOutlivesAPauseAndTheLinkDoesNot)
{
    TalkingModem modem(settings());
    modem.ask("AT+CMMS=2");
    modem.submitHello();
    pass(5001);
    modem.submitHello();
    modem.submitHello();
    EXPECT_EQ(modem.ask("AT+CMMS?"), "+CMMS: 2|OK");
    EXPECT_EQ(linksKept(modem), std::vector<bool>({false, false, true}));
}

TEST_F(ModemOnAir, theLinkGoesWithItsSettingAndWithTheRadio)
{
    for (const char *end : {"AT+CMMS=0", "AT+CFUN=4;+CFUN=1", "AT+CFUN=1,1;E0", "ATZE0"}) {
        TalkingModem modem(settings());
        modem.ask("AT+CMMS=1");
        modem.submitHello();
        modem.ask(end);
        modem.submitHello();
        EXPECT_EQ(linksKept(modem), std::vector<bool>({false, false})) << end;
    }
}

TEST_F(ModemOnAir, aBareAttentionIsRefusedWhereThatIsAskedFor)
{
    ModemSettings refusing = settings();
    refusing.refusesBareAttention = true;
    TalkingModem modem(refusing);
    EXPECT_EQ(modem.ask("AT"), "ERROR");
    EXPECT_EQ(modem.ask("ATE0"), "OK");
    EXPECT_EQ(modem.ask("AT+CSQ"), "+CSQ: 20,99|OK");
}

} // namespace simulator

} // namespace norvane
