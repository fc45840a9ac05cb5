#include "gsm-simulator/SimulatorOptions.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

using Action = SimulatorOptions::Action;

SimulatorOptions parse(const QString &more)
{
    QStringList arguments{u"gsm-simulator"_s, u"--link"_s, u"/l"_s, u"--log"_s, u"/f"_s};
    return parseOptions(arguments + more.split(u' ', Qt::SkipEmptyParts));
}

} // namespace

TEST(SimulatorOptions, linkAndLogAreEnough)
{
    const SimulatorOptions options = parse({});
    EXPECT_EQ(options.action, Action::Run);
    EXPECT_EQ(options.link, u"/l"_s);
    EXPECT_EQ(options.log, u"/f"_s);
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

TEST(SimulatorOptions, thePortIsEitherALinkOrASocket)
{
    const auto parsed = [](const QString &line) {
        return parseOptions(u"gsm-simulator --log /f "_s.append(line).split(u' '));
    };
    const SimulatorOptions options = parsed(u"--socket /s"_s);
    EXPECT_EQ(options.action, Action::Run);
    EXPECT_EQ(options.socket, u"/s"_s);
    EXPECT_EQ(options.link, QString());
    EXPECT_EQ(parsed(u"--urc"_s).action, Action::Refused);
    EXPECT_EQ(parsed(u"--socket /s --link /l"_s).action, Action::Refused);
}

TEST(SimulatorOptions, everyValueArrives)
{
    const SimulatorOptions options =
        parse(u"--pin 1234 --puk 87654321 --latency 250 --baud 9600 --fail-every 3 --fail-code 42 "
              "--drop-after 5 --seed 9 --urc-interval 70 --formats text --signal 31 --registered 5 "
              "--manufacturer Maker --model Thing --imei 123456789012345 --imsi 001019 "
              "--iccid 890000000000000001 --silent --noise --urc --lose-answer "
              "--functionality 4 --register-after 1500 --refuse-bare-at"_s);
    ASSERT_EQ(options.action, Action::Run) << options.refusal.toStdString();
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
    EXPECT_EQ(parse(u"--formats pdu"_s).modem.formats, Formats::PduOnly);
    EXPECT_EQ(parse(u"--formats both"_s).modem.formats, Formats::Both);
    EXPECT_EQ(parse(u"--signal 99"_s).modem.signal, 99);
}

TEST(SimulatorOptions, reportsAndReceptionAreAsUsualUnlessTold)
{
    const ModemSettings modem = parse({}).modem;
    EXPECT_EQ(modem.firstReference, 0);
    EXPECT_EQ(modem.reports.count, 1);
    EXPECT_EQ(modem.reports.delay.count(), 0);
    EXPECT_EQ(modem.reports.status, 0);
    EXPECT_LT(modem.reports.firstStatus, 0);
    EXPECT_EQ(modem.reports.order, ReportOrder::AsSent);
    EXPECT_LT(modem.reports.refusal, 0);
    EXPECT_TRUE(modem.reception.routesReports && modem.reception.storesReports);
    EXPECT_EQ(modem.reception.reportMemory, "SR");
    EXPECT_EQ(modem.reception.acknowledgementTimeout.count(), 5000);
    EXPECT_EQ(modem.reception.redeliverAfter.count(), 10'000);
    ASSERT_EQ(modem.reception.memories.size(), 3U);
    for (const MemorySettings &memory : modem.reception.memories)
        EXPECT_EQ(memory.places, 20);
}

TEST(SimulatorOptions, everyValueOfReportsAndReceptionArrives)
{
    const SimulatorOptions options =
        parse(u"--first-reference 250 --report twice --report-delay 70 --report-status 70 "
              "--report-first 48 --report-order reversed --report-ways cdsi --report-memory BM "
              "--refuse-report-request 69 --memories ME,BM --memory-size ME:3,BM:4 "
              "--ack-timeout 80 --redeliver-after 90 --control /c --incoming /i"_s);
    ASSERT_EQ(options.action, Action::Run) << options.refusal.toStdString();
    EXPECT_EQ(options.control, u"/c"_s);
    EXPECT_EQ(options.incoming, u"/i"_s);
    const ModemSettings &modem = options.modem;
    EXPECT_EQ(modem.firstReference, 250);
    EXPECT_EQ(modem.reports.count, 2);
    EXPECT_EQ(modem.reports.delay.count(), 70);
    EXPECT_EQ(modem.reports.status, 70);
    EXPECT_EQ(modem.reports.firstStatus, 48);
    EXPECT_EQ(modem.reports.order, ReportOrder::Reversed);
    EXPECT_EQ(modem.reports.refusal, 69);
    EXPECT_FALSE(modem.reception.routesReports);
    EXPECT_TRUE(modem.reception.storesReports);
    EXPECT_EQ(modem.reception.reportMemory, "BM");
    EXPECT_EQ(modem.reception.acknowledgementTimeout.count(), 80);
    EXPECT_EQ(modem.reception.redeliverAfter.count(), 90);
    ASSERT_EQ(modem.reception.memories.size(), 2U);
    EXPECT_EQ(modem.reception.memories.front().name, "ME");
    EXPECT_EQ(modem.reception.memories.front().places, 3);
    EXPECT_EQ(modem.reception.memories.back().places, 4);
    EXPECT_EQ(parse(u"--report never"_s).modem.reports.count, 0);
    EXPECT_TRUE(parse(u"--report-ways cds"_s).modem.reception.routesReports);
    EXPECT_FALSE(parse(u"--report-ways none"_s).modem.reception.storesReports);
    EXPECT_EQ(parse(u"--memories SM,ME"_s).modem.reception.reportMemory, "SM");
}

TEST(SimulatorOptions, badOnesAreRefusedByName)
{
    for (const char *bad : {"--baud 0",
                            "--baud x",
                            "--baud 9600.5",
                            "--latency -1",
                            "--latency x",
                            "--functionality 2",
                            "--functionality 5",
                            "--register-after -1",
                            "--fail-every 0",
                            "--fail-code -1",
                            "--fail-code 65536",
                            "--drop-after 0",
                            "--seed -1",
                            "--urc-interval 0",
                            "--formats none",
                            "--signal 32",
                            "--signal 100",
                            "--registered 6",
                            "--pin 123",
                            "--pin 123456789",
                            "--pin 12a4",
                            "--puk 1234",
                            "--imei 1",
                            "--imsi 12345",
                            "--report thrice",
                            "--report-delay -1",
                            "--report-status 256",
                            "--report-first -1",
                            "--report-order up",
                            "--report-ways all",
                            "--report-memory ME2",
                            "--memories XX",
                            "--memories SM,SM",
                            "--memories SR,SM",
                            "--memories SM,",
                            "--memory-size SM",
                            "--memory-size SM:0",
                            "--memory-size SM:1001",
                            "--memory-size BM:2",
                            "--first-reference 256",
                            "--refuse-report-request x",
                            "--ack-timeout 0",
                            "--redeliver-after 0",
                            "--iccid x",
                            "--model é",
                            "--manufacturer=",
                            "--imsi 0123456789012345"}) {
        const SimulatorOptions options = parse(QString::fromUtf8(bad));
        EXPECT_EQ(options.action, Action::Refused) << bad;
        QString name = QString::fromUtf8(bad).split(u' ').constFirst();
        name.remove(u'=');
        EXPECT_TRUE(options.refusal.contains(name)) << options.refusal.toStdString();
    }
}

TEST(SimulatorOptions, unknownOnesAndStrayWordsAreRefused)
{
    for (const char *bad : {"--unknown", "-x", "word", "--silent=1", "--baud"})
        EXPECT_EQ(parse(QString::fromLatin1(bad)).action, Action::Refused) << bad;
}

TEST(SimulatorOptions, linkAndLogAreNeeded)
{
    const QString program = u"gsm-simulator"_s;
    EXPECT_EQ(parseOptions({program}).action, Action::Refused);
    EXPECT_EQ(parseOptions({program, u"--link"_s, u"/l"_s}).action, Action::Refused);
    EXPECT_EQ(parseOptions({program, u"--log"_s, u"/f"_s}).action, Action::Refused);
}

TEST(SimulatorOptions, helpNamesEveryOption)
{
    const SimulatorOptions options = parseOptions({u"gsm-simulator"_s, u"--help"_s});
    EXPECT_EQ(options.action, Action::ShowHelp);
    for (const char *name :
         {"--link", "--log", "--pin", "--latency", "--baud", "--fail-every", "--fail-code",
          "--silent", "--drop-after", "--noise", "--urc", "--report-delay", "--memories",
          "--ack-timeout", "--control", "--incoming"})
        EXPECT_TRUE(options.help.contains(QString::fromLatin1(name))) << name;
    EXPECT_EQ(parseOptions({u"gsm-simulator"_s, u"--version"_s}).action, Action::ShowVersion);
}

} // namespace simulator

} // namespace norvane
