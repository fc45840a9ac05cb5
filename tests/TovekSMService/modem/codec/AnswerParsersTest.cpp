#include "TovekSMService/modem/codec/AnswerParsers.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

namespace P = AnswerParsers;

struct TextRow
{
    const char *line;
    const char *expected;
};

TEST(AnswerParsers, readsFreeText)
{
    for (const TextRow &row : {TextRow{"Norvane", "Norvane"},
                               {"+CGMI: Norvane", "Norvane"},
                               {"+CGMI: \"Norvane GmbH\"", "Norvane GmbH"},
                               {"Revision: 1.0", "Revision: 1.0"},
                               {"\"", "\""},
                               {"\"\"", ""},
                               {"\"Norvane", "\"Norvane"},
                               {"Norvane\"", "Norvane\""}})
        EXPECT_EQ(P::freeText({row.line}), QString::fromLatin1(row.expected)) << row.line;
    EXPECT_EQ(P::freeText({}), QString());
    EXPECT_EQ(P::freeText({"one", "two"}), u"one"_s);
}

TEST(AnswerParsers, readsTheImei)
{
    for (const TextRow &row : {TextRow{"490154203237518", "490154203237518"},
                               {"+CGSN: \"490154203237518\"", "490154203237518"},
                               {"IMEI 4901542032375180 SVN", "4901542032375180"},
                               {"4901542032375", ""},
                               {"490154203237518000", ""},
                               {"none", ""}})
        EXPECT_EQ(P::imei({row.line}), QString::fromLatin1(row.expected)) << row.line;
    EXPECT_EQ(P::imei({"AT+GSN", "490154203237518"}), u"490154203237518"_s);
}

TEST(AnswerParsers, readsTheNumberOfTheSim)
{
    for (const TextRow &row : {TextRow{"+CCID: \"8934071100275844103\"", "8934071100275844103"},
                               {"8934071100275844103F", "8934071100275844103"},
                               {"+ICCID: 89340711002758441035", "89340711002758441035"},
                               // The bytes of the file as they lie there.
                               {"98437011007285440130", "89340711002758441003"},
                               {"984370110072854401F3", "8934071100275844103"},
                               {"9843701100728544013", "8934071100275844103"},
                               {"893407110027584410", "893407110027584410"},
                               // Of no kind that there should be: as it stands.
                               {"9143701100728544013", "9143701100728544013"},
                               {"89340711002758441F", ""},
                               {"893407110027584", ""},
                               {"89340711002758441035123", ""},
                               {"ERROR", ""}})
        EXPECT_EQ(P::iccid({row.line}), QString::fromLatin1(row.expected)) << row.line;
}

TEST(AnswerParsers, readsOperatorAndRegistration)
{
    EXPECT_EQ(P::operatorName({"+COPS: 0,0,\"Norvane, Mobile\",7"}), u"Norvane, Mobile"_s);
    EXPECT_EQ(P::operatorName({"+COPS: 0"}), QString());
    EXPECT_EQ(P::registration({"+CREG: 0,1"}, "+CREG"), 1);
    EXPECT_EQ(P::registration({"+CREG: 2,5,\"00A1\",\"0B\""}, "+CREG"), 5);
    EXPECT_EQ(P::registration({"+CREG: x"}, "+CREG"), -1);
    EXPECT_EQ(P::registration({"+CREG: 0,1"}, "+CEREG"), -1);
    EXPECT_EQ(P::registration({}, "+CREG"), -1);
}

TEST(AnswerParsers, putsNetworkInformationIntoWords)
{
    const struct
    {
        const char *name;
        int state;
        const char *expected;
    } rows[] = {
        {"Norvane", 0, "Norvane (not registered)"},
        {"Norvane", 1, "Norvane (home)"},
        {"", 2, "searching"},
        {"", 3, "denied"},
        {"", 4, "unknown"},
        {"Norvane", 5, "Norvane (roaming)"},
        {"Norvane", 6, "Norvane (home, SMS only)"},
        {"Norvane", 7, "Norvane (roaming, SMS only)"},
        {"", 8, "emergency calls only"},
        {"Norvane", 9, "Norvane (home)"},
        {"Norvane", 10, "Norvane (roaming)"},
        {"Norvane", 11, "Norvane"},
        {"Norvane", -1, "Norvane"},
        {"", -1, ""},
    };
    for (const auto &row : rows)
        EXPECT_EQ(P::networkInfo(QString::fromLatin1(row.name), row.state),
                  QString::fromLatin1(row.expected));
    for (int state = -1; state <= 11; ++state) {
        const bool expected = QList<int>{1, 5, 6, 7, 9, 10}.contains(state);
        EXPECT_EQ(P::isRegistered(state), expected) << state;
    }
}

struct NumberRow
{
    const char *line;
    int expected;
};

TEST(AnswerParsers, turnsSignalIntoPercent)
{
    for (const NumberRow &row : {NumberRow{"+CSQ: 0,0", 0},
                                 {"+CSQ: 1,99", 3},
                                 {"+CSQ: 7,99", 23},
                                 {"+CSQ: 11,99", 35},
                                 {"+CSQ: 15,99", 48},
                                 {"+CSQ: 20,99", 65},
                                 {"+CSQ: 31,0", 100},
                                 {"+CSQ: 32,0", -1},
                                 {"+CSQ: 99,99", -1},
                                 {"+CSQ: -3,0", -1},
                                 {"+CSQ: ,", -1},
                                 {"junk", -1}})
        EXPECT_EQ(P::signal({row.line}), row.expected) << row.line;
}

TEST(AnswerParsers, readsTheBattery)
{
    for (const NumberRow &row : {NumberRow{"+CBC: 0,80", 80},
                                 {"+CBC: 1,100,4100", 100},
                                 {"+CBC: 0,0", 0},
                                 {"+CBC: 0,101", -1},
                                 {"+CBC: 0,-5", -1},
                                 {"+CBC: 0", -1}})
        EXPECT_EQ(P::battery({row.line}), row.expected) << row.line;
}

std::optional<int> optional(int expected)
{
    return expected < 0 ? std::nullopt : std::optional(expected);
}

TEST(AnswerParsers, readsHowOftenAPinMayBeTried)
{
    for (const NumberRow &row : {NumberRow{"+CPINR: SIM PIN,3,3", 3},
                                 {"+CPINR: \"SIM PIN\",1", 1},
                                 {"+CPINR: SIM PUK,10,10", -1},
                                 {"+CPINR: SIM PIN,0,3", 0},
                                 {"^CPIN: SIM PIN,2,10,2,10,3", 2},
                                 {"^CPIN: SIM PIN,0,10,3,10,3", 0},
                                 {"^CPIN: SIM PIN,,10,1,10,3", 1},
                                 {"^CPIN: SIM PUK,,10,0,10,3", -1},
                                 {"OK", -1}})
        EXPECT_EQ(P::pinTries({row.line}), optional(row.expected)) << row.line;
}

TEST(AnswerParsers, readsTheMessageReference)
{
    for (const NumberRow &row : {NumberRow{"+CMGS: 12", 12},
                                 {"+CMGS: 0", 0},
                                 {"+CMGS: 255,\"time\"", 255},
                                 {"+CMGS: 256", -1},
                                 {"+CMGS:", -1},
                                 {"+CMGW: 3", -1}})
        EXPECT_EQ(P::messageReference({row.line}), optional(row.expected)) << row.line;
}

TEST(AnswerParsers, findsTheLineWithTheTag)
{
    EXPECT_EQ(P::behindTag({"x", "+csca : \"+34\",145"}, "+CSCA"), QByteArray("\"+34\",145"));
    EXPECT_EQ(P::behindTag({"+CSQ:15,99"}, "+CSQ"), QByteArray("15,99"));
    EXPECT_FALSE(P::behindTag({"+CSCAX: 1", "CSCA"}, "+CSCA").has_value());
    EXPECT_EQ(P::fields({"+CSCA: \"+34\",145"}, "+CSCA"), (QList<QByteArray>{"+34", "145"}));
    EXPECT_EQ(P::fields({"+CCLK: \"24/06/07,10:00:00+08\""}, "+CCLK"),
              QList<QByteArray>{"24/06/07,10:00:00+08"});
    EXPECT_TRUE(P::fields({}, "+CSCA").isEmpty());
    EXPECT_EQ(P::pinState({"+CPIN: sim  pin"}), "SIM PIN");
}

} // namespace

} // namespace norvane
