#include "TovekSMService/modem/codec/AtReader.h"

#include <QRandomGenerator>
#include <QString>

#include <gtest/gtest.h>

#include <array>

namespace norvane {

namespace {

using Kind = AtToken::Kind;
using ResultKind = AtResult::Kind;

QList<AtToken> pullAll(AtReader &reader)
{
    QList<AtToken> tokens;
    while (const auto token = reader.next())
        tokens.append(*token);
    return tokens;
}

/// "E:AT I:+CGMI: X F:OK": the tokens in short.
std::string inShort(const QList<AtToken> &tokens)
{
    QByteArray text;
    for (const AtToken &token : tokens) {
        static constexpr std::array letters = {'E', 'I', 'F', 'P', 'U'};
        text += (text.isEmpty() ? "" : "|");
        text += letters.at(static_cast<std::size_t>(token.kind));
        text += ':' + token.line;
    }
    return text.toStdString();
}

struct LineRow
{
    const char *command;
    const char *bytes;
    const char *tokens;
};

const LineRow lineRows[] = {
    {"AT", "AT\r\r\nOK\r\n", "E:AT|F:OK"},
    {"AT", "\r\nOK\r\n", "F:OK"},
    {"AT", "AT\r0\r", "E:AT|F:0"},
    {"ATE0", "4\r", "F:4"},
    {"ATV1", "0\r", "F:0"},
    {"AT+CGMM", "\r\n0\r\n\r\nOK\r\n", "I:0|F:OK"},
    {"AT", "\r\nERROR\r\n", "F:ERROR"},
    {"AT+CGMI", "\r\nNorvane\r\n\r\nOK\r\n", "I:Norvane|F:OK"},
    {"AT+CGMI", "\r\n+CGMI: \"Norvane\"\r\n\r\nOK\r\n", "I:+CGMI: \"Norvane\"|F:OK"},
    {"AT+CPIN?", "\r\n+CME ERROR: 10\r\n", "F:+CME ERROR: 10"},
    {"AT+CMGS=20", "\r\n+CMS ERROR: 500\r\n", "F:+CMS ERROR: 500"},
    {"AT+XYZ", "\r\nCOMMAND NOT SUPPORT\r\n", "F:COMMAND NOT SUPPORT"},
    // What a device says by itself.
    {"AT", "\r\nRING\r\n\r\nOK\r\n", "U:RING|F:OK"},
    {"AT", "\r\nRDY\r\nCall Ready\r\nSMS Ready\r\nOK\r\n", "U:RDY|U:Call Ready|U:SMS Ready|F:OK"},
    {"AT+CSQ", "\r\n+CMTI: \"SM\",3\r\n+CSQ: 20,0\r\nOK\r\n",
     "U:+CMTI: \"SM\",3|I:+CSQ: 20,0|F:OK"},
    {"AT+CSQ", "\r\n^RSSI:19\r\n*X: 1\r\nOK\r\n", "U:^RSSI:19|U:*X: 1|F:OK"},
    {"AT+CREG?", "\r\n+CREG: 1\r\n+CREG: 5,\"00A1\",\"0B\"\r\n+CREG: 2,1,\"00A1\",\"0B\"\r\nOK\r\n",
     "U:+CREG: 1|U:+CREG: 5,\"00A1\",\"0B\"|I:+CREG: 2,1,\"00A1\",\"0B\"|F:OK"},
    {"AT+CSQ", "\r\n+CREG: 0,1\r\nOK\r\n", "U:+CREG: 0,1|F:OK"},
    {"AT+CSQ", "\r\n+CMT: ,24\r\n0791AABB\r\n+CSQ: 5,0\r\nOK\r\n",
     "U:+CMT: ,24|U:0791AABB|I:+CSQ: 5,0|F:OK"},
    {"AT+CSQ", "\r\n+CMT: ,24\r\nOK\r\n", "U:+CMT: ,24|F:OK"},
    {"AT+CMGS=20", "\r\n+CDS: 25\r\n06AB\r\n+CMGS: 7\r\nOK\r\n",
     "U:+CDS: 25|U:06AB|I:+CMGS: 7|F:OK"},
    // A call that ends is nothing to a command that doesn't dial.
    {"AT+CMGS=20", "\r\nNO CARRIER\r\nBUSY\r\n+CMGS: 7\r\nOK\r\n",
     "U:NO CARRIER|U:BUSY|I:+CMGS: 7|F:OK"},
    {"ATD5551", "\r\nNO CARRIER\r\n", "F:NO CARRIER"},
    // Noise.
    {"AT", "\xFF\x80\x00O\x01K\x1A\r\n", "F:OK"},
    {"AT", "  OK  \r\n", "F:OK"},
    {"AT", "\r\n   \r\nOK\r\n", "F:OK"},
    {"AT", "NOK\r\n", "I:NOK"},
    {"AT", "OK", ""},
    {"AT", ">\r\n> OK\r\nOK\n", "I:>|I:> OK|F:OK"},
};

TEST(AtReader, tellsTheLinesOfADeviceApart)
{
    for (const LineRow &row : lineRows) {
        QByteArray bytes(row.bytes);
        if (bytes.startsWith('\xFF'))
            bytes = QByteArray("\xFF\x80\x00O\x01K\x1A\r\n", 9);
        AtReader reader;
        reader.begin(row.command);
        reader.append(bytes);
        EXPECT_EQ(inShort(pullAll(reader)), row.tokens) << row.bytes;
    }
}

TEST(AtReader, doesNotCareHowTheBytesAreCut)
{
    for (const LineRow &row : lineRows) {
        AtReader reader;
        reader.begin(row.command);
        QList<AtToken> tokens;
        for (const char byte : QByteArray(row.bytes)) {
            reader.append(QByteArrayView(&byte, 1));
            tokens += pullAll(reader);
        }
        AtReader whole;
        whole.begin(row.command);
        whole.append(QByteArray(row.bytes));
        EXPECT_EQ(inShort(tokens), inShort(pullAll(whole))) << row.bytes;
    }
}

struct ResultRow
{
    const char *line;
    ResultKind kind;
    int number;
    const char *text;
};

TEST(AtReader, readsTheNumberOrTheWordsOfAnError)
{
    const ResultRow rows[] = {
        {"OK", ResultKind::Ok, -1, ""},
        {"ERROR", ResultKind::Error, -1, ""},
        {"+CME ERROR: 16", ResultKind::CmeError, 16, "16"},
        {"+CME ERROR:16", ResultKind::CmeError, 16, "16"},
        {"+CME ERROR: SIM busy", ResultKind::CmeError, -1, "SIM busy"},
        {"+CME ERROR", ResultKind::CmeError, -1, ""},
        {"+CMS ERROR: 0", ResultKind::CmsError, 0, "0"},
        {"+CMS ERROR: network timeout", ResultKind::CmsError, -1, "network timeout"},
        {"+CMS ERROR: -5", ResultKind::CmsError, -1, "-5"},
        {"+CMS ERROR: 99999999999", ResultKind::CmsError, -1, "99999999999"},
        {"TOO MANY PARAMETERS", ResultKind::NotSupported, -1, "TOO MANY PARAMETERS"},
    };
    for (const ResultRow &row : rows) {
        AtReader reader;
        reader.begin("AT+CMGS=1");
        reader.append(QByteArray(row.line) + "\r\n");
        const QList<AtToken> tokens = pullAll(reader);
        ASSERT_EQ(tokens.size(), 1) << row.line;
        EXPECT_EQ(tokens[0].kind, Kind::Final) << row.line;
        EXPECT_EQ(tokens[0].result.kind, row.kind) << row.line;
        EXPECT_EQ(tokens[0].result.number, row.number) << row.line;
        EXPECT_EQ(tokens[0].result.text, row.text) << row.line;
    }
}

TEST(AtReader, seesThePromptOnlyWhereItIsExpectedAndAtTheBeginningOfALine)
{
    AtReader reader;
    reader.begin("AT+CMGS=12");
    reader.expectPrompt(true);
    reader.append("AT+CMGS=12\r\r\n> ");
    EXPECT_EQ(inShort(pullAll(reader)), "E:AT+CMGS=12|P:> ");

    reader.expectPrompt(false);
    reader.payloadSent("00110022");
    reader.append("00110022\x1A\r\n+CMGS: 4\r\n\r\nOK\r\n");
    EXPECT_EQ(inShort(pullAll(reader)), "E:00110022|I:+CMGS: 4|F:OK");

    reader.begin("AT+CMGS=12");
    reader.append("\r\n> ");
    EXPECT_EQ(inShort(pullAll(reader)), "");

    AtReader later;
    later.begin("AT+CMGS=12");
    later.expectPrompt(true);
    later.append("x> \r\n");
    EXPECT_EQ(inShort(pullAll(later)), "I:x>");
    later.append(">\r\n");
    EXPECT_EQ(inShort(pullAll(later)), "P:>");
    later.append("\r\nRING\r\n> ");
    EXPECT_EQ(inShort(pullAll(later)), "U:RING|P:> ");
}

TEST(AtReader, takesTheAnswerByTheNamesItIsToldOf)
{
    AtReader reader;
    reader.begin("AT+CCID", {"+ICCID"});
    reader.append("+ICCID: 89\r\n+CCID: 90\r\n^SCID: 91\r\nOK\r\n");
    EXPECT_EQ(inShort(pullAll(reader)), "I:+ICCID: 89|I:+CCID: 90|U:^SCID: 91|F:OK");
}

TEST(AtReader, everythingIsUnsolicitedWithoutACommand)
{
    AtReader reader;
    reader.append("OK\r\n+CREG: 1\r\nhello\r\n");
    EXPECT_EQ(inShort(pullAll(reader)), "U:OK|U:+CREG: 1|U:hello");
    reader.begin("AT");
    reader.end();
    reader.append("OK\r\n");
    EXPECT_EQ(inShort(pullAll(reader)), "U:OK");
}

TEST(AtReader, whatWasReadBeforeACommandDoesNotAnswerIt)
{
    AtReader reader;
    reader.begin("AT+CSQ");
    reader.append("OK\r\nOK\r\n");
    const auto first = reader.next();
    ASSERT_TRUE(first.has_value());
    EXPECT_EQ(first->kind, Kind::Final);
    reader.begin("AT+CBC");
    EXPECT_EQ(inShort(pullAll(reader)), "U:OK");
    reader.append("OK\r\n");
    EXPECT_EQ(inShort(pullAll(reader)), "F:OK");
}

TEST(AtReader, cutsALineThatNeverEnds)
{
    AtReader reader;
    reader.begin("AT");
    for (int i = 0; i < 1000; ++i) {
        reader.append(QByteArray(1000, 'x'));
        EXPECT_TRUE(pullAll(reader).isEmpty());
    }
    EXPECT_EQ(reader.unfinishedLine().size(), AtReader::maxLine);
    reader.append("\r\nOK\r\n");
    const QList<AtToken> tokens = pullAll(reader);
    ASSERT_EQ(tokens.size(), 2);
    EXPECT_EQ(tokens[0].line, QByteArray(AtReader::maxLine, 'x'));
    EXPECT_EQ(tokens[1].kind, Kind::Final);
}

TEST(AtReader, countsNoise)
{
    AtReader reader;
    reader.append(QByteArray("\x00\xFFok\x01\r\n", 7));
    pullAll(reader);
    EXPECT_EQ(reader.noise(), 2);
    reader.clear();
    EXPECT_EQ(reader.noise(), 0);
    reader.append("half a li");
    pullAll(reader);
    EXPECT_EQ(reader.unfinishedLine(), "half a li");
    reader.clear();
    EXPECT_TRUE(reader.unfinishedLine().isEmpty());
}

QByteArray damaged(QRandomGenerator &random, QByteArray bytes)
{
    for (int changes = random.bounded(6); changes > 0 && !bytes.isEmpty(); --changes) {
        const qsizetype at = random.bounded(static_cast<int>(bytes.size()));
        switch (random.bounded(4)) {
        case 0:
            bytes[at] = static_cast<char>(random.bounded(256));
            break;
        case 1:
            bytes.remove(at, random.bounded(8));
            break;
        case 2:
            bytes.insert(at, bytes.mid(random.bounded(static_cast<int>(bytes.size())), 20));
            break;
        default:
            bytes.insert(at,
                         QByteArray(random.bounded(3000), static_cast<char>(random.bounded(256))));
        }
    }
    return bytes;
}

TEST(AtReader, survivesAnythingAndStaysBounded)
{
    QRandomGenerator random(4711);
    for (int round = 0; round < 5000; ++round) {
        const LineRow &row = lineRows[random.bounded(static_cast<int>(std::size(lineRows)))];
        QByteArray bytes;
        for (int i = random.bounded(4); i >= 0; --i)
            bytes += damaged(random, row.bytes);

        AtReader reader;
        reader.begin(row.command);
        reader.expectPrompt(random.bounded(2) == 0);
        int tokens = 0;
        for (qsizetype at = 0; at < bytes.size();) {
            const qsizetype piece = 1 + random.bounded(40);
            reader.append(bytes.mid(at, piece));
            at += piece;
            for (const AtToken &token : pullAll(reader)) {
                ++tokens;
                ASSERT_LE(token.line.size(), AtReader::maxLine);
                ASSERT_FALSE(token.line.isEmpty());
                for (const char c : token.line)
                    ASSERT_TRUE(c >= 0x20 && c < 0x7F);
            }
            ASSERT_LE(reader.unfinishedLine().size(), AtReader::maxLine);
        }
        ASSERT_LE(tokens, bytes.size());
        // Whatever came before: the end of the line brings it back to its senses.
        reader.append("\r\n\r\nOK\r\n");
        const QList<AtToken> last = pullAll(reader);
        ASSERT_FALSE(last.isEmpty());
        ASSERT_EQ(last.last().kind, Kind::Final);
    }
}

} // namespace

} // namespace norvane
