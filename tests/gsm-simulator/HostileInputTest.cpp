#include "gsm-simulator/TalkingModem.h"

#include <random>

namespace norvane {

namespace simulator {

namespace {

QByteArray randomBytes(std::mt19937 &generator, qsizetype length)
{
    QByteArray bytes(length, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(generator() & 0xFFU);
    return bytes;
}

} // namespace

TEST(HostileInput, anyPduIsAPartOrAFault)
{
    std::mt19937 generator(20260309);
    int parts = 0;
    for (int round = 0; round < 200000; ++round) {
        QByteArray octets = randomBytes(generator, static_cast<qsizetype>(generator() % 40));
        // Half of them get further than the first octets would let them.
        if (round % 2 == 0)
            octets.prepend(
                QByteArray::fromHex(round % 4 == 0 ? "004100048121430004" : "0001000481214300"));
        const auto result = decodeSubmission(octets.toHex(), static_cast<int>(octets.size()) - 1);
        if (const auto *part = std::get_if<SubmittedPart>(&result)) {
            ++parts;
            EXPECT_LE(part->text.size(), 160);
            EXPECT_LE(part->number.size(), 21);
        }
    }
    EXPECT_GT(parts, 0);
}

TEST(HostileInput, everyChangedOctetOfAGoodPduIsAPartOrAFault)
{
    const QByteArray good = QByteArray::fromHex(
        "07914306000000F059000B914306101122F200004211200123258A0D06080412340302C8329BFD06");
    for (qsizetype at = 0; at < good.size(); ++at) {
        for (int value = 0; value < 256; ++value) {
            QByteArray changed = good;
            changed[at] = static_cast<char>(value);
            for (qsizetype length = 0; length <= changed.size(); length += 3) {
                const int serviceCentre = static_cast<unsigned char>(changed.at(0));
                decodeSubmission(changed.left(length).toHex(),
                                 static_cast<int>(length) - 1 - serviceCentre);
            }
            const auto whole = decodeSubmission(changed.toHex(), static_cast<int>(good.size()) - 8);
            if (value == static_cast<unsigned char>(good.at(at))) {
                EXPECT_TRUE(std::holds_alternative<SubmittedPart>(whole));
            }
        }
    }
}

TEST(HostileInput, everyChangedOctetOfWhatArrivesIsAPduOrAFault)
{
    for (const char *good : {"640B914306101122F20000622113329585400D06080412340302C8329BFD06",
                             "062A0B914306101122F2622113329585406221133295854000",
                             "0407D049A7F1090008622113329585400604160041D83D"}) {
        const QByteArray octets = QByteArray::fromHex(good);
        ASSERT_TRUE(std::holds_alternative<ReceivedPdu>(readReceived(octets))) << good;
        for (qsizetype at = 0; at < octets.size(); ++at) {
            for (int value = 0; value < 256; ++value) {
                QByteArray changed = octets;
                changed[at] = static_cast<char>(value);
                for (qsizetype length = 0; length <= changed.size(); ++length)
                    readReceived(changed.left(length));
            }
        }
    }
}

TEST(HostileInput, whateverArrivesCanBeListedInEveryCharacterSet)
{
    std::mt19937 generator(20260309);
    TalkingModem modem;
    modem.ask("AT+CMGF=1;+CSDH=1;+CNMI=2,1,0,2");
    int arrived = 0;
    for (int round = 0; round < 20'000; ++round) {
        const auto length = static_cast<int>(generator() % 60);
        QByteArray octets =
            QByteArray::fromHex(round % 2 == 0 ? "440B914306101122F200" : "0407D049A7F10900");
        octets += randomBytes(generator, 1); // the coding scheme
        octets += QByteArray::fromHex("62211332958540") + static_cast<char>(length);
        octets += randomBytes(generator, round % 4 < 2 ? length : (length * 7 + 7) / 8);
        if (modem.control("raw " + octets.toHex()) != "ok 1")
            continue;
        ++arrived;
        EXPECT_TRUE(modem.wake().startsWith("+CMTI: "));
        static const QByteArrayList sets{"GSM", "UCS2", "IRA", "8859-1", "UTF-8", "HEX"};
        modem.ask("AT+CSCS=\"" + sets.at(round % sets.size()) + '"');
        EXPECT_TRUE(modem.ask("AT+CMGL=\"ALL\"").startsWith("+CMGL: 1,"));
        modem.ask("AT+CMGD=1,4");
    }
    EXPECT_GT(arrived, 1000);
}

TEST(HostileInput, theModemAnswersAfterAnyBytes)
{
    static const QByteArrayList words{"AT",
                                      "+CMGS=",
                                      "\"1\"",
                                      "\r",
                                      "\x1A",
                                      "\x1B",
                                      ";",
                                      "+CSMP=",
                                      ",",
                                      "23",
                                      helloPdu,
                                      "=?",
                                      "?",
                                      "+CPIN=",
                                      "+CMGF=1",
                                      "+CSCS=\"HEX\"",
                                      "\"",
                                      "+CNMI=",
                                      "ATE",
                                      "S99?",
                                      "+CNMI=2,2,0,1",
                                      "+CSMS=1",
                                      "+CNMA=1,2",
                                      "+CMGL=4",
                                      helloPduWithRequest,
                                      "+CPMS=\"SR\"",
                                      "+CMGR=1",
                                      "+CMGD=1,4"};
    for (unsigned seed = 0; seed < 20; ++seed) {
        std::mt19937 generator(seed);
        ModemSettings settings;
        settings.noise = seed % 2 == 0;
        settings.unsolicited = seed % 3 == 0;
        TalkingModem modem(settings);
        for (int round = 0; round < 3000; ++round) {
            if (round % 100 == 0)
                modem.control(R"(deliver {"from":"1","text":"x"})");
            const bool word = generator() % 3 != 0;
            modem.say(word ? words.at(static_cast<qsizetype>(generator() %
                                                             static_cast<unsigned>(words.size())))
                           : randomBytes(generator, static_cast<qsizetype>(generator() % 20)));
        }
        modem.say("\x1B\r");
        modem.say("ATZ\r");
        EXPECT_TRUE(modem.say("AT\r").endsWith("\r\nOK\r\n")) << seed;
    }
}

TEST(HostileInput, endlessLinesAndEntriesAreNotKept)
{
    TalkingModem modem;
    const QByteArray much(1 << 20, 'A');
    for (int i = 0; i < 32; ++i)
        modem.say(much);
    EXPECT_EQ(modem.say("\rAT\r"), "\r\nOK\r\n");
    modem.say("AT+CMGS=23\r");
    for (int i = 0; i < 32; ++i)
        modem.say(much);
    EXPECT_EQ(modem.say("\x1A"), "\r\n+CMS ERROR: 304\r\n");
    EXPECT_EQ(modem.submitHello(), "+CMGS: 0|OK");
}

} // namespace simulator

} // namespace norvane
