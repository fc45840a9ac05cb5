#include "gsm-simulator/TurnedClock.h"

namespace norvane {

namespace simulator {

namespace {

class IncomingMessages : public TurnedClock
{
protected:
    /// A message "A", of any coding scheme.
    static QByteArray letter(int scheme = 0)
    {
        return R"({"from":"+34600111222","text":"A","dcs":)" + QByteArray::number(scheme) + '}';
    }

    TalkingModem modem{settings()};
};

const QByteArray letterPdu = "07914306000000F0040B914306101122F20000623090210000400141"_ba;
constexpr const char *routedLetter =
    "+CMT: ,20|07914306000000F0040B914306101122F20000623090210000400141";

constexpr int classZero = 0x10;
constexpr int classOne = 0x11;
constexpr int classTwo = 0x12;
constexpr int classThree = 0x13;
constexpr int waitingStored = 0xD8;
constexpr int waitingDiscarded = 0xC8;

} // namespace

TEST_F(IncomingMessages, goWhereTheirClassAndTheSettingSendThem)
{
    const QByteArray stored = "+CMTI: \"ME\",1";
    const QByteArray onSim = "+CMTI: \"SM\",1";
    const QByteArray routed = "+CMT: ";
    struct Row
    {
        int target;
        int scheme;
        QByteArray start;
    };
    for (const Row &row :
         {Row{1, 0, stored}, Row{1, classZero, stored}, Row{1, classOne, stored},
          Row{1, classTwo, onSim}, Row{1, classThree, stored}, Row{1, waitingStored, stored},
          Row{2, 0, routed}, Row{2, classZero, routed}, Row{2, classOne, routed},
          Row{2, classTwo, onSim}, Row{2, classThree, routed}, Row{2, waitingStored, stored},
          Row{2, waitingDiscarded, routed}, Row{3, 0, stored}, Row{3, classZero, stored},
          Row{3, classOne, stored}, Row{3, classTwo, onSim}, Row{3, classThree, routed}}) {
        TalkingModem fresh(settings());
        fresh.ask("AT+CPMS=\"ME\",\"ME\",\"ME\";+CNMI=2," + QByteArray::number(row.target));
        const QByteArray said = fresh.deliver(letter(row.scheme));
        EXPECT_TRUE(said.startsWith(row.start)) << row.target << ' ' << row.scheme << said.data();
        EXPECT_EQ(fresh.wake(), "");
    }
}

TEST_F(IncomingMessages, areStoredWithoutAWordWhereNoneIsWanted)
{
    EXPECT_EQ(modem.deliver(letter()), "");
    EXPECT_EQ(modem.lines("AT+CMGL=4"), "+CMGL: 1,0,,20|" + letterPdu + "|OK");
}

TEST_F(IncomingMessages, areReadOnceAsUnread)
{
    modem.deliver(letter());
    EXPECT_EQ(modem.lines("AT+CMGR=1"), "+CMGR: 0,,20|" + letterPdu + "|OK");
    EXPECT_EQ(modem.lines("AT+CMGR=1"), "+CMGR: 1,,20|" + letterPdu + "|OK");
}

TEST_F(IncomingMessages, areRoutedWithTheirPdu)
{
    modem.ask("AT+CNMI=2,2");
    EXPECT_EQ(modem.deliver(letter()), routedLetter);
    EXPECT_EQ(modem.ask("AT+CPMS?"), "+CPMS: \"SM\",0,20,\"SM\",0,20,\"SM\",0,20|OK");
}

TEST_F(IncomingMessages, inTextModeShowTheirFields)
{
    modem.ask("AT+CMGF=1;+CNMI=2,2");
    const QByteArray hola = R"({"from":"+34600111222","text":"hola"})";
    const QByteArray plain = "\"+34600111222\",,\"26/03/09,12:00:00+04\"";
    const QByteArray details = ",145,4,0,0,\"+34600000000\",145,4";
    EXPECT_EQ(modem.deliver(hola), "+CMT: " + plain + "|hola");
    modem.ask("AT+CSDH=1");
    EXPECT_EQ(modem.deliver(hola), "+CMT: " + plain + details + "|hola");
    modem.ask("AT+CNMI=2,1;+CSDH=0");
    modem.deliver(hola);
    EXPECT_EQ(modem.lines("AT+CMGL"), "+CMGL: 1,\"REC UNREAD\"," + plain + "|hola|OK");
    EXPECT_EQ(modem.lines("AT+CMGR=1"), "+CMGR: \"REC READ\"," + plain + "|hola|OK");
    modem.ask("AT+CSDH=1");
    EXPECT_EQ(modem.lines("AT+CMGR=1"), "+CMGR: \"REC READ\"," + plain + details + "|hola|OK");
    EXPECT_EQ(modem.lines("AT+CMGL=\"ALL\""), "+CMGL: 1,\"REC READ\"," + plain + ",145,4|hola|OK");
}

TEST_F(IncomingMessages, inTextModeAreInTheCharacterSetOfTheTerminal)
{
    struct Row
    {
        const char *set;
        const char *request;
        QByteArray data;
    };
    for (const Row &row :
         {Row{"GSM", R"({"from":"1","text":"@é[€"})",
              QByteArray("\x00\x05\x1B<\x1B"
                         "e",
                         6)},
          Row{"UCS2", R"({"from":"1","text":"é€"})", "00E920AC"},
          Row{"UTF-8", R"({"from":"1","text":"é€"})", "é€"},
          Row{"8859-1", R"({"from":"1","text":"é€"})", "\xE9?"},
          Row{"IRA", R"({"from":"1","text":"aé"})", "a?"},
          Row{"HEX", R"({"from":"1","text":"@é"})", "0005"},
          Row{"GSM", R"({"from":"1","text":"Ж😀"})", "0416D83DDE00"},
          Row{"GSM", R"({"from":"1","data":"00ff"})", "00FF"},
          Row{"GSM", R"({"from":"1","text":"A","part":2,"parts":3,"reference":42})",
              "0500032A030282"}}) {
        modem.ask("AT+CMGF=1;+CNMI=2,2;+CSCS=\"" + QByteArray(row.set) + '"');
        EXPECT_TRUE(modem.deliver(row.request).endsWith('|' + row.data)) << row.request;
    }
}

TEST_F(IncomingMessages, namesAreSendersToo)
{
    modem.ask("AT+CMGF=1;+CSDH=1;+CNMI=2,2");
    EXPECT_TRUE(modem.deliver(R"({"from":"Banco","text":"x"})")
                    .startsWith("+CMT: \"Banco\",,\"26/03/09,12:00:00+04\",208,4,"));
}

TEST_F(IncomingMessages, goToTheThirdMemory)
{
    modem.ask("AT+CNMI=2,1;+CPMS=\"SM\",\"SM\",\"ME\"");
    EXPECT_EQ(modem.deliver(letter()), "+CMTI: \"ME\",1");
    EXPECT_EQ(modem.ask("AT+CMGL=4"), "OK");
    EXPECT_TRUE(modem.lines("AT+CPMS=\"ME\";+CMGL=4").contains("+CMGL: 1,0,,20|"));
}

TEST_F(IncomingMessages, waitInTheNetworkWhileTheMemoryIsFull)
{
    ModemSettings small = settings();
    small.reception.memories = {{"SM", 2}, {"ME", 5}};
    TalkingModem full(small);
    full.ask("AT+CNMI=2,1");
    EXPECT_EQ(full.deliver(letter()), "+CMTI: \"SM\",1");
    EXPECT_EQ(full.deliver(letter()), "+CMTI: \"SM\",2");
    EXPECT_EQ(full.deliver(letter()), "");
    EXPECT_EQ(full.deliver(letter()), "");
    EXPECT_EQ(full.control("count messages"), "ok 2");
    EXPECT_EQ(full.interpreter.nextWake(), m_now.addSecs(10));
    EXPECT_EQ(full.lines("AT+CMGD=2"), "OK|+CMTI: \"SM\",2");
    EXPECT_EQ(full.control("count messages"), "ok 1");
    EXPECT_EQ(full.lines("AT+CMGD=1,4"), "OK|+CMTI: \"SM\",1");
    EXPECT_EQ(full.control("count messages"), "ok 0");
}

TEST_F(IncomingMessages, theNetworkTriesAFullModemAgainByItself)
{
    ModemSettings small = settings();
    small.reception.memories = {{"SM", 1}, {"ME", 1}};
    TalkingModem full(small);
    full.ask("AT+CNMI=2,1");
    full.deliver(letter());
    full.deliver(letter());
    EXPECT_EQ(full.ask("AT+CPMS=\"SM\",\"SM\",\"ME\""), "+CPMS: 1,1,1,1,0,1|OK");
    pass(10'000);
    EXPECT_EQ(full.wake(), "+CMTI: \"ME\",1");
}

TEST_F(IncomingMessages, areAcknowledgedInPhaseTwoPlusAndDeliveredAgainOtherwise)
{
    modem.ask("AT+CSMS=1;+CNMI=2,2");
    EXPECT_EQ(modem.deliver(letter()), routedLetter);
    EXPECT_EQ(modem.deliver(R"({"from":"1","text":"B"})"), "");
    EXPECT_EQ(modem.control("count messages"), "ok 2");
    EXPECT_TRUE(modem.lines("AT+CNMA").startsWith("OK|+CMT: ,"));
    pass(5000);
    modem.wake();
    EXPECT_EQ(modem.ask("AT+CNMI?"), "+CNMI: 2,0,0,0,0|OK");
    EXPECT_EQ(modem.control("count messages"), "ok 1");
    pass(10'000);
    EXPECT_EQ(modem.wake(), "");
    EXPECT_TRUE(modem.ask("AT+CMGR=1").startsWith("+CMGR: 0,,"));
}

TEST_F(IncomingMessages, waitForTheRadioTheSimAndTheRegistration)
{
    ModemSettings locked = settings();
    locked.pin = "1234";
    TalkingModem asking(locked);
    asking.ask("AT+CNMI=2,1");
    EXPECT_EQ(asking.deliver(letter()), "");
    EXPECT_EQ(asking.lines("AT+CPIN=\"1234\""), "OK|+CMTI: \"SM\",1");
    asking.ask("AT+CFUN=4");
    EXPECT_EQ(asking.deliver(letter()), "");
    EXPECT_EQ(asking.lines("AT+CFUN=1"), "OK|+CMTI: \"SM\",2");
    asking.control("registered 3");
    EXPECT_EQ(asking.deliver(letter()), "");
    EXPECT_EQ(asking.interpreter.nextWake(), std::nullopt);
    asking.control("registered 5");
    EXPECT_EQ(asking.wake(), "+CMTI: \"SM\",3");
}

TEST_F(IncomingMessages, comeAtTheirTime)
{
    modem.ask("AT+CNMI=2,1");
    EXPECT_EQ(modem.deliver(R"({"from":"1","text":"x","delay":2000})"), "");
    EXPECT_EQ(modem.interpreter.nextWake(), m_now.addSecs(2));
    pass(2000);
    EXPECT_EQ(modem.wake(), "+CMTI: \"SM\",1");
}

TEST_F(IncomingMessages, partsComeInAnyOrderDoubledOrNotAtAll)
{
    modem.ask("AT+CNMI=2,2");
    const QByteArray text = QByteArray("a").repeated(153) + QByteArray("b").repeated(153) + "c";
    const QByteArray said = modem.deliver("{\"from\":\"1\",\"text\":\"" + text +
                                          "\",\"reference\":42,\"order\":[3,1,3]}");
    QByteArrayList places;
    for (const QByteArray &line : said.split('|')) {
        const qsizetype at = line.indexOf("0500032A");
        if (at >= 0)
            places += line.mid(at + 8, 4);
    }
    EXPECT_EQ(places, (QByteArrayList{"0303", "0301", "0303"}));
}

TEST_F(IncomingMessages, aPushNamesItsPorts)
{
    modem.ask("AT+CNMI=2,2");
    EXPECT_TRUE(modem.deliver(R"({"from":"1","data":"0106","port":2948,"fromPort":9200})")
                    .endsWith("090605040B8423F00106"));
}

TEST_F(IncomingMessages, anyPduCanArrive)
{
    modem.ask("AT+CNMI=2,2,0,1");
    EXPECT_EQ(modem.control("raw 040B914306101122F20000623090210000400141"), "ok 1");
    EXPECT_EQ(modem.wake(), routedLetter);
    EXPECT_EQ(modem.control("raw 062A0B914306101122F2622113329585406221133295854000"), "ok 1");
    EXPECT_EQ(modem.wake(),
              "+CDS: 25|07914306000000F0062A0B914306101122F2622113329585406221133295854000");
}

TEST_F(IncomingMessages, arriveWhileTheNetworkIsBeingWaitedFor)
{
    ModemSettings slow = settings();
    slow.latency = std::chrono::milliseconds(1000);
    TalkingModem waiting(slow);
    waiting.ask("AT+CNMI=2,1");
    waiting.submitHello();
    EXPECT_EQ(waiting.deliver(letter()), "+CMTI: \"SM\",1");
    EXPECT_EQ(waiting.resume(), "\r\n+CMGS: 0\r\n\r\nOK\r\n");
}

} // namespace simulator

} // namespace norvane
