#include "gsm-simulator/TurnedClock.h"

#include <random>

namespace norvane {

namespace simulator {

namespace {

class Control : public TurnedClock
{
protected:
    TalkingModem modem{settings()};
};

const QByteArray hello = R"(deliver {"from":"1","text":"hello"})"_ba;

} // namespace

TEST_F(Control, tellsHowManyPartsWereDelivered)
{
    EXPECT_EQ(modem.control(hello), "ok 1");
    const QByteArray text = QByteArray("a").repeated(161);
    EXPECT_EQ(modem.control("deliver {\"from\":\"1\",\"text\":\"" + text + "\"}"), "ok 2");
    EXPECT_EQ(modem.control("deliver {\"from\":\"1\",\"order\":[1,2,2],\"text\":\"" + text + "\"}"),
              "ok 3");
    EXPECT_EQ(modem.control("deliver {\"from\":\"1\",\"order\":[1,3],\"text\":\"" + text + "\"}"),
              "error there are only 2 parts");
    EXPECT_EQ(modem.control("count messages"), "ok 6");
}

TEST_F(Control, countsAndMeasures)
{
    EXPECT_EQ(modem.control("count sent"), "ok 0");
    modem.submitHello();
    modem.submitWithRequest();
    EXPECT_EQ(modem.control("count sent"), "ok 2");
    EXPECT_EQ(modem.control("count reports"), "ok 1");
    EXPECT_EQ(modem.control("memory SM"), "ok 0 20");
    modem.control(hello);
    modem.wake();
    EXPECT_EQ(modem.control("memory SM"), "ok 1 20");
    EXPECT_EQ(modem.control("memory SR"), "ok 0 20");
}

TEST_F(Control, reportsOnAMessageByItsReference)
{
    modem.ask("AT+CNMI=2,0,0,1;+CMGF=1");
    EXPECT_EQ(modem.control("report 0 0"),
              "error no message of that reference, or too many reports");
    modem.submitText("\"+346\"", "x");
    EXPECT_EQ(modem.control("report 0 70"), "ok");
    EXPECT_EQ(modem.wake(), "+CDS: 6,0,\"+346\",145,\"26/03/09,12:00:00+04\","
                            "\"26/03/09,12:00:00+04\",70");
    EXPECT_EQ(modem.control("report 0 0"), "ok");
    EXPECT_TRUE(modem.wake().endsWith(",0"));
}

TEST_F(Control, unplugsTheModem)
{
    const ControlCommands::Outcome outcome = modem.interpreter.control("unplug");
    EXPECT_EQ(outcome.answer, "ok");
    EXPECT_TRUE(outcome.unplugs);
    EXPECT_EQ(modem.say("AT\r"), "");
}

TEST_F(Control, setsTheRegistration)
{
    EXPECT_EQ(modem.control("registered 3"), "ok");
    EXPECT_EQ(modem.ask("AT+CREG?"), "+CREG: 0,3|OK");
    EXPECT_EQ(modem.submitHello(), "+CMS ERROR: 331");
}

TEST_F(Control, setsTheSignal)
{
    EXPECT_EQ(modem.control("signal 3"), "ok");
    EXPECT_EQ(modem.ask("AT+CSQ"), "+CSQ: 3,99|OK");
    EXPECT_EQ(modem.control("signal 99"), "ok");
    EXPECT_EQ(modem.ask("AT+CSQ"), "+CSQ: 99,99|OK");
}

TEST_F(Control, whatIsNoCommandIsAnError)
{
    for (const char *line : {"",
                             " ",
                             "hello",
                             "DELIVER {}",
                             "deliver",
                             "deliver {}",
                             "raw",
                             "raw 0",
                             "raw 00zz",
                             "raw 00",
                             "raw 0100",
                             "signal",
                             "signal 32",
                             "signal 100",
                             "report",
                             "report 1",
                             "report 1 2 3",
                             "report 256 0",
                             "report 0 256",
                             "report -1 0",
                             "report a b",
                             "report \"1\" 2",
                             "report 1,2 3",
                             "count",
                             "count all",
                             "memory",
                             "memory XX",
                             "memory sm",
                             "registered",
                             "registered 6",
                             "registered x",
                             "unplug now",
                             R"(deliver {"from":"1","text":"Ж","coding":"gsm7"})",
                             R"(deliver {"from":"1","text":"x","part":1})"}) {
        const QByteArray answer = modem.control(line);
        EXPECT_TRUE(answer.startsWith("error ")) << line << ": " << answer.data();
        EXPECT_FALSE(answer.contains('\n')) << line;
    }
    EXPECT_EQ(modem.ask("AT"), "OK");
    EXPECT_EQ(modem.control("count messages"), "ok 0");
}

TEST_F(Control, theNetworkHoldsALimitedNumber)
{
    modem.control("registered 3");
    const QByteArray report = "raw 062A0B914306101122F2622113329585406221133295854000";
    for (std::size_t i = 0; i < ServiceCentre::maxItems; ++i) {
        ASSERT_EQ(modem.control(hello), "ok 1");
        ASSERT_EQ(modem.control(report), "ok 1");
    }
    EXPECT_TRUE(modem.control(hello).startsWith("error "));
    EXPECT_TRUE(modem.control(report).startsWith("error "));
}

TEST_F(Control, anyLineIsAnsweredInOneLine)
{
    static const QByteArrayList words{
        "deliver",   " ",     "{",         "}",         "\"from\":", "\"1\"", ",",
        "\"text\":", "\"x\"", "raw ",      "report ",   "0 0",       "[",     "]",
        "00",        "count", "memory SM", "\xFF",      "\\u0000",   "order", "\"part\":1",
        "1e99",      "-1",    "null",      "\"data\":", "\"\""};
    std::mt19937 generator(20260309);
    for (int round = 0; round < 20'000; ++round) {
        QByteArray line;
        for (auto i = generator() % 12; i > 0; --i) {
            line += generator() % 8 == 0 ? QByteArray(1, static_cast<char>(generator() & 0xFFU))
                                         : words.at(static_cast<qsizetype>(
                                               generator() % static_cast<unsigned>(words.size())));
        }
        const QByteArray answer = modem.control(line.replace('\n', ' '));
        ASSERT_TRUE(answer.startsWith("ok") || answer.startsWith("error ")) << line.data();
        ASSERT_FALSE(answer.contains('\n')) << line.data();
    }
    modem.wake();
    EXPECT_EQ(modem.ask("AT"), "OK");
}

} // namespace simulator

} // namespace norvane
