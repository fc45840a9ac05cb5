#include "gsm-simulator/TalkingModem.h"

namespace norvane {

namespace simulator {

namespace {

struct Row
{
    const char *settings;
    const char *arguments;
    QByteArray entry;
    const char *number;
    const char16_t *text;
};

TalkingModem textModem(const QByteArray &settings)
{
    TalkingModem modem;
    modem.ask("AT+CMGF=1");
    EXPECT_EQ(modem.ask(settings), "OK");
    return modem;
}

} // namespace

TEST(TextSubmission, numberAndTextArriveInEachCharacterSet)
{
    const Row rows[] = {
        {"AT", "\"+34600111222\"", "hello", "+34600111222", u"hello"},
        {"AT", "\"600111222\"", "hello", "600111222", u"hello"},
        {"AT", "\"34600111222\",145", "hello", "+34600111222", u"hello"},
        {"AT", "\"+34600111222\",145", "hello", "+34600111222", u"hello"},
        {"AT", "\"600111222\",129", "hello", "600111222", u"hello"},
        {"AT", "\"*1#\"", "hello", "*1#", u"hello"},
        {"AT+CSCS=\"GSM\"", "\"1\"", QByteArray("\x00\x02", 2), "1", u"@$"},
        {"AT+CSCS=\"IRA\"", "\"1\"", "a@$", "1", u"a@$"},
        {"AT+CSCS=\"8859-1\"", "\"1\"", "\xE9\xF1", "1", u"éñ"},
        {"AT+CSCS=\"UTF-8\"", "\"1\"", "ñ€", "1", u"ñ€"},
        {"AT+CSCS=\"HEX\"", "\"1\"", "1B6500", "1", u"€@"},
        {"AT+CSCS=\"UCS2\"", "\"002B0031\"", "00E920AC", "+1", u"é€"},
        {"AT+CSCS=\"UCS2\"", "\"+1\"", "0041", "+1", u"A"},
        {"AT+CSMP=17,167,0,8", "\"1\"", "0416D83DDE00", "1", u"Ж\U0001F600"},
        {"AT+CSMP=17,167,0,4", "\"1\"", "41FF", "1", u"A\u00FF"},
        {"AT", "\"1\"", "one\rtwo", "1", u"one\rtwo"},
        {"AT", "\"1\"",
         "onn\x08"
         "e",
         "1", u"one"},
        {"AT", "\"1\"", "\nhello", "1", u"hello"},
        {"AT", "\"1\"", "", "1", u""},
    };
    for (const Row &row : rows) {
        TalkingModem modem = textModem(row.settings);
        EXPECT_TRUE(modem.submitText(row.arguments, row.entry).endsWith("+CMGS: 0|OK"))
            << row.settings << ' ' << row.entry.data();
        ASSERT_EQ(modem.accepted.size(), 1U) << row.settings << ' ' << row.entry.data();
        EXPECT_EQ(modem.accepted[0].part.number, QString::fromLatin1(row.number));
        EXPECT_EQ(modem.accepted[0].part.text, QString::fromUtf16(row.text));
        EXPECT_EQ(modem.accepted[0].part.pdu, "");
    }
}

TEST(TextSubmission, textsThatDoNotFitTheirFormAreRefused)
{
    const Row rows[] = {
        {"AT+CSCS=\"GSM\"", "\"1\"", "\xE9", "", u""},
        {"AT+CSCS=\"IRA\"", "\"1\"", "\xE9", "", u""},
        {"AT+CSCS=\"UTF-8\"", "\"1\"", "\xE9", "", u""},
        {"AT+CSCS=\"UTF-8\"", "\"1\"", "Ж", "", u""},
        {"AT+CSCS=\"UCS2\"", "\"1\"", "0416", "", u""},
        {"AT+CSCS=\"UCS2\"", "\"1\"", "00E", "", u""},
        {"AT+CSCS=\"HEX\"", "\"1\"", "8041", "", u""},
        {"AT+CSMP=17,167,0,8", "\"1\"", "hello", "", u""},
        {"AT+CSMP=17,167,0,8", "\"1\"", "041600", "", u""},
        {"AT+CSMP=17,167,0,12", "\"1\"", "hello", "", u""},
        {"AT+CSMP=81,167,0,0", "\"1\"", "hello", "", u""},
        {"AT", "\"1\"", QByteArray(161, 'a'), "", u""},
        {"AT+CSCS=\"HEX\"", "\"1\"", QByteArray("1B65").repeated(81), "", u""},
        {"AT", "\"1\"", QByteArray(5000, 'a'), "", u""},
    };
    for (const Row &row : rows) {
        TalkingModem modem = textModem(row.settings);
        EXPECT_EQ(modem.submitText(row.arguments, row.entry), "+CMS ERROR: 305")
            << row.settings << ' ' << row.entry.data();
        EXPECT_TRUE(modem.accepted.empty());
    }
}

TEST(TextSubmission, aMessageHolds160Septets)
{
    TalkingModem modem = textModem("AT");
    EXPECT_EQ(modem.submitText("\"1\"", QByteArray(160, 'a')), "+CMGS: 0|OK");
    ASSERT_EQ(modem.accepted.size(), 1U);
    EXPECT_EQ(modem.accepted[0].part.text.size(), 160);
}

TEST(TextSubmission, recipientsThatAreNoNumberOpenNoPrompt)
{
    TalkingModem modem = textModem("AT");
    for (const char *arguments : {"\"\"", "\"abc\"", "\"+\"", "\"123456789012345678901\"",
                                  "\"1\",127", "\"1\",256", "\"1\",x", "\"1\",145,1"})
        EXPECT_EQ(modem.submitText(arguments, "hello"), "+CMS ERROR: 305") << arguments;
}

TEST(TextSubmission, eachLineOfATextOpensThePromptAgain)
{
    TalkingModem modem = textModem("AT");
    modem.say("AT+CMGS=\"1\"\r");
    EXPECT_EQ(modem.say("one\r"), "\r\n> ");
    EXPECT_EQ(modem.say("two\x1A"), "\r\n+CMGS: 0\r\n\r\nOK\r\n");
}

TEST(TextSubmission, escapeGivesTheTextUp)
{
    TalkingModem modem = textModem("AT");
    modem.say("AT+CMGS=\"1\"\r");
    EXPECT_EQ(modem.say("one\x1B"), "\r\nOK\r\n");
    EXPECT_TRUE(modem.accepted.empty());
}

TEST(TextSubmission, aHeaderComesInHexadecimalDigits)
{
    struct HeaderRow
    {
        const char *settings;
        const char *entry;
        const char16_t *text;
    };
    const HeaderRow rows[] = {
        {"AT+CSMP=81,167,0,0", "050003CC0201906536FB0D", u"Hello"},
        {"AT+CSMP=81,167,0,0", "050003CC0201C4", u"b"},
        // The last seven bits of fourteen octets are fill, no "@".
        {"AT+CSMP=81,167,0,0", "050003CC020182C221B1683C2201", u"ABCDEFGH"},
        {"AT+CSMP=81,167,0,8", "050003CC02010416", u"Ж"},
        {"AT+CSMP=81,167,0,4", "050003CC020141", u"A"},
    };
    for (const HeaderRow &row : rows) {
        TalkingModem modem = textModem(row.settings);
        EXPECT_EQ(modem.submitText("\"1\"", row.entry), "+CMGS: 0|OK") << row.entry;
        ASSERT_EQ(modem.accepted.size(), 1U) << row.entry;
        EXPECT_EQ(modem.accepted[0].part.text, QString::fromUtf16(row.text));
        EXPECT_EQ(modem.accepted[0].part.concatenation, (Concatenation{0xCC, 1, 2}));
    }
}

} // namespace simulator

} // namespace norvane
