#include "gsm-simulator/SimulatorOptions.h"

#include <gtest/gtest.h>

namespace simulator {

namespace {

using Wish = SimulatorOptions::Wish;

SimulatorOptions parse(const QString &more)
{
    QStringList arguments{QStringLiteral("gsm-simulator"), QStringLiteral("--link"),
                          QStringLiteral("/l"), QStringLiteral("--log"), QStringLiteral("/f")};
    return parseOptions(arguments + more.split(u' ', Qt::SkipEmptyParts));
}

} // namespace

TEST(SimulatorOptions, linkAndLogAreEnough)
{
    const SimulatorOptions options = parse({});
    EXPECT_EQ(options.wish, Wish::Run);
    EXPECT_EQ(options.link, QStringLiteral("/l"));
    EXPECT_EQ(options.log, QStringLiteral("/f"));
    EXPECT_EQ(options.modem.pin, "");
    EXPECT_EQ(options.modem.latency.count(), 0);
    EXPECT_EQ(options.modem.failEvery, 0);
    EXPECT_EQ(options.modem.failCode, 38);
    EXPECT_EQ(options.modem.dropAfter, 0);
    EXPECT_EQ(options.modem.signal, 20);
    EXPECT_EQ(options.modem.registered, 1);
    EXPECT_EQ(options.modem.formats, Formats::Both);
    EXPECT_EQ(options.modem.functionality, 1);
    EXPECT_EQ(options.modem.registerAfter.count(), 0);
    EXPECT_FALSE(options.modem.refusesBareAttention);
    EXPECT_FALSE(options.modem.silent || options.modem.noise || options.modem.unsolicited ||
                 options.modem.loseLastAnswer);
    EXPECT_EQ(options.line.bitsPerSecond, 0);
}

TEST(SimulatorOptions, everyValueArrives)
{
    const SimulatorOptions options = parse(QStringLiteral(
        "--pin 1234 --puk 87654321 --latency 250 --baud 9600 --fail-every 3 --fail-code 42 "
        "--drop-after 5 --seed 9 --urc-interval 70 --formats text --signal 31 --registered 5 "
        "--manufacturer Maker --model Thing --imei 123456789012345 --imsi 001019 "
        "--iccid 890000000000000001 --silent --noise --urc --lose-answer "
        "--functionality 4 --register-after 1500 --refuse-bare-at"));
    ASSERT_EQ(options.wish, Wish::Run) << options.refusal.toStdString();
    const ModemSettings &modem = options.modem;
    EXPECT_EQ(modem.pin, "1234");
    EXPECT_EQ(modem.puk, "87654321");
    EXPECT_EQ(modem.latency.count(), 250);
    EXPECT_EQ(options.line.bitsPerSecond, 9600);
    EXPECT_EQ(modem.failEvery, 3);
    EXPECT_EQ(modem.failCode, 42);
    EXPECT_EQ(modem.dropAfter, 5);
    EXPECT_EQ(modem.seed, 9U);
    EXPECT_EQ(options.line.unsolicitedInterval.count(), 70);
    EXPECT_EQ(modem.formats, Formats::TextOnly);
    EXPECT_EQ(modem.signal, 31);
    EXPECT_EQ(modem.registered, 5);
    EXPECT_EQ(modem.manufacturer, "Maker");
    EXPECT_EQ(modem.model, "Thing");
    EXPECT_EQ(modem.imei, "123456789012345");
    EXPECT_EQ(modem.imsi, "001019");
    EXPECT_EQ(modem.iccid, "890000000000000001");
    EXPECT_TRUE(modem.silent && modem.noise && modem.unsolicited && modem.loseLastAnswer);
    EXPECT_EQ(modem.functionality, 4);
    EXPECT_EQ(modem.registerAfter.count(), 1500);
    EXPECT_TRUE(modem.refusesBareAttention);
    EXPECT_EQ(parse(QStringLiteral("--formats pdu")).modem.formats, Formats::PduOnly);
    EXPECT_EQ(parse(QStringLiteral("--formats both")).modem.formats, Formats::Both);
    EXPECT_EQ(parse(QStringLiteral("--signal 99")).modem.signal, 99);
}

TEST(SimulatorOptions, badOnesAreRefusedByName)
{
    for (const char *bad :
         {"--baud 0",       "--baud x",          "--baud 9600.5",     "--latency -1",
          "--latency x",    "--functionality 2", "--functionality 5", "--register-after -1",
          "--fail-every 0", "--fail-code -1",    "--fail-code 65536", "--drop-after 0",
          "--seed -1",      "--urc-interval 0",  "--formats none",    "--signal 32",
          "--signal 100",   "--registered 6",    "--pin 123",         "--pin 123456789",
          "--pin 12a4",     "--puk 1234",        "--imei 1",          "--imsi 12345",
          "--iccid x",      "--model é",         "--manufacturer=",   "--imsi 0123456789012345"}) {
        const SimulatorOptions options = parse(QString::fromUtf8(bad));
        EXPECT_EQ(options.wish, Wish::Refused) << bad;
        QString name = QString::fromUtf8(bad).split(u' ').constFirst();
        name.remove(u'=');
        EXPECT_TRUE(options.refusal.contains(name)) << options.refusal.toStdString();
    }
}

TEST(SimulatorOptions, unknownOnesAndStrayWordsAreRefused)
{
    for (const char *bad : {"--unknown", "-x", "word", "--silent=1", "--baud"})
        EXPECT_EQ(parse(QString::fromLatin1(bad)).wish, Wish::Refused) << bad;
}

TEST(SimulatorOptions, linkAndLogAreNeeded)
{
    const QString program = QStringLiteral("gsm-simulator");
    EXPECT_EQ(parseOptions({program}).wish, Wish::Refused);
    EXPECT_EQ(parseOptions({program, QStringLiteral("--link"), QStringLiteral("/l")}).wish,
              Wish::Refused);
    EXPECT_EQ(parseOptions({program, QStringLiteral("--log"), QStringLiteral("/f")}).wish,
              Wish::Refused);
}

TEST(SimulatorOptions, helpNamesEveryOption)
{
    const SimulatorOptions options =
        parseOptions({QStringLiteral("gsm-simulator"), QStringLiteral("--help")});
    EXPECT_EQ(options.wish, Wish::ShowHelp);
    for (const char *name : {"--link", "--log", "--pin", "--latency", "--baud", "--fail-every",
                             "--fail-code", "--silent", "--drop-after", "--noise", "--urc"})
        EXPECT_TRUE(options.help.contains(QString::fromLatin1(name))) << name;
    EXPECT_EQ(parseOptions({QStringLiteral("gsm-simulator"), QStringLiteral("--version")}).wish,
              Wish::ShowVersion);
}

} // namespace simulator
