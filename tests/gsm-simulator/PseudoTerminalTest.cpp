#include "gsm-simulator/RunningSimulator.h"

#include "gsm-simulator/PseudoTerminal.h"

#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/ioctl.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

class PseudoTerminalTest : public testing::Test
{
protected:
    QString path() const { return m_folder.filePath(u"port"_s); }

    PseudoTerminal terminal;

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(PseudoTerminalTest, bytesPassUnchangedBothWays)
{
    ASSERT_EQ(terminal.open(path()), QString());
    QByteArray all;
    for (int value = 0; value < 256; ++value)
        all += static_cast<char>(value);
    PortClient client(path());
    QByteArray received;
    QObject::connect(&terminal, &PseudoTerminal::received,
                     [&received](const QByteArray &bytes) { received += bytes; });
    QSignalSpy spy(&terminal, &PseudoTerminal::received);
    client.write(all);
    while (received.size() < all.size() && spy.wait(5000)) {
    }
    EXPECT_EQ(received, all);
    terminal.write(all);
    EXPECT_EQ(client.readUntil(all.right(3), 5000), all);
}

TEST_F(PseudoTerminalTest, aLinkToATerminalIsReplacedAndTheOldOwnerLeavesItAlone)
{
    PseudoTerminal first;
    ASSERT_EQ(first.open(path()), QString());
    const QString firstTarget = QFile::symLinkTarget(path());
    ASSERT_EQ(terminal.open(path()), QString());
    const QString secondTarget = QFile::symLinkTarget(path());
    EXPECT_NE(firstTarget, secondTarget);
    first.close();
    EXPECT_EQ(QFile::symLinkTarget(path()), secondTarget);
    terminal.close();
    EXPECT_FALSE(QFileInfo(path()).isSymLink());
}

TEST_F(PseudoTerminalTest, anythingElseInItsPlaceIsLeftAlone)
{
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_NE(terminal.open(path()), QString());
    EXPECT_TRUE(QFileInfo(path()).isFile());
    ASSERT_TRUE(file.remove());
    ASSERT_TRUE(QFile::link(u"/etc/hostname"_s, path()));
    EXPECT_NE(terminal.open(path()), QString());
    EXPECT_EQ(QFile::symLinkTarget(path()), u"/etc/hostname"_s);
}

TEST_F(PseudoTerminalTest, aLinkWithoutAFolderIsAFailure)
{
    EXPECT_NE(terminal.open(u"/nowhere/port"_s), QString());
}

TEST_F(PseudoTerminalTest, clientsComeAndGo)
{
    ASSERT_EQ(terminal.open(path()), QString());
    QSignalSpy spy(&terminal, &PseudoTerminal::received);
    for (int i = 0; i < 3; ++i) {
        PortClient client(path());
        client.write("x");
        EXPECT_TRUE(spy.wait(5000));
        terminal.write("y\r");
        EXPECT_EQ(client.readUntil("y\r", 5000), "y\r");
        EXPECT_FALSE(client.hasHungUp());
    }
}

TEST_F(PseudoTerminalTest, whatIsSaidWithoutAClientIsLost)
{
    ASSERT_EQ(terminal.open(path()), QString());
    terminal.write("early");
    PortClient client(path());
    terminal.write("late\r");
    EXPECT_EQ(client.readUntil("\r", 5000), "late\r");
}

TEST_F(PseudoTerminalTest, aClientLeavesNothingToTheNextOne)
{
    ASSERT_EQ(terminal.open(path()), QString());
    QSignalSpy spy(&terminal, &PseudoTerminal::abandoned);
    {
        const PortClient client(path());
        ASSERT_EQ(::ioctl(client.descriptor(), TIOCEXCL), 0);
        terminal.write(QByteArray(100000, 'x'));
        EXPECT_GT(terminal.unreadByClient(), 0);
    }
    ASSERT_TRUE(spy.wait(5000));
    EXPECT_EQ(terminal.unreadByClient(), 0);
    PortClient next(path());
    int exclusive = 1;
    ASSERT_EQ(::ioctl(next.descriptor(), TIOCGEXCL, &exclusive), 0);
    EXPECT_EQ(exclusive, 0);
    terminal.write("fresh\r");
    EXPECT_EQ(next.readUntil("\r", 5000), "fresh\r");
}

TEST_F(PseudoTerminalTest, aClientThatDoesNotReadGetsEverythingLater)
{
    ASSERT_EQ(terminal.open(path()), QString());
    PortClient client(path());
    QByteArray sent = QByteArray(200000, 'x') + "end";
    terminal.write(sent);
    QByteArray read;
    QSignalSpy spy(&terminal, &PseudoTerminal::received);
    for (int i = 0; i < 20000 && !read.endsWith("end"); ++i) {
        read += client.readUntil("end", 1);
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(read.size(), sent.size());
}

TEST_F(PseudoTerminalTest, aStoppedLineTakesNothingUntilItGoesOn)
{
    ASSERT_EQ(terminal.open(path()), QString());
    PortClient client(path());
    QSignalSpy spy(&terminal, &PseudoTerminal::received);
    terminal.setReading(false);
    client.write("x");
    for (int i = 0; i < 100; ++i)
        QCoreApplication::processEvents();
    EXPECT_EQ(spy.count(), 0);
    terminal.setReading(true);
    EXPECT_TRUE(spy.wait(5000));
}

} // namespace simulator

} // namespace norvane
