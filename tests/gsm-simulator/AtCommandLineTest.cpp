#include "gsm-simulator/AtCommandLine.h"

#include <QByteArrayList>

#include <gtest/gtest.h>

namespace norvane {

namespace simulator {

namespace {

/// Each command of a line as name, form and arguments; "!" for what is none.
QByteArray commandsOf(const QByteArray &body)
{
    AtCommandLine line(body);
    QByteArrayList found;
    while (!line.atEnd()) {
        const std::optional<AtCommand> command = line.next();
        if (!command) {
            found += "!";
            break;
        }
        found += command->name + '/' + "XRTS"[static_cast<int>(command->form)] + '/' +
                 command->arguments;
    }
    return found.join(' ');
}

} // namespace

TEST(AtCommandLine, takesEachCommandOfALine)
{
    struct Row
    {
        const char *body;
        const char *commands;
    };
    static constexpr Row rows[] = {
        {"", ""},
        {" ; ", ""},
        {"E0", "E/X/0"},
        {"e0v1q0", "E/X/0 V/X/1 Q/X/0"},
        {"Z", "Z/X/"},
        {"&F", "&F/X/"},
        {"&F0E1", "&F/X/0 E/X/1"},
        {"&", "!"},
        {"&1", "!"},
        {"S0=12S3?", "S0/S/12 S3/R/"},
        {"S", "S/X/"},
        {"+CSQ", "+CSQ/X/"},
        {"+csq;+CREG?;+CMEE=?", "+CSQ/X/ +CREG/R/ +CMEE/T/"},
        {"E0+CMGF=0;+CSQ;V1", "E/X/0 +CMGF/S/0 +CSQ/X/ V/X/1"},
        {"+CPIN=\"12;34\";I", "+CPIN/S/\"12;34\" I/X/"},
        {"+COPS=3,0 ;I", "+COPS/S/3,0 I/X/"},
        {"^ICCID?", "^ICCID/R/"},
        {"+CSQ!x", "+CSQ!x/X/"},
        {"+", "+/X/"},
        {"DT123;I", "D/X/T123;I"},
        {"?", "!"},
        {"E0?", "E/X/0 !"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(commandsOf(row.body), row.commands) << row.body;
}

TEST(AtCommandLine, argumentsAreSplitAtCommasOutsideQuotes)
{
    const std::vector<AtArgument> arguments = splitArguments("1, \"a, b\",,\"\"");
    ASSERT_EQ(arguments.size(), 4U);
    EXPECT_EQ(arguments[0].text, "1");
    EXPECT_FALSE(arguments[0].quoted);
    EXPECT_EQ(arguments[1].text, "a, b");
    EXPECT_TRUE(arguments[1].quoted);
    EXPECT_EQ(arguments[2].text, "");
    EXPECT_FALSE(arguments[2].quoted);
    EXPECT_EQ(arguments[3].text, "");
    EXPECT_TRUE(arguments[3].quoted);
    EXPECT_EQ(splitArguments("").size(), 1U);
}

TEST(AtCommandLine, numbersAreDigitsOfLimitedLengthOrLeftOut)
{
    EXPECT_EQ(numbersOf("1,,9999999"), (std::vector<int>{1, -1, 9999999}));
    EXPECT_EQ(numbersOf(""), std::vector<int>{-1});
    for (const char *bad : {"10000000", "\"1\"", "-1", "1x", "0x1"})
        EXPECT_EQ(numbersOf(bad), std::nullopt) << bad;
}

} // namespace simulator

} // namespace norvane
