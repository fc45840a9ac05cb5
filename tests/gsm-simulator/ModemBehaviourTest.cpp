#include "gsm-simulator/TalkingModem.h"

#include <set>

namespace norvane {

namespace simulator {

using std::chrono::milliseconds;

TEST(Latency, theAnswerComesWhenThePauseHasPassed)
{
    ModemSettings settings;
    settings.latency = milliseconds(250);
    TalkingModem modem(settings);
    EXPECT_EQ(modem.submitHello(), "");
    EXPECT_EQ(modem.pause, milliseconds(250));
    EXPECT_TRUE(modem.interpreter.isPaused());
    EXPECT_TRUE(modem.accepted.empty());
    EXPECT_EQ(modem.resume(), "\r\n+CMGS: 0\r\n\r\nOK\r\n");
    EXPECT_EQ(modem.accepted.size(), 1U);
    EXPECT_FALSE(modem.interpreter.isPaused());
    EXPECT_EQ(modem.resume(), "");
    EXPECT_EQ(modem.accepted.size(), 1U);
}

TEST(ModemBehaviour, tellsThatAnAnswerIsStillToCome)
{
    ModemSettings settings;
    settings.latency = milliseconds(250);
    TalkingModem modem(settings);
    EXPECT_EQ(modem.control("count submitting"), "ok 0");
    modem.submitHello();
    EXPECT_EQ(modem.control("count submitting"), "ok 1");
    modem.resume();
    EXPECT_EQ(modem.control("count submitting"), "ok 0");
}

TEST(Latency, whatIsWrittenMeanwhileIsReadAfterTheAnswer)
{
    ModemSettings settings;
    settings.latency = milliseconds(1);
    TalkingModem modem(settings);
    modem.say("AT+CMGS=23\r" + helloPdu + "\x1A" + "AT+CSQ\r");
    EXPECT_EQ(modem.say("AT+CMGS=23\r" + helloPdu + '\x1A'), "");
    EXPECT_EQ(modem.resume(), "\r\n+CMGS: 0\r\n\r\nOK\r\n\r\n+CSQ: 20,99\r\n\r\nOK\r\n\r\n> ");
    EXPECT_EQ(modem.pause, milliseconds(1));
    EXPECT_EQ(modem.resume(), "\r\n+CMGS: 1\r\n\r\nOK\r\n");
}

TEST(Latency, whatTheModemRefusesByItselfIsAnsweredAtOnce)
{
    ModemSettings settings;
    settings.latency = milliseconds(250);
    TalkingModem modem(settings);
    EXPECT_EQ(modem.submitPdu("00", 1), "+CMS ERROR: 304");
    EXPECT_EQ(modem.pause, milliseconds(0));
    EXPECT_EQ(modem.ask("AT+CSQ"), "+CSQ: 20,99|OK");
}

TEST(Latency, aRefusalOfTheNetworkTakesItsTime)
{
    ModemSettings settings;
    settings.latency = milliseconds(250);
    settings.failEvery = 1;
    settings.failCode = 304;
    TalkingModem modem(settings);
    EXPECT_EQ(modem.submitHello(), "");
    EXPECT_EQ(modem.resume(), "\r\n+CMS ERROR: 304\r\n");
}

TEST(Latency, theBufferOfAWaitingModemIsBounded)
{
    ModemSettings settings;
    settings.latency = milliseconds(1);
    TalkingModem modem(settings);
    modem.submitHello();
    for (int i = 0; i < 10000; ++i)
        modem.say("AT\r");
    EXPECT_LE(modem.resume().size(), 16384 / 3 * 6 + 100);
}

TEST(Failures, everyNthSubmissionIsRefusedWithTheCode)
{
    ModemSettings settings;
    settings.failEvery = 3;
    settings.failCode = 42;
    TalkingModem modem(settings);
    QByteArrayList answers;
    for (int i = 0; i < 7; ++i)
        answers += modem.submitHello();
    EXPECT_EQ(answers,
              (QByteArrayList{"+CMGS: 0|OK", "+CMGS: 1|OK", "+CMS ERROR: 42", "+CMGS: 2|OK",
                              "+CMGS: 3|OK", "+CMS ERROR: 42", "+CMGS: 4|OK"}));
    EXPECT_EQ(modem.accepted.size(), 5U);
}

TEST(Failures, whatIsNoMessageIsNotCounted)
{
    ModemSettings settings;
    settings.failEvery = 2;
    TalkingModem modem(settings);
    EXPECT_EQ(modem.submitHello(), "+CMGS: 0|OK");
    EXPECT_EQ(modem.submitPdu("00", 1), "+CMS ERROR: 304");
    EXPECT_EQ(modem.submitHello(), "+CMS ERROR: 38");
}

TEST(Failures, theyAreOfTextSubmissionsToo)
{
    ModemSettings settings;
    settings.failEvery = 1;
    settings.formats = Formats::TextOnly;
    TalkingModem modem(settings);
    EXPECT_EQ(modem.submitText("\"1\"", "hello"), "+CMS ERROR: 38");
}

TEST(Silence, nothingIsEverSaid)
{
    ModemSettings settings;
    settings.silent = true;
    settings.unsolicited = true;
    settings.noise = true;
    AtInterpreter modem(settings);
    EXPECT_EQ(modem.take("AT\rAT+CMGS=23\r" + helloPdu + '\x1A').output, "");
    EXPECT_TRUE(modem.take("AT\r").accepted.empty());
    EXPECT_EQ(modem.unsolicitedLine(), "");
}

TEST(Unplugging, happensAfterTheLastMessageAndItsAnswer)
{
    ModemSettings settings;
    settings.dropAfter = 2;
    TalkingModem modem(settings);
    EXPECT_EQ(modem.submitHello(), "+CMGS: 0|OK");
    EXPECT_FALSE(modem.unplugged);
    EXPECT_EQ(modem.submitHello(), "+CMGS: 1|OK");
    EXPECT_TRUE(modem.unplugged);
    EXPECT_EQ(modem.accepted.size(), 2U);
    EXPECT_EQ(modem.say("AT\r"), "");
    EXPECT_EQ(modem.interpreter.unsolicitedLine(), "");
}

TEST(Unplugging, canTakeTheLastAnswerAlong)
{
    ModemSettings settings;
    settings.dropAfter = 1;
    settings.loseLastAnswer = true;
    TalkingModem modem(settings);
    EXPECT_EQ(modem.submitHello(), "");
    EXPECT_TRUE(modem.unplugged);
    EXPECT_EQ(modem.accepted.size(), 1U);
}

TEST(Unplugging, refusedSubmissionsAreNotCounted)
{
    ModemSettings settings;
    settings.dropAfter = 1;
    settings.failEvery = 1;
    TalkingModem modem(settings);
    EXPECT_EQ(modem.submitHello(), "+CMS ERROR: 38");
    EXPECT_FALSE(modem.unplugged);
}

TEST(Noise, standsBetweenLinesAndNeverWithinOne)
{
    ModemSettings settings;
    settings.noise = true;
    TalkingModem modem(settings);
    int disturbed = 0;
    for (int i = 0; i < 200; ++i) {
        const QByteArray answer = modem.say("AT+CSQ\r");
        ASSERT_TRUE(answer.endsWith("\r\n+CSQ: 20,99\r\n\r\nOK\r\n"));
        const qsizetype start = answer.indexOf('\r');
        EXPECT_LE(start, 6);
        for (const char byte : answer.left(start))
            EXPECT_GE(static_cast<unsigned char>(byte), 0x80);
        disturbed += start > 0 ? 1 : 0;
    }
    EXPECT_GT(disturbed, 100);
    const QByteArray prompt = modem.say("AT+CMGS=23\r");
    EXPECT_TRUE(prompt.endsWith("\r\n> "));
    EXPECT_TRUE(modem.say(helloPdu + '\x1A').endsWith("\r\n+CMGS: 0\r\n\r\nOK\r\n"));
}

TEST(Noise, endsWithALineEndWhereShortAnswersHaveNone)
{
    ModemSettings settings;
    settings.noise = true;
    TalkingModem modem(settings);
    modem.say("ATV0\r");
    for (int i = 0; i < 20; ++i)
        EXPECT_TRUE(modem.say("AT\r").endsWith("\r\n0\r"));
}

TEST(Noise, isTheSameForTheSameSeed)
{
    const auto conversation = [](unsigned seed) {
        ModemSettings settings;
        settings.noise = true;
        settings.seed = seed;
        TalkingModem modem(settings);
        QByteArray all;
        for (int i = 0; i < 20; ++i)
            all += modem.say("AT\r");
        return all;
    };
    EXPECT_EQ(conversation(1), conversation(1));
    EXPECT_NE(conversation(1), conversation(2));
}

TEST(UnsolicitedLines, standWholeInFrontOfAnswers)
{
    ModemSettings settings;
    settings.unsolicited = true;
    TalkingModem modem(settings);
    const QByteArray answer = "\r\n+CSQ: 20,99\r\n\r\nOK\r\n";
    std::set<QByteArray> seen;
    for (int i = 0; i < 30; ++i) {
        const QByteArray said = modem.say("AT+CSQ\r");
        ASSERT_TRUE(said.endsWith(answer));
        if (said != answer)
            seen.insert(said.chopped(answer.size()));
    }
    EXPECT_EQ(seen,
              (std::set<QByteArray>{"\r\nRING\r\n", "\r\n+CMTI: \"SM\",1\r\n", "\r\n^RSSI: 18\r\n",
                                    "\r\n+CREG: 1\r\n", "\r\n+CIEV: 2,4\r\n"}));
}

TEST(UnsolicitedLines, waitWhileSomethingIsBeingWritten)
{
    TalkingModem modem;
    EXPECT_EQ(modem.interpreter.unsolicitedLine(), "\r\nRING\r\n");
    modem.say("AT");
    EXPECT_EQ(modem.interpreter.unsolicitedLine(), "");
    modem.say("+CMGS=23\r");
    EXPECT_EQ(modem.interpreter.unsolicitedLine(), "");
    modem.say(helloPdu + '\x1A');
    EXPECT_EQ(modem.interpreter.unsolicitedLine(), "\r\n+CMTI: \"SM\",1\r\n");
}

TEST(UnsolicitedLines, comeWhileTheNetworkIsBeingWaitedFor)
{
    ModemSettings settings;
    settings.latency = milliseconds(1);
    TalkingModem modem(settings);
    modem.submitHello();
    EXPECT_EQ(modem.interpreter.unsolicitedLine(), "\r\nRING\r\n");
}

} // namespace simulator

} // namespace norvane
