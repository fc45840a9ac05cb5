#include "gsm-simulator/TalkingModem.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

TEST(PduSubmission, anAcceptedMessageIsAnsweredWithItsReference)
{
    TalkingModem modem;
    EXPECT_EQ(modem.say("AT+CMGS=23\r"), "\r\n> ");
    EXPECT_EQ(modem.say(helloPdu + '\x1A'), "\r\n+CMGS: 0\r\n\r\nOK\r\n");
    ASSERT_EQ(modem.accepted.size(), 1U);
    EXPECT_EQ(modem.accepted[0].part.number, u"+46708251358"_s);
    EXPECT_EQ(modem.accepted[0].part.text, u"hellohello"_s);
    EXPECT_EQ(modem.accepted[0].part.pdu, helloPdu);
    EXPECT_EQ(modem.accepted[0].reference, 0);
}

TEST(PduSubmission, referencesCountTo255AndStartAgain)
{
    TalkingModem modem;
    for (int i = 0; i < 258; ++i)
        EXPECT_EQ(modem.submitHello(), "+CMGS: " + QByteArray::number(i % 256) + "|OK");
    EXPECT_EQ(modem.accepted.back().reference, 1);
}

TEST(PduSubmission, everyFragmentationGivesTheSame)
{
    const QByteArray whole = "AT\rAT+CMGS=23\r" + helloPdu + "\x1A" + "AT\r";
    for (qsizetype size = 1; size <= whole.size(); ++size) {
        TalkingModem modem;
        QByteArray answer;
        for (qsizetype at = 0; at < whole.size(); at += size)
            answer += modem.say(whole.mid(at, size));
        EXPECT_EQ(answer, "\r\nOK\r\n\r\n> \r\n+CMGS: 0\r\n\r\nOK\r\n\r\nOK\r\n") << size;
        EXPECT_EQ(modem.accepted.size(), 1U) << size;
    }
}

TEST(PduSubmission, theEntryIsEchoedWithoutItsEnd)
{
    AtInterpreter modem{ModemSettings()};
    EXPECT_EQ(modem.take("AT+CMGS=23\r").output, "AT+CMGS=23\r\r\n> ");
    EXPECT_EQ(modem.take(helloPdu + '\x1A').output, helloPdu + "\r\n+CMGS: 0\r\n\r\nOK\r\n");
}

TEST(PduSubmission, noCommandIsReadWhileThePromptIsOpen)
{
    TalkingModem modem;
    modem.say("AT+CMGS=23\r");
    EXPECT_EQ(modem.say("AT\rAT+CSQ\r"), "");
    EXPECT_EQ(modem.say("\x1A"), "\r\n+CMS ERROR: 304\r\n");
    EXPECT_EQ(modem.ask("AT"), "OK");
    EXPECT_TRUE(modem.accepted.empty());
}

TEST(PduSubmission, escapeGivesTheEntryUp)
{
    TalkingModem modem;
    modem.say("AT+CMGS=23\r");
    EXPECT_EQ(modem.say(helloPdu + '\x1B'), "\r\nOK\r\n");
    EXPECT_TRUE(modem.accepted.empty());
    EXPECT_EQ(modem.submitHello(), "+CMGS: 0|OK");
}

TEST(PduSubmission, theLineFeedOfTheCommandIsNoPartOfTheEntry)
{
    TalkingModem modem;
    EXPECT_EQ(modem.say("AT+CMGS=23\r\n" + helloPdu + '\x1A'), "\r\n> \r\n+CMGS: 0\r\n\r\nOK\r\n");
}

TEST(PduSubmission, lengthsThatNoPduHasOpenNoPrompt)
{
    TalkingModem modem;
    for (const char *length : {"0", "165", "", "x", "\"23\"", "23,1", "+46708251358"})
        EXPECT_EQ(modem.ask(QByteArray("AT+CMGS=") + length), "+CMS ERROR: 304") << length;
    EXPECT_EQ(modem.ask("AT+CMGS=164"), "> ");
}

TEST(PduSubmission, whatIsNoSubmitOfTheToldLengthIsRefused)
{
    struct Row
    {
        QByteArray pdu;
        int length;
    };
    const Row rows[] = {{helloPdu, 22},
                        {helloPdu, 24},
                        {helloPdu + "00", 24},
                        {helloPdu.chopped(2), 23},
                        {helloPdu.chopped(1), 23},
                        {helloPdu.chopped(2), 22},
                        {"", 23},
                        {helloPdu + "\r", 23},
                        {"zz" + helloPdu.mid(2), 23}};
    TalkingModem modem;
    for (const Row &row : rows)
        EXPECT_EQ(modem.submitPdu(row.pdu, row.length), "+CMS ERROR: 304") << row.pdu.data();
    EXPECT_TRUE(modem.accepted.empty());
    EXPECT_EQ(modem.submitHello(), "+CMGS: 0|OK");
}

TEST(PduSubmission, anEntryBeyondTheBufferIsRefused)
{
    TalkingModem modem;
    EXPECT_EQ(modem.submitPdu(helloPdu + QByteArray(100000, '0'), helloLength), "+CMS ERROR: 304");
    EXPECT_EQ(modem.submitHello(), "+CMGS: 0|OK");
}

TEST(PduSubmission, partsCarryTheirPlaceInTheWhole)
{
    TalkingModem modem;
    EXPECT_EQ(modem.submitPdu("004100098106101122F200000C050003CC0201906536FB0D", 23),
              "+CMGS: 0|OK");
    EXPECT_EQ(modem.submitPdu("004100098106101122F200000C050003CC0202906536FB0D", 23),
              "+CMGS: 1|OK");
    ASSERT_EQ(modem.accepted.size(), 2U);
    EXPECT_EQ(modem.accepted[0].part.concatenation, (Concatenation{0xCC, 1, 2}));
    EXPECT_EQ(modem.accepted[1].part.concatenation, (Concatenation{0xCC, 2, 2}));
}

TEST(PduSubmission, withoutNetworkNothingIsTaken)
{
    for (const int state : {0, 2, 3, 4}) {
        ModemSettings settings;
        settings.registered = state;
        TalkingModem modem(settings);
        EXPECT_EQ(modem.submitHello(), "+CMS ERROR: 331") << state;
        EXPECT_TRUE(modem.accepted.empty());
    }
    ModemSettings roaming;
    roaming.registered = 5;
    TalkingModem modem(roaming);
    EXPECT_EQ(modem.submitHello(), "+CMGS: 0|OK");
    modem.ask("AT+CFUN=4");
    EXPECT_EQ(modem.submitHello(), "+CMS ERROR: 331");
}

} // namespace simulator

} // namespace norvane
