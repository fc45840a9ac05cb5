#include "gsm-simulator/RunningSimulator.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <csignal>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QByteArray answerOf(const QByteArray &text)
{
    return QByteArray(text).trimmed().replace("\r\n\r\n", "|");
}

int linesOf(const QByteArray &said)
{
    int lines = 0;
    for (const QByteArray &line : said.split('\n'))
        lines += line.trimmed().isEmpty() ? 0 : 1;
    return lines;
}

QString textOf(const QJsonObject &message)
{
    return message.value(u"text"_s).toString();
}

} // namespace

TEST(SimulatorProcess, acceptsMessagesAndLogsThemBeforeItsAnswer)
{
    const QDateTime before = QDateTime::currentDateTime();
    RunningSimulator simulator;
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    client.ask("ATE0");
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(answerOf(client.submitHello()), "+CMGS: " + QByteArray::number(i) + "|OK");
        ASSERT_EQ(simulator.messages().size(), i + 1);
    }
    const QJsonObject message = simulator.messages().constLast();
    EXPECT_EQ(message.value(u"number"_s).toString(), u"+46708251358"_s);
    EXPECT_EQ(textOf(message), u"hellohello"_s);
    EXPECT_EQ(message.value(u"pdu"_s).toString(),
              u"0011000B916407281553F80000AA0AE8329BFD4697D9EC37"_s);
    const QDateTime time =
        QDateTime::fromString(message.value(u"time"_s).toString(), Qt::ISODateWithMs);
    EXPECT_TRUE(time >= before && time <= QDateTime::currentDateTime())
        << time.toString().toStdString();
}

TEST(SimulatorProcess, clientsMayReconnectInTheMiddleOfThings)
{
    RunningSimulator simulator;
    ASSERT_TRUE(simulator.isReady());
    {
        PortClient client(simulator.link());
        client.write("AT+CMGS=23\r");
        EXPECT_TRUE(client.readUntil("> ").endsWith("> "));
    }
    PortClient client(simulator.link());
    client.write("\x1B");
    EXPECT_TRUE(client.readUntil("OK\r\n").endsWith("OK\r\n"));
    client.ask("ATE0");
    EXPECT_EQ(answerOf(client.submitHello()), "+CMGS: 0|OK");
}

TEST(SimulatorProcess, removesItsLinkWhenItIsEnded)
{
    for (const int number : {SIGTERM, SIGINT}) {
        RunningSimulator simulator;
        ASSERT_TRUE(simulator.isReady());
        EXPECT_TRUE(QFileInfo(simulator.link()).isSymLink());
        ASSERT_EQ(::kill(static_cast<pid_t>(simulator.process().processId()), number), 0);
        ASSERT_TRUE(simulator.process().waitForFinished(hangMs));
        EXPECT_EQ(simulator.process().exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(simulator.process().exitCode(), 0);
        EXPECT_FALSE(QFileInfo(simulator.link()).isSymLink());
    }
}

/// The modem speaks up by itself every 400 ms: what stands in front of an answer tells that it took
/// its time.
TEST(SimulatorProcess, answersAfterItsLatency)
{
    RunningSimulator simulator({u"--latency"_s, u"1300"_s, u"--urc"_s});
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    client.ask("ATE0");
    client.write("AT+CMGS=23\r");
    client.readUntil("> ");
    client.write("0011000B916407281553F80000AA0AE8329BFD4697D9EC37\x1A"
                 "AT+CSQ\r");
    const QByteArray said = client.readUntil("\r\nOK\r\n");
    EXPECT_GE(linesOf(said.left(said.indexOf("+CMGS: 0"))), 2);
    EXPECT_TRUE(client.readUntil("\r\nOK\r\n").contains("+CSQ: 20,99"));
}

TEST(SimulatorProcess, aPacedLineTakesItsTimeInBothDirections)
{
    RunningSimulator simulator({u"--baud"_s, u"1200"_s, u"--urc"_s});
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    client.ask("ATE0");
    // Two seconds to the modem, and next to nothing back before the end.
    constexpr int commands = 80;
    client.write(QByteArray("AT\r").repeated(commands));
    int others = 0;
    for (int answer = 0; answer < commands; ++answer)
        others += linesOf(client.readUntil("\r\nOK\r\n")) - 1;
    EXPECT_GE(others, 1);
    // Next to nothing to the modem, and more than a second back, behind which the rest waits.
    client.ask("AT+COPS=?");
    EXPECT_GE(linesOf(client.ask("AT")) - 1, 1);
}

TEST(SimulatorProcess, manyMessagesPassInOneWrite)
{
    RunningSimulator simulator;
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    client.ask("ATE0");
    QByteArray all;
    for (int i = 0; i < 50; ++i)
        all += "AT+CMGS=23\r0011000B916407281553F80000AA0AE8329BFD4697D9EC37\x1A";
    client.write(all);
    const QByteArray end = "+CMGS: 49\r\n\r\nOK\r\n";
    EXPECT_TRUE(client.readUntil(end).endsWith(end));
    EXPECT_EQ(simulator.messages().size(), 50);
}

TEST(SimulatorProcess, failuresComeAtTheirTurn)
{
    RunningSimulator simulator({u"--fail-every"_s, u"2"_s, u"--fail-code"_s, u"331"_s});
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    client.ask("ATE0");
    EXPECT_EQ(answerOf(client.submitHello()), "+CMGS: 0|OK");
    client.write("AT+CMGS=23\r");
    client.readUntil("> ");
    client.write("0011000B916407281553F80000AA0AE8329BFD4697D9EC37\x1A");
    EXPECT_EQ(client.readUntil("331\r\n"), "\r\n+CMS ERROR: 331\r\n");
    EXPECT_EQ(simulator.messages().size(), 1);
}

TEST(SimulatorProcess, unpluggingHangsUpAndEnds)
{
    RunningSimulator simulator({u"--drop-after"_s, u"2"_s});
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    client.ask("ATE0");
    EXPECT_EQ(answerOf(client.submitHello()), "+CMGS: 0|OK");
    EXPECT_EQ(answerOf(client.submitHello()), "+CMGS: 1|OK");
    client.readUntil("never");
    EXPECT_TRUE(client.hasHungUp());
    ASSERT_TRUE(simulator.process().waitForFinished(hangMs));
    EXPECT_EQ(simulator.process().exitCode(), 0);
    EXPECT_FALSE(QFileInfo(simulator.link()).isSymLink());
    EXPECT_EQ(simulator.messages().size(), 2);
}

TEST(SimulatorProcess, unpluggingCanLoseTheLastAnswer)
{
    RunningSimulator simulator({u"--drop-after"_s, u"1"_s, u"--lose-answer"_s});
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    client.ask("ATE0");
    EXPECT_EQ(client.submitHello(), "");
    EXPECT_TRUE(client.hasHungUp());
    EXPECT_EQ(simulator.messages().size(), 1);
}

TEST(SimulatorProcess, aSilentModemSaysNothing)
{
    RunningSimulator simulator({u"--silent"_s});
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    client.write("AT\r");
    EXPECT_EQ(client.readUntil("\n", 300), "");
    EXPECT_FALSE(client.hasHungUp());
}

TEST(SimulatorProcess, aLockedCardOpensWithItsPin)
{
    RunningSimulator simulator({u"--pin"_s, u"1234"_s});
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    client.ask("ATE0");
    EXPECT_EQ(answerOf(client.ask("AT+CPIN?")), "+CPIN: SIM PIN|OK");
    EXPECT_EQ(answerOf(client.ask("AT+CPIN=\"1234\"")), "OK");
    EXPECT_EQ(answerOf(client.ask("AT+CPIN?")), "+CPIN: READY|OK");
}

TEST(SimulatorProcess, aTalkativeModemSpeaksUp)
{
    RunningSimulator simulator({u"--urc"_s, u"--urc-interval"_s, u"20"_s});
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    const QByteArray end = "^RSSI: 18\r\n";
    EXPECT_TRUE(client.readUntil(end).endsWith(end));
}

TEST(SimulatorProcess, noisyAndTalkativeModemsStillAcceptEverything)
{
    RunningSimulator simulator(
        {u"--urc"_s, u"--urc-interval"_s, u"5"_s, u"--noise"_s, u"--latency"_s, u"10"_s});
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    client.ask("ATE0");
    for (int i = 0; i < 20; ++i) {
        const QByteArray answer = client.submitHello();
        EXPECT_TRUE(answer.contains("\r\n+CMGS: " + QByteArray::number(i) + "\r\n\r\nOK\r\n"))
            << answer.toPercentEncoding().data();
    }
    EXPECT_EQ(simulator.messages().size(), 20);
}

TEST(SimulatorProcess, badUseIsToldOnTheErrorStream)
{
    struct Row
    {
        QStringList arguments;
        int exitCode;
    };
    const Row rows[] = {
        {{u"--unknown"_s}, 2},
        {{}, 2},
        {{u"--link"_s, u"/tmp/x"_s}, 2},
        {{u"--link"_s, u"/nowhere/x"_s, u"--log"_s, u"/dev/null"_s}, 1},
        {{u"--link"_s, u"/nowhere/x"_s, u"--log"_s, u"/nowhere/y"_s}, 1},
    };
    for (const Row &row : rows) {
        QProcess process;
        process.start(QStringLiteral(NORVANE_BIN_DIR "/gsm-simulator"), row.arguments);
        ASSERT_TRUE(process.waitForFinished(hangMs));
        EXPECT_EQ(process.exitCode(), row.exitCode) << row.arguments.join(u' ').toStdString();
        EXPECT_TRUE(process.readAllStandardError().startsWith("gsm-simulator: "));
        EXPECT_EQ(process.readAllStandardOutput(), "");
    }
}

TEST(SimulatorProcess, helpAndVersionAreShown)
{
    for (const char *option : {"--help", "--version"}) {
        QProcess process;
        process.start(QStringLiteral(NORVANE_BIN_DIR "/gsm-simulator"),
                      {QString::fromLatin1(option)});
        ASSERT_TRUE(process.waitForFinished(hangMs));
        EXPECT_EQ(process.exitCode(), 0);
        EXPECT_TRUE(process.readAllStandardOutput().contains("gsm-simulator"));
    }
}

TEST(SimulatorProcess, aLogThatCannotBeWrittenEndsItBeforeTheAnswer)
{
    RunningSimulator simulator({u"--log"_s, u"/dev/full"_s});
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    client.ask("ATE0");
    EXPECT_FALSE(client.submitHello().contains("+CMGS"));
    ASSERT_TRUE(simulator.process().waitForFinished(hangMs));
    EXPECT_EQ(simulator.process().exitCode(), 1);
    EXPECT_TRUE(simulator.process().readAllStandardError().contains("/dev/full"));
}

TEST(SimulatorProcess, whatTheNetworkSaysComesByItself)
{
    RunningSimulator simulator({u"--report-delay"_s, u"30"_s, u"--ack-timeout"_s, u"30"_s,
                                u"--redeliver-after"_s, u"30"_s});
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    client.ask("ATE0");
    client.ask("AT+CSMS=1;+CNMI=2,1,0,1");
    client.write("AT+CMGS=23\r");
    client.readUntil("> ");
    client.write("0031000B916407281553F80000AA0AE8329BFD4697D9EC37\x1A");
    const QByteArray pdu = "07914306000000F006000B916407281553F8";
    EXPECT_TRUE(client.readUntil(pdu).endsWith("\r\n+CDS: 25\r\n" + pdu));
    ControlClient control(simulator.controlPath());
    while (answerOf(client.ask("AT+CNMI?")) != "+CNMI: 2,0,0,0,0|OK")
        ASSERT_TRUE(control.ask("count reports").startsWith("ok "));
    client.write("AT+CNMI=2,1,0,1\r");
    EXPECT_TRUE(client.readUntil(pdu).endsWith(pdu));
}

TEST(SimulatorProcess, messagesArriveFromAFileAndFromTheSocket)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(u"incoming"_s);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("# what has arrived before\n\ndeliver {\"from\":\"1\",\"text\":\"one\"}\r\n");
    file.close();
    RunningSimulator simulator({u"--incoming"_s, path});
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    client.ask("ATE0");
    EXPECT_TRUE(client.ask("AT+CMGL=4").contains("+CMGL: 1,0,,"));
    client.ask("AT+CNMI=2,1");
    ControlClient control(simulator.controlPath());
    EXPECT_EQ(control.ask(R"(deliver {"from":"1","text":"two"})"), "ok 1");
    EXPECT_EQ(client.readUntil("\"SM\",2\r\n"), "\r\n+CMTI: \"SM\",2\r\n");
    EXPECT_EQ(control.ask("memory SM"), "ok 2 20");
}

TEST(SimulatorProcess, aFileOfCommandsThatIsWrongEndsIt)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(u"incoming"_s);
    for (const QByteArray &content : {QByteArray("count sent\n\nnonsense\n"), QByteArray()}) {
        if (!content.isEmpty()) {
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(content);
        } else {
            QFile::remove(path);
        }
        RunningSimulator simulator({u"--incoming"_s, path});
        EXPECT_FALSE(simulator.isReady());
        simulator.process().waitForFinished(hangMs);
        EXPECT_EQ(simulator.process().exitCode(), 1);
        const QByteArray said = simulator.process().readAllStandardError();
        EXPECT_TRUE(said.contains(content.isEmpty() ? "incoming: " : ", line 3: error unknown"))
            << said.data();
        EXPECT_FALSE(QFileInfo::exists(simulator.controlPath()));
    }
}

TEST(SimulatorProcess, canBeUnpluggedByTheSocket)
{
    RunningSimulator simulator;
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.link());
    ControlClient control(simulator.controlPath());
    EXPECT_EQ(control.ask("unplug"), "ok");
    ASSERT_TRUE(simulator.process().waitForFinished(hangMs));
    EXPECT_EQ(simulator.process().exitCode(), 0);
    client.readUntil("never");
    EXPECT_TRUE(client.hasHungUp());
    EXPECT_FALSE(QFileInfo::exists(simulator.controlPath()));
}

} // namespace norvane
