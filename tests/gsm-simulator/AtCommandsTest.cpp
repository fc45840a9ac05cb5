#include "gsm-simulator/TalkingModem.h"

namespace norvane {

namespace simulator {

namespace {

struct Exchange
{
    const char *command;
    const char *answer;
};

void PrintTo(const Exchange &exchange, std::ostream *stream)
{
    *stream << exchange.command;
}

class FreshModem : public testing::TestWithParam<Exchange>
{};

} // namespace

TEST_P(FreshModem, answers)
{
    TalkingModem modem;
    EXPECT_EQ(modem.ask(GetParam().command), GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(
    Basic, FreshModem,
    testing::Values(
        Exchange{"AT", "OK"}, Exchange{"at", "OK"}, Exchange{"AT;;", "OK"},
        Exchange{"AT E0 V1", "OK"}, Exchange{"~xAT", "OK"}, Exchange{"", ""}, Exchange{"hello", ""},
        Exchange{"ATE2", "ERROR"}, Exchange{"ATE00", "ERROR"}, Exchange{"ATZ", "OK"},
        Exchange{"AT&F", "OK"}, Exchange{"ATH", "OK"}, Exchange{"ATX4&C1&D2", "OK"},
        Exchange{"ATS3?", "013|OK"}, Exchange{"ATS0=2S0?", "002|OK"}, Exchange{"ATS0=256", "ERROR"},
        Exchange{"ATS13?", "ERROR"}, Exchange{"ATS", "ERROR"}, Exchange{"ATD123;", "NO CARRIER"},
        Exchange{"ATA", "NO CARRIER"}, Exchange{"AT+NONE", "ERROR"}, Exchange{"AT+CSQ!", "ERROR"},
        Exchange{"AT+CSQ;+NONE;+CSQ", "+CSQ: 20,99|ERROR"},
        Exchange{"AT+CSQ;+CFUN?", "+CSQ: 20,99|+CFUN: 1|OK"},
        Exchange{"ATI", "Norvane|GSM simulator|Revision: 1.0|IMEI: 490154203237518|OK"}));

INSTANTIATE_TEST_SUITE_P(
    Identity, FreshModem,
    testing::Values(
        Exchange{"AT+CGMI", "Norvane|OK"}, Exchange{"AT+GMI", "Norvane|OK"},
        Exchange{"AT+CGMM", "GSM simulator|OK"}, Exchange{"AT+GMM", "GSM simulator|OK"},
        Exchange{"AT+CGMR", "1.0|OK"}, Exchange{"AT+GMR", "1.0|OK"},
        Exchange{"AT+CGSN", "490154203237518|OK"}, Exchange{"AT+GSN", "490154203237518|OK"},
        Exchange{"AT+CGSN=?", "OK"}, Exchange{"AT+CGSN?", "ERROR"},
        Exchange{"AT+GCAP", "+GCAP: +CGSM|OK"}, Exchange{"AT+CIMI", "001010123456789|OK"},
        Exchange{"AT+CCID", "+CCID: 8988211000000000005|OK"},
        Exchange{"AT+CCID?", "+CCID: 8988211000000000005|OK"},
        Exchange{"AT+ICCID", "+ICCID: 8988211000000000005|OK"},
        Exchange{"AT^ICCID?", "^ICCID: 8988211000000000005|OK"},
        Exchange{"AT+CPIN?", "+CPIN: READY|OK"}, Exchange{"AT+CPIN=?", "OK"},
        Exchange{"AT+CPINR=\"SIM PIN\"", "+CPINR: SIM PIN,3,3|OK"},
        Exchange{"AT+CPINR=\"SIM PUK\"", "+CPINR: SIM PUK,10,10|OK"},
        Exchange{"AT+CPINR", "+CPINR: SIM PIN,3,3|+CPINR: SIM PUK,10,10|OK"},
        Exchange{"AT+CPINR=\"PH-SIM\"", "ERROR"}, Exchange{"AT+CLCK=\"SC\",2", "+CLCK: 0|OK"},
        Exchange{"AT+CLCK=\"SC\",1,\"1\"", "ERROR"}, Exchange{"AT+CLCK=\"AO\",2", "ERROR"}));

INSTANTIATE_TEST_SUITE_P(
    Network, FreshModem,
    testing::Values(
        Exchange{"AT+CREG?", "+CREG: 0,1|OK"}, Exchange{"AT+CREG=?", "+CREG: (0,1,2)|OK"},
        Exchange{"AT+CREG=1;+CREG?", "+CREG: 1,1|OK"},
        Exchange{"AT+CREG=2;+CREG?", "+CREG: 2,1,\"00A1\",\"0000C3D4\"|OK"},
        Exchange{"AT+CREG=3", "ERROR"}, Exchange{"AT+CREG", "ERROR"},
        Exchange{"AT+CGREG?", "+CGREG: 0,1|OK"}, Exchange{"AT+CGREG=1;+CGREG?", "+CGREG: 1,1|OK"},
        Exchange{"AT+COPS?", "+COPS: 0,0,\"Simulated network\"|OK"},
        Exchange{"AT+COPS=3,1;+COPS?", "+COPS: 0,1,\"SIMNET\"|OK"},
        Exchange{"AT+COPS=3,2;+COPS?", "+COPS: 0,2,\"00101\"|OK"},
        Exchange{"AT+COPS=1;+COPS?", "+COPS: 1,0,\"Simulated network\"|OK"},
        Exchange{"AT+CSCS=\"UCS2\";+COPS=3,1;+COPS?", "+COPS: 0,1,\"00530049004D004E00450054\"|OK"},
        Exchange{"AT+COPS=?",
                 "+COPS: (2,\"Simulated network\",\"SIMNET\",\"00101\"),,(0,1,2,3,4),(0,1,2)|OK"},
        Exchange{"AT+COPS=5", "ERROR"}, Exchange{"AT+COPS=3,3", "ERROR"},
        Exchange{"AT+COPS=", "ERROR"}, Exchange{"AT+CSQ", "+CSQ: 20,99|OK"},
        Exchange{"AT+CSQ=?", "+CSQ: (0-31,99),(0-7,99)|OK"}, Exchange{"AT+CSQ?", "ERROR"},
        Exchange{"AT+CBC", "+CBC: 0,100|OK"}, Exchange{"AT+CPAS", "+CPAS: 0|OK"},
        Exchange{"AT+CFUN?", "+CFUN: 1|OK"}, Exchange{"AT+CFUN=?", "+CFUN: (0,1,4),(0,1)|OK"},
        Exchange{"AT+CFUN=0;+CFUN?;+CREG?;+COPS?", "+CFUN: 0|+CREG: 0,0|+COPS: 0|OK"},
        Exchange{"AT+CFUN=0;+CFUN=1;+CREG?", "+CREG: 0,1|OK"}, Exchange{"AT+CFUN=2", "ERROR"},
        Exchange{"AT+CFUN=1,2", "ERROR"}, Exchange{"AT+CFUN=1,1,1", "ERROR"}));

INSTANTIATE_TEST_SUITE_P(
    Services, FreshModem,
    testing::Values(
        Exchange{"AT+CESQ", "+CESQ: 38,99,255,255,255,255|OK"}, Exchange{"AT+CESQ?", "ERROR"},
        Exchange{"AT+WS46?", "12|OK"}, Exchange{"AT+WS46=?", "(12)|OK"},
        Exchange{"AT+WS46=12", "OK"}, Exchange{"AT+WS46=28", "ERROR"}, Exchange{"AT+CPOL?", "OK"},
        Exchange{"AT+CPOL=,2", "OK"}, Exchange{"AT+CPOL=,3", "ERROR"},
        Exchange{"AT+CPOL=1,2,\"00101\"", "ERROR"}, Exchange{"AT+CLCC", "OK"},
        Exchange{"AT+CEER", "+CEER: No report available|OK"}, Exchange{"AT+CNUM", "OK"},
        Exchange{"AT+CLIP=1;+CLIP?", "+CLIP: 1,1|OK"}, Exchange{"AT+CLIP=2", "ERROR"},
        Exchange{"AT+CRC=?", "+CRC: (0,1)|OK"}, Exchange{"AT+CCWA?", "+CCWA: 0|OK"},
        Exchange{"AT+CUSD=1;+CUSD?", "+CUSD: 1|OK"}, Exchange{"AT+CUSD=1,\"*100#\",15", "ERROR"},
        Exchange{"AT+CTZU=1;+CTZU?", "+CTZU: 1|OK"}, Exchange{"AT+CTZR=3", "ERROR"},
        Exchange{"AT+CPLS=?", "+CPLS: (0)|OK"}, Exchange{"AT+IFC?", "+IFC: 2,2|OK"},
        Exchange{"AT+IFC=?", "+IFC: (0,2),(0,2)|OK"}, Exchange{"AT+IFC=0;+IFC?", "+IFC: 0,2|OK"},
        Exchange{"AT+IFC=,0;+IFC?", "+IFC: 2,0|OK"}, Exchange{"AT+IFC=1", "ERROR"},
        Exchange{"AT+IFC=0,0,0", "ERROR"}, Exchange{"AT+IFC", "ERROR"},
        Exchange{"AT+CGEREP=2;&F;E0;+CGEREP?", "+CGEREP: 0,0|OK"},
        Exchange{"AT+CMER=3,0,0,1;+CMER?", "+CMER: 3,0,0,1,0|OK"}, Exchange{"AT+CMER=2", "ERROR"},
        Exchange{"AT+CIND?", "+CIND: 5,4,1,0,0,0,0|OK"}, Exchange{"AT+CIND=1", "ERROR"},
        Exchange{"AT+CIND=?", "+CIND: (\"battchg\",(0-5)),(\"signal\",(0-5)),(\"service\",(0,1)),"
                              "(\"message\",(0,1)),(\"call\",(0,1)),(\"roam\",(0,1)),"
                              "(\"smsfull\",(0,1))|OK"},
        Exchange{"AT+CGDCONT=?;+CGDCONT?",
                 "+CGDCONT: (1-3),\"IP\",,,(0),(0)|+CGDCONT: (1-3),\"IPV6\",,,(0),(0)|"
                 "+CGDCONT: (1-3),\"IPV4V6\",,,(0),(0)|OK"},
        Exchange{"AT+CGDCONT=2,\"ip\",\"internet\";+CGDCONT?;+CGACT?",
                 "+CGDCONT: 2,\"IP\",\"internet\",\"\",0,0|+CGACT: 2,0|OK"},
        Exchange{"AT+CGDCONT=1,\"IPV6\";+CGDCONT=1;+CGDCONT?", "OK"},
        Exchange{"AT+CGDCONT=4,\"IP\"", "ERROR"}, Exchange{"AT+CGDCONT=1,\"PPP\"", "ERROR"},
        Exchange{"AT+CGDCONT=", "ERROR"}, Exchange{"AT+CGACT=1,1", "ERROR"}));

INSTANTIATE_TEST_SUITE_P(
    Card, FreshModem,
    testing::Values(Exchange{"AT+CRSM=176,12258,0,0,10",
                             "+CRSM: 144,0,\"988812010000000000F5\"|OK"},
                    Exchange{"AT+CRSM=176,12258,0,8,0", "+CRSM: 144,0,\"00F5\"|OK"},
                    Exchange{"AT+CRSM=176,12258,0,0,11", "+CRSM: 108,10|OK"},
                    Exchange{"AT+CRSM=176,12258,0,11,0", "+CRSM: 107,0|OK"},
                    Exchange{"AT+CRSM=176,28423,0,0,9", "+CRSM: 144,0,\"080910101032547698\"|OK"},
                    Exchange{"AT+CRSM=176,28589,0,0,4", "+CRSM: 144,0,\"00000002\"|OK"},
                    Exchange{"AT+CRSM=176,28486,0,0,17", "+CRSM: 106,130|OK"},
                    Exchange{"AT+CRSM=242", "+CRSM: 109,0|OK"},
                    Exchange{"AT+CRSM=176,12258", "ERROR"},
                    Exchange{"AT+CRSM=176,12258,0,256,1", "ERROR"}, Exchange{"AT+CRSM=", "ERROR"},
                    Exchange{"AT+CSIM=10,\"0020000100\"", "+CSIM: 4,\"63C3\"|OK"},
                    Exchange{"AT+CSIM=10,\"002C000100\"", "+CSIM: 4,\"63CA\"|OK"},
                    Exchange{"AT+CSIM=10,\"0020008100\"", "+CSIM: 4,\"6A88\"|OK"},
                    Exchange{"AT+CSIM=26,\"002000010831323334FFFFFFFF\"", "+CSIM: 4,\"6700\"|OK"},
                    Exchange{"AT+CSIM=10,\"00A4000400\"", "+CSIM: 4,\"6D00\"|OK"},
                    Exchange{"AT+CSIM=10,\"A020000100\"", "+CSIM: 4,\"6E00\"|OK"},
                    Exchange{"AT+CSIM=8,\"00200001\"", "+CSIM: 4,\"6700\"|OK"},
                    Exchange{"AT+CSIM=8,\"0020000100\"", "ERROR"},
                    Exchange{"AT+CSIM=2,\"0x\"", "ERROR"}, Exchange{"AT+CSIM=10", "ERROR"}));

INSTANTIATE_TEST_SUITE_P(
    Messages, FreshModem,
    testing::Values(
        Exchange{"AT+CSMS?", "+CSMS: 0,1,1,1|OK"}, Exchange{"AT+CSMS=1", "+CSMS: 1,1,1|OK"},
        Exchange{"AT+CSMS=1;+CSMS?", "+CSMS: 1,1,1|+CSMS: 1,1,1,1|OK"},
        Exchange{"AT+CSMS=?", "+CSMS: (0,1)|OK"}, Exchange{"AT+CSMS=2", "+CMS ERROR: 302"},
        Exchange{"AT+CMGF?", "+CMGF: 0|OK"}, Exchange{"AT+CMGF=1;+CMGF?", "+CMGF: 1|OK"},
        Exchange{"AT+CMGF=?", "+CMGF: (0,1)|OK"}, Exchange{"AT+CMGF=2", "+CMS ERROR: 302"},
        Exchange{"AT+CSCA?", "+CSCA: \"+34600000000\",145|OK"},
        Exchange{"AT+CSCA=\"600123\";+CSCA?", "+CSCA: \"600123\",129|OK"},
        Exchange{"AT+CSCA=\"x\"", "+CMS ERROR: 305"},
        Exchange{"AT+CSCS=\"UCS2\";+CSCA=\"002B0031\";+CSCS=\"GSM\";+CSCA?",
                 "+CSCA: \"+1\",145|OK"},
        Exchange{"AT+CNMI=2,1,0,1;+CNMI?", "+CNMI: 2,1,0,1,0|OK"},
        Exchange{"AT+CNMI=2,,,1;+CNMI=,1;+CNMI?", "+CNMI: 2,1,0,1,0|OK"},
        Exchange{"AT+CNMI=4", "+CMS ERROR: 302"},
        Exchange{"AT+CNMI=?", "+CNMI: (0-3),(0-3),(0-3),(0-2),(0,1)|OK"},
        Exchange{"AT+CNMI=0,0,0,0,0,0", "+CMS ERROR: 302"},
        Exchange{"AT+CMMS=2;+CMMS?", "+CMMS: 2|OK"}, Exchange{"AT+CMMS=3", "+CMS ERROR: 302"},
        Exchange{"AT+CPMS?", "+CPMS: \"SM\",0,20,\"SM\",0,20,\"SM\",0,20|OK"},
        Exchange{"AT+CPMS=\"ME\";+CPMS?",
                 "+CPMS: 0,20,0,20,0,20|+CPMS: \"ME\",0,20,\"SM\",0,20,\"SM\",0,20|OK"},
        Exchange{"AT+CPMS=?", "+CPMS: (\"SM\",\"ME\",\"SR\"),(\"SM\",\"ME\"),(\"SM\",\"ME\")|OK"},
        Exchange{"AT+CPMS=\"XX\"", "+CMS ERROR: 302"}, Exchange{"AT+CMGL", "OK"},
        Exchange{"AT+CMGL=4", "OK"}, Exchange{"AT+CMGL=5", "+CMS ERROR: 302"},
        Exchange{"AT+CMGL=\"ALL\"", "+CMS ERROR: 302"}, Exchange{"AT+CMGF=1;+CMGL=\"ALL\"", "OK"},
        Exchange{"AT+CMGF=1;+CMGL=4", "+CMS ERROR: 302"}, Exchange{"AT+CMGL=?", "+CMGL: (0-4)|OK"},
        Exchange{"AT+CPMS=\"SR\";+CPMS?",
                 "+CPMS: 0,20,0,20,0,20|+CPMS: \"SR\",0,20,\"SM\",0,20,\"SM\",0,20|OK"},
        Exchange{"AT+CPMS=\"SM\",\"SM\",\"SR\"", "+CMS ERROR: 302"},
        Exchange{"AT+CNMA", "+CMS ERROR: 340"}, Exchange{"AT+CNMA=?", "+CNMA: (0-2)|OK"},
        Exchange{"AT+CMGF=1;+CNMA=?", "OK"}, Exchange{"AT+CNMA=3", "+CMS ERROR: 302"},
        Exchange{"AT+CMGF=1;+CNMA=0", "+CMS ERROR: 302"}, Exchange{"AT+CNMA?", "+CMS ERROR: 302"},
        Exchange{"AT+CMGR=1", "+CMS ERROR: 321"}, Exchange{"AT+CMGD=1", "OK"},
        Exchange{"AT+CMGD=0", "+CMS ERROR: 321"}, Exchange{"AT+CMGD=21", "+CMS ERROR: 321"},
        Exchange{"AT+CMGD=0,4", "OK"}, Exchange{"AT+CMGD=1,5", "+CMS ERROR: 302"},
        Exchange{"AT+CMGD=?", "+CMGD: (1-20),(0-4)|OK"},
        Exchange{"AT+CSMP?", "+CSMP: 17,167,0,0|OK"},
        Exchange{"AT+CSMP=49,1,2,8;+CSMP?", "+CSMP: 49,1,2,8|OK"},
        Exchange{"AT+CSMP=,,,8;+CSMP?", "+CSMP: 17,167,0,8|OK"},
        Exchange{"AT+CSMP=17,\"26/01/01,00:00:00+04\";+CSMP?",
                 "+CSMP: 17,\"26/01/01,00:00:00+04\",0,0|OK"},
        Exchange{"AT+CSMP=256", "+CMS ERROR: 302"}, Exchange{"AT+CSDH=1;+CSDH?", "+CSDH: 1|OK"},
        Exchange{"AT+CSDH=2", "+CMS ERROR: 302"}, Exchange{"AT+CSCS?", "+CSCS: \"GSM\"|OK"},
        Exchange{"AT+CSCS=?", "+CSCS: (\"GSM\",\"UCS2\",\"IRA\",\"8859-1\",\"UTF-8\",\"HEX\")|OK"},
        Exchange{"AT+CSCS=\"UCS2\";+CSCS?", "+CSCS: \"UCS2\"|OK"},
        Exchange{"AT+CSCS=\"KOI8\"", "ERROR"}, Exchange{"AT+CMGS=?", "OK"},
        Exchange{"AT+CMGS", "ERROR"}, Exchange{"AT+CMGS=23;I", "ERROR"}));

TEST(AtCommands, theListOfCommandsHoldsTheExtendedOnes)
{
    TalkingModem modem;
    const QByteArrayList names = modem.ask("AT+CLAC").split('|');
    for (const char *name : {"+CMGS", "+CSQ", "+CPIN", "^ICCID", "+CLAC"})
        EXPECT_TRUE(names.contains(name)) << name;
    EXPECT_FALSE(names.contains("E"));
    EXPECT_EQ(names.last(), "OK");
    for (const QByteArray &name : names)
        EXPECT_TRUE(name == "OK" || modem.ask("AT" + name + "=?").endsWith("OK")) << name.data();
}

TEST(AtCommands, echoRepeatsEveryByteUntilItIsTurnedOff)
{
    AtInterpreter modem{ModemSettings()};
    EXPECT_EQ(modem.take("AT\r").output, "AT\r\r\nOK\r\n");
    EXPECT_EQ(modem.take("ATE0\r").output, "ATE0\r\r\nOK\r\n");
    EXPECT_EQ(modem.take("AT\r").output, "\r\nOK\r\n");
    EXPECT_EQ(modem.take("ATE1\r").output, "\r\nOK\r\n");
    EXPECT_EQ(modem.take("AT").output, "AT");
    EXPECT_EQ(modem.take("Z\rAT\r").output, "Z\r\r\nOK\r\nAT\r\r\nOK\r\n");
}

TEST(AtCommands, resultCodesAreShortOrLeftOutOnRequest)
{
    TalkingModem modem;
    EXPECT_EQ(modem.say("ATV0\r"), "0\r");
    EXPECT_EQ(modem.say("AT+NONE\r"), "4\r");
    EXPECT_EQ(modem.say("ATA\r"), "3\r");
    EXPECT_EQ(modem.say("AT+CSQ\r"), "+CSQ: 20,99\r\n0\r");
    EXPECT_EQ(modem.say("ATV1Q1\r"), "");
    EXPECT_EQ(modem.say("AT+CSQ\r"), "\r\n+CSQ: 20,99\r\n");
    EXPECT_EQ(modem.say("AT+NONE\r"), "");
    EXPECT_EQ(modem.say("ATQ0\r"), "\r\nOK\r\n");
}

TEST(AtCommands, errorsOfTheEquipmentAreShownAsAsked)
{
    TalkingModem modem;
    EXPECT_EQ(modem.ask("AT+CREG=9"), "ERROR");
    EXPECT_EQ(modem.ask("AT+CMEE=1;+CREG=9"), "+CME ERROR: 50");
    EXPECT_EQ(modem.ask("AT+CMEE?"), "+CMEE: 1|OK");
    EXPECT_EQ(modem.ask("AT+CMEE=2;+CREG=9"), "+CME ERROR: Incorrect parameters");
    EXPECT_EQ(modem.ask("AT+CPIN=\"1234\""), "+CME ERROR: operation not allowed");
    EXPECT_EQ(modem.ask("AT+CMEE=?"), "+CMEE: (0,1,2)|OK");
    EXPECT_EQ(modem.ask("AT+NONE"), "ERROR");
    EXPECT_EQ(modem.ask("AT+CMGR=1"), "+CMS ERROR: 321");
    EXPECT_EQ(modem.ask("AT+CMEE=0;+CMEE=3"), "ERROR");
}

TEST(AtCommands, resettingBringsTheProfileBack)
{
    for (const char *reset : {"ATZ", "AT&F", "AT+CFUN=1,1"}) {
        TalkingModem modem;
        modem.ask("AT+CMEE=1;+CMGF=1;+CREG=1;+CSCS=\"UCS2\"");
        modem.ask(reset);
        modem.ask("ATE0");
        EXPECT_EQ(modem.ask("AT+CMEE?;+CMGF?;+CREG?;+CSCS?"),
                  "+CMEE: 0|+CMGF: 0|+CREG: 0,1|+CSCS: \"GSM\"|OK")
            << reset;
    }
}

TEST(AtCommands, theClockTellsTheZoneInQuartersOfAnHour)
{
    struct Row
    {
        int offset;
        const char *answer;
    };
    for (const Row &row : {Row{7200, "+CCLK: \"26/03/09,08:05:07+08\"|OK"},
                           Row{-12600, "+CCLK: \"26/03/09,08:05:07-14\"|OK"},
                           Row{0, "+CCLK: \"26/03/09,08:05:07+00\"|OK"}}) {
        ModemSettings settings;
        settings.clock = [&row] {
            return QDateTime(QDate(2026, 3, 9), QTime(8, 5, 7), Qt::OffsetFromUTC, row.offset);
        };
        TalkingModem modem(settings);
        EXPECT_EQ(modem.ask("AT+CCLK?"), row.answer);
    }
}

TEST(AtCommands, bytesMayComeOneByOneWithLineFeedsAndCorrections)
{
    TalkingModem modem;
    QByteArray answer;
    for (const char byte : QByteArray("\nAT+CSX\x08Q\r\n\nAT\r"))
        answer += modem.say(QByteArray(1, byte));
    EXPECT_EQ(answer, "\r\n+CSQ: 20,99\r\n\r\nOK\r\n\r\nOK\r\n");
}

TEST(AtCommands, aLineBeyondTheBufferIsAnErrorAndTheNextOneIsRead)
{
    TalkingModem modem;
    EXPECT_EQ(modem.ask("AT" + QByteArray(2046, ' ')), "OK");
    EXPECT_EQ(modem.ask("AT" + QByteArray(2047, ' ')), "ERROR");
    EXPECT_EQ(modem.ask("AT"), "OK");
}

TEST(AtCommands, overriddenNamesAndStatesAreTold)
{
    ModemSettings settings;
    settings.manufacturer = "Maker";
    settings.model = "Thing";
    settings.imei = "123456789012345";
    settings.iccid = "8900000000000000001";
    settings.imsi = "00101";
    settings.signal = 7;
    settings.registered = 5;
    TalkingModem modem(settings);
    EXPECT_EQ(modem.ask("AT+CGMI;+CGMM;+CGSN;+CIMI;+CSQ;+CREG?"),
              "Maker|Thing|123456789012345|00101|+CSQ: 7,99|+CREG: 0,5|OK");
    EXPECT_EQ(modem.ask("AT+CCID"), "+CCID: 8900000000000000001|OK");
}

TEST(AtCommands, theFormatsOfMessagesCanBeLimited)
{
    ModemSettings settings;
    settings.formats = Formats::TextOnly;
    TalkingModem text(settings);
    EXPECT_EQ(text.ask("AT+CMGF?;+CMGF=?;+CMGF=0"), "+CMGF: 1|+CMGF: (1)|+CMS ERROR: 302");
    EXPECT_EQ(text.ask("AT&FE0;+CMGF?"), "+CMGF: 1|OK");
    settings.formats = Formats::PduOnly;
    TalkingModem pdu(settings);
    EXPECT_EQ(pdu.ask("AT+CMGF?;+CMGF=?;+CMGF=1"), "+CMGF: 0|+CMGF: (0)|+CMS ERROR: 302");
}

} // namespace simulator

} // namespace norvane
