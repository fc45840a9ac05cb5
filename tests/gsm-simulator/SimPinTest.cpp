#include "gsm-simulator/TalkingModem.h"

namespace norvane {

namespace simulator {

namespace {

TalkingModem lockedModem()
{
    ModemSettings settings;
    settings.pin = "1234";
    TalkingModem modem(settings);
    modem.ask("AT+CMEE=1");
    return modem;
}

} // namespace

TEST(SimPin, aLockedCardKeepsWhatIsItsOwnToItself)
{
    TalkingModem modem = lockedModem();
    EXPECT_EQ(modem.ask("AT+CPIN?"), "+CPIN: SIM PIN|OK");
    EXPECT_EQ(modem.ask("AT+CREG?"), "+CREG: 0,0|OK");
    EXPECT_EQ(modem.ask("AT+CIMI"), "+CME ERROR: 11");
    EXPECT_EQ(modem.ask("AT+CCID"), "+CCID: 8988211000000000005|OK");
    EXPECT_EQ(modem.ask("AT+CLCK=\"SC\",2"), "+CLCK: 1|OK");
    for (const char *command :
         {"AT+CMGS=23", "AT+CMGL=4", "AT+CMGR=1", "AT+CMGD=1", "AT+CPMS?", "AT+CSCA?"})
        EXPECT_EQ(modem.ask(command), "+CMS ERROR: 311") << command;
}

TEST(SimPin, theRightCodeOpensTheCard)
{
    TalkingModem modem = lockedModem();
    EXPECT_EQ(modem.ask("AT+CPIN=\"1234\""), "OK");
    EXPECT_EQ(modem.ask("AT+CPIN?"), "+CPIN: READY|OK");
    EXPECT_EQ(modem.ask("AT+CREG?"), "+CREG: 0,1|OK");
    EXPECT_EQ(modem.submitHello(), "+CMGS: 0|OK");
    EXPECT_EQ(modem.ask("AT+CPIN=\"1234\""), "+CME ERROR: 3");
}

TEST(SimPin, aCodeWithoutQuotesIsACodeToo)
{
    TalkingModem modem = lockedModem();
    EXPECT_EQ(modem.ask("AT+CPIN=1234"), "OK");
}

TEST(SimPin, eachWrongCodeTakesATryAndThreeLockTheCard)
{
    TalkingModem modem = lockedModem();
    for (int left = 2; left >= 0; --left) {
        EXPECT_EQ(modem.ask("AT+CPIN=\"9999\""), "+CME ERROR: 16");
        EXPECT_EQ(modem.ask("AT+CPINR=\"SIM PIN\""),
                  "+CPINR: SIM PIN," + QByteArray::number(left) + ",3|OK");
    }
    EXPECT_EQ(modem.ask("AT+CPIN?"), "+CPIN: SIM PUK|OK");
    EXPECT_EQ(modem.ask("AT+CPIN=\"1234\""), "+CME ERROR: 12");
    EXPECT_EQ(modem.ask("AT+CIMI"), "+CME ERROR: 12");
    EXPECT_EQ(modem.ask("AT+CMGS=23"), "+CMS ERROR: 316");
}

TEST(SimPin, theRightCodeGivesTheTriesBack)
{
    TalkingModem modem = lockedModem();
    modem.ask("AT+CPIN=\"9999\"");
    EXPECT_EQ(modem.ask("AT+CPIN=\"1234\""), "OK");
    EXPECT_EQ(modem.ask("AT+CPINR=\"SIM PIN\""), "+CPINR: SIM PIN,3,3|OK");
}

TEST(SimPin, whatIsNoCodeTakesNoTry)
{
    TalkingModem modem = lockedModem();
    for (const char *code :
         {"\"\"", "\"123\"", "\"123456789\"", "\"12a4\"", "\"1234\",\"1\",\"2\""})
        EXPECT_EQ(modem.ask(QByteArray("AT+CPIN=") + code), "+CME ERROR: 50") << code;
    EXPECT_EQ(modem.ask("AT+CPINR=\"SIM PIN\""), "+CPINR: SIM PIN,3,3|OK");
    EXPECT_EQ(modem.ask("AT+CPIN=\"12345678\",\"1111\""), "+CME ERROR: 3");
}

TEST(SimPin, theUnblockingCodeSetsANewOne)
{
    TalkingModem modem = lockedModem();
    for (int i = 0; i < 3; ++i)
        modem.ask("AT+CPIN=\"9999\"");
    EXPECT_EQ(modem.ask("AT+CPIN=\"00000000\",\"4321\""), "+CME ERROR: 16");
    EXPECT_EQ(modem.ask("AT+CPINR=\"SIM PUK\""), "+CPINR: SIM PUK,9,10|OK");
    EXPECT_EQ(modem.ask("AT+CPIN=\"12345678\",\"4321\""), "OK");
    EXPECT_EQ(modem.ask("AT+CPIN?"), "+CPIN: READY|OK");
    modem.ask("AT+CFUN=1,1");
    modem.ask("ATE0");
    EXPECT_EQ(modem.ask("AT+CPIN=\"1234\""), "ERROR");
    EXPECT_EQ(modem.ask("AT+CPIN=\"4321\""), "OK");
}

TEST(SimPin, tenWrongUnblockingCodesEndTheCard)
{
    TalkingModem modem = lockedModem();
    for (int i = 0; i < 3; ++i)
        modem.ask("AT+CPIN=\"9999\"");
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(modem.ask("AT+CPIN=\"00000000\",\"4321\""), "+CME ERROR: 16");
    EXPECT_EQ(modem.ask("AT+CPIN?"), "+CME ERROR: 13");
    EXPECT_EQ(modem.ask("AT+CPIN=\"12345678\",\"4321\""), "+CME ERROR: 13");
    EXPECT_EQ(modem.ask("AT+CMGS=23"), "+CMS ERROR: 313");
}

TEST(SimPin, theCardItselfTellsTheTriesThatAreLeft)
{
    TalkingModem modem = lockedModem();
    const QByteArray pin = "AT+CSIM=10,\"0020000100\"";
    const QByteArray puk = "AT+CSIM=10,\"002C000100\"";
    modem.ask("AT+CPIN=\"9999\"");
    EXPECT_EQ(modem.ask(pin), "+CSIM: 4,\"63C2\"|OK");
    modem.ask("AT+CPIN=\"9999\"");
    modem.ask("AT+CPIN=\"9999\"");
    EXPECT_EQ(modem.ask(pin), "+CSIM: 4,\"6983\"|OK");
    modem.ask("AT+CPIN=\"00000000\",\"1111\"");
    EXPECT_EQ(modem.ask(puk), "+CSIM: 4,\"63C9\"|OK");
}

TEST(SimPin, aLockedCardShowsItsNumberAndNotItsSubscriber)
{
    TalkingModem modem = lockedModem();
    EXPECT_EQ(modem.ask("AT+CRSM=176,12258,0,0,2"), "+CRSM: 144,0,\"9888\"|OK");
    EXPECT_EQ(modem.ask("AT+CRSM=176,28423,0,0,9"), "+CRSM: 105,130|OK");
    EXPECT_EQ(modem.ask("AT+CNUM"), "+CME ERROR: 11");
    modem.ask("AT+CPIN=\"1234\"");
    EXPECT_EQ(modem.ask("AT+CRSM=176,28423,0,0,1"), "+CRSM: 144,0,\"08\"|OK");
}

TEST(SimPin, aRestartAsksAgainAndKeepsUsedTriesUsed)
{
    TalkingModem modem = lockedModem();
    modem.ask("AT+CPIN=\"1234\"");
    modem.ask("AT+CFUN=1,1");
    modem.ask("ATE0");
    EXPECT_EQ(modem.ask("AT+CPIN?"), "+CPIN: SIM PIN|OK");
    modem.ask("AT+CPIN=\"9999\"");
    modem.ask("AT+CFUN=1,1");
    modem.ask("ATE0");
    EXPECT_EQ(modem.ask("AT+CPINR=\"SIM PIN\""), "+CPINR: SIM PIN,2,3|OK");
}

} // namespace simulator

} // namespace norvane
