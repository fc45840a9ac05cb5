#include "gsm-simulator/ModemSocket.h"

#include "gsm-simulator/RunningSimulator.h"

#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <csignal>
#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

class ModemSocketTest : public testing::Test
{
protected:
    QString path() const { return m_folder.filePath(u"socket"_s); }

    /// Runs the event loop until so many bytes have come.
    bool waitForBytes(qsizetype count)
    {
        return waitUntil([this, count] { return received.size() >= count; });
    }

    ModemSocketTest()
    {
        QObject::connect(&socket, &ModemSocket::received,
                         [this](const QByteArray &bytes) { received += bytes; });
    }

    ModemSocket socket;
    QByteArray received;

private:
    QTemporaryDir m_folder;
};

QByteArray answerOf(const QByteArray &text)
{
    return QByteArray(text).trimmed().replace("\r\n\r\n", "|");
}

const auto onSocket = RunningSimulator::Port::Socket;

} // namespace

TEST_F(ModemSocketTest, bytesPassUnchangedBothWays)
{
    ASSERT_EQ(socket.open(path()), QString());
    QByteArray all;
    for (int value = 0; value < 256; ++value)
        all += static_cast<char>(value);
    PortClient client(path());
    client.write(all);
    ASSERT_TRUE(waitForBytes(all.size()));
    EXPECT_EQ(received, all);
    socket.write(all);
    EXPECT_EQ(client.readUntil(all.right(3)), all);
}

TEST_F(ModemSocketTest, isForItsOwnerAloneAndGoesWithItsObject)
{
    {
        ModemSocket other;
        ASSERT_EQ(other.open(path()), QString());
        EXPECT_EQ(QFile::permissions(path()) &
                      (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
                  QFile::Permissions());
    }
    EXPECT_FALSE(QFileInfo::exists(path()));
}

TEST_F(ModemSocketTest, leavesAloneWhatStandsThereUnlessNobodyListensAtIt)
{
    ASSERT_EQ(socket.open(path()), QString());
    {
        ModemSocket second;
        EXPECT_NE(second.open(path()), QString());
    }
    EXPECT_TRUE(QFileInfo::exists(path()));
    socket.close();
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_NE(socket.open(path()), QString());
    EXPECT_TRUE(QFileInfo(path()).isFile());
}

TEST_F(ModemSocketTest, takesThePlaceOfOneThatWasLeftBehind)
{
    RunningSimulator left({}, onSocket);
    ASSERT_TRUE(left.isReady());
    left.process().kill();
    ASSERT_TRUE(left.process().waitForFinished(hangMs));
    ASSERT_TRUE(QFileInfo::exists(left.socketPath()));
    EXPECT_EQ(socket.open(left.socketPath()), QString());
}

TEST_F(ModemSocketTest, theNextClientIsServedWhenTheOneBeforeHasGone)
{
    ASSERT_EQ(socket.open(path()), QString());
    QSignalSpy abandoned(&socket, &ModemPort::abandoned);
    auto first = std::make_unique<PortClient>(path());
    first->write("a");
    ASSERT_TRUE(waitForBytes(1));
    PortClient second(path());
    second.write("b");
    first->write("c");
    ASSERT_TRUE(waitForBytes(2));
    socket.write("to the first\r");
    EXPECT_EQ(first->readUntil("\r"), "to the first\r");
    first.reset();
    ASSERT_TRUE(waitForBytes(3));
    EXPECT_EQ(abandoned.count(), 1);
    EXPECT_EQ(received, "acb");
    socket.write("to the second\r");
    EXPECT_EQ(second.readUntil("\r"), "to the second\r");
}

TEST_F(ModemSocketTest, whatAClientHasNotReadIsLostWithIt)
{
    ASSERT_EQ(socket.open(path()), QString());
    socket.write("to nobody\r");
    auto deaf = std::make_unique<PortClient>(path());
    deaf->write("x");
    ASSERT_TRUE(waitForBytes(1));
    socket.write(QByteArray(1 << 20, 'x'));
    EXPECT_GT(socket.unreadByClient(), 0);
    QSignalSpy abandoned(&socket, &ModemPort::abandoned);
    deaf.reset();
    PortClient client(path());
    client.write("y");
    ASSERT_TRUE(waitForBytes(2));
    EXPECT_EQ(abandoned.count(), 1);
    EXPECT_EQ(socket.unreadByClient(), 0);
    socket.write("fresh\r");
    EXPECT_EQ(client.readUntil("\r"), "fresh\r");
}

TEST_F(ModemSocketTest, aStoppedLineTakesNothingUntilItGoesOn)
{
    ASSERT_EQ(socket.open(path()), QString());
    PortClient client(path());
    client.write("x");
    ASSERT_TRUE(waitForBytes(1));
    socket.setReading(false);
    client.write("y");
    for (int i = 0; i < 100; ++i)
        QCoreApplication::processEvents();
    EXPECT_EQ(received, "x");
    socket.setReading(true);
    EXPECT_TRUE(waitForBytes(2));
}

TEST_F(ModemSocketTest, aClientMayGoWhileTheLineIsStopped)
{
    ASSERT_EQ(socket.open(path()), QString());
    auto first = std::make_unique<PortClient>(path());
    first->write("x");
    ASSERT_TRUE(waitForBytes(1));
    socket.setReading(false);
    first->write("last");
    QSignalSpy abandoned(&socket, &ModemPort::abandoned);
    first.reset();
    ASSERT_TRUE(waitUntil([&] { return abandoned.count() == 1; }));
    EXPECT_EQ(received, "xlast");
    PortClient second(path());
    second.write("y");
    for (int i = 0; i < 100; ++i)
        QCoreApplication::processEvents();
    EXPECT_EQ(received, "xlast");
    socket.write("served\r");
    EXPECT_EQ(second.readUntil("\r"), "served\r");
    socket.setReading(true);
    EXPECT_TRUE(waitForBytes(6));
}

TEST(SimulatorOnASocket, keepsItsStateFromClientToClient)
{
    RunningSimulator simulator({u"--pin"_s, u"1234"_s}, onSocket);
    ASSERT_TRUE(simulator.isReady());
    {
        PortClient client(simulator.socketPath());
        client.ask("ATE0");
        EXPECT_EQ(answerOf(client.ask("AT+CPIN=\"1234\"")), "OK");
    }
    PortClient client(simulator.socketPath());
    EXPECT_EQ(answerOf(client.ask("AT+CPIN?")), "+CPIN: READY|OK");
    EXPECT_EQ(answerOf(client.submitHello()), "+CMGS: 0|OK");
    EXPECT_EQ(simulator.messages().size(), 1);
}

TEST(SimulatorOnASocket, pacesItsLineAndPutsNoiseOnIt)
{
    RunningSimulator simulator(
        {u"--baud"_s, u"9600"_s, u"--noise"_s, u"--urc"_s, u"--urc-interval"_s, u"5"_s}, onSocket);
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.socketPath());
    client.ask("ATE0");
    for (int i = 0; i < 5; ++i) {
        const QByteArray answer = client.submitHello();
        EXPECT_TRUE(answer.contains("\r\n+CMGS: " + QByteArray::number(i) + "\r\n\r\nOK\r\n"))
            << answer.toPercentEncoding().data();
    }
}

TEST(SimulatorOnASocket, unpluggingHangsUpBehindTheLastAnswer)
{
    RunningSimulator simulator({u"--drop-after"_s, u"1"_s}, onSocket);
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.socketPath());
    client.ask("ATE0");
    EXPECT_EQ(answerOf(client.submitHello()), "+CMGS: 0|OK");
    client.readUntil("never");
    EXPECT_TRUE(client.hasHungUp());
    ASSERT_TRUE(simulator.process().waitForFinished(hangMs));
    EXPECT_EQ(simulator.process().exitCode(), 0);
    EXPECT_FALSE(QFileInfo::exists(simulator.socketPath()));
}

TEST(SimulatorOnASocket, canBeUnpluggedInTheMiddleOfASubmission)
{
    RunningSimulator simulator({u"--latency"_s, u"3600000"_s}, onSocket);
    ASSERT_TRUE(simulator.isReady());
    PortClient client(simulator.socketPath());
    client.ask("ATE0");
    client.write("AT+CMGS=23\r");
    client.readUntil("> ");
    client.write("0011000B916407281553F80000AA0AE8329BFD4697D9EC37\x1A");
    ControlClient control(simulator.controlPath());
    EXPECT_EQ(control.ask("unplug"), "ok");
    EXPECT_EQ(client.readUntil("never"), "");
    EXPECT_TRUE(client.hasHungUp());
    ASSERT_TRUE(simulator.process().waitForFinished(hangMs));
    EXPECT_FALSE(QFileInfo::exists(simulator.socketPath()));
    EXPECT_EQ(simulator.messages().size(), 0);
}

TEST(SimulatorOnASocket, removesTheSocketWhenItIsEnded)
{
    RunningSimulator simulator({}, onSocket);
    ASSERT_TRUE(simulator.isReady());
    ASSERT_TRUE(QFileInfo::exists(simulator.socketPath()));
    ASSERT_EQ(::kill(static_cast<pid_t>(simulator.process().processId()), SIGTERM), 0);
    ASSERT_TRUE(simulator.process().waitForFinished(hangMs));
    EXPECT_EQ(simulator.process().exitCode(), 0);
    EXPECT_FALSE(QFileInfo::exists(simulator.socketPath()));
}

} // namespace simulator

} // namespace norvane
