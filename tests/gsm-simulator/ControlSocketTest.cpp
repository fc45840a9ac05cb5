#include "gsm-simulator/ControlSocket.h"

#include "gsm-simulator/RunningSimulator.h"

#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

QByteArray repeat(const QByteArray &line)
{
    return "ok " + line;
}

} // namespace

TEST(ControlSocket, isForItsOwnerAloneAndGoesWithItsObject)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"control"_s);
    {
        ControlSocket socket(repeat);
        EXPECT_EQ(socket.open(path), QString());
        EXPECT_EQ(QFile::permissions(path) &
                      (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
                  QFile::Permissions());
        EXPECT_TRUE(QFile::permissions(path) & QFile::WriteOwner);
    }
    EXPECT_FALSE(QFileInfo::exists(path));
}

TEST(ControlSocket, leavesAloneWhatStandsThereUnlessNobodyListensAtIt)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"control"_s);
    ControlSocket first(repeat);
    ASSERT_EQ(first.open(path), QString());
    {
        ControlSocket second(repeat);
        EXPECT_NE(second.open(path), QString());
    }
    EXPECT_TRUE(QFileInfo::exists(path));
    first.close();
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_NE(ControlSocket(repeat).open(path), QString());
    EXPECT_TRUE(QFileInfo(path).isFile());
}

TEST(ControlSocket, takesThePlaceOfOneThatWasLeftBehind)
{
    QString path;
    RunningSimulator left;
    ASSERT_TRUE(left.isReady());
    path = left.controlPath();
    left.process().kill();
    ASSERT_TRUE(left.process().waitForFinished(hangMs));
    ASSERT_TRUE(QFileInfo::exists(path));
    ControlSocket socket(repeat);
    EXPECT_EQ(socket.open(path), QString());
}

TEST(ControlSocket, aPathThatCantBeOneIsRefused)
{
    const QTemporaryDir folder;
    ControlSocket socket(repeat);
    EXPECT_NE(socket.open(folder.filePath(QString(200, u'x'))), QString());
    EXPECT_NE(socket.open(folder.filePath(u"none/control"_s)), QString());
}

TEST(ControlSocket, answersEveryLineOfEveryClientInItsOrder)
{
    const RunningSimulator simulator;
    ASSERT_TRUE(simulator.isReady());
    ControlClient first(simulator.controlPath());
    ControlClient second(simulator.controlPath());
    EXPECT_TRUE(first.write("count sent\nmemory SM\r\nnonsense\ncount"));
    EXPECT_EQ(second.ask("memory ME"), "ok 0 20");
    EXPECT_EQ(first.readLine(), "ok 0");
    EXPECT_EQ(first.readLine(), "ok 0 20");
    EXPECT_EQ(first.readLine(), "error unknown command");
    EXPECT_EQ(first.ask(" reports"), "ok 0");
}

TEST(ControlSocket, letsAClientGoWhoseLineHasNoEnd)
{
    const RunningSimulator simulator;
    ASSERT_TRUE(simulator.isReady());
    ControlClient endless(simulator.controlPath());
    const QByteArray much(1 << 16, 'x');
    while (endless.write(much))
        continue;
    ControlClient other(simulator.controlPath());
    EXPECT_EQ(other.ask("count sent"), "ok 0");
}

TEST(ControlSocket, letsAClientGoThatReadsNoAnswers)
{
    const RunningSimulator simulator;
    ASSERT_TRUE(simulator.isReady());
    ControlClient deaf(simulator.controlPath());
    const QByteArray many = QByteArray("count sent\n").repeated(1000);
    while (deaf.write(many))
        continue;
    ControlClient other(simulator.controlPath());
    EXPECT_EQ(other.ask("count sent"), "ok 0");
}

TEST(ControlSocket, hasALimitedNumberOfClients)
{
    const RunningSimulator simulator;
    ASSERT_TRUE(simulator.isReady());
    std::vector<std::unique_ptr<ControlClient>> clients;
    for (int i = 0; i < 16; ++i) {
        clients.push_back(std::make_unique<ControlClient>(simulator.controlPath()));
        ASSERT_EQ(clients.back()->ask("count sent"), "ok 0");
    }
    ControlClient tooMany(simulator.controlPath());
    EXPECT_EQ(tooMany.ask("count sent"), "");
    clients.pop_back();
    QByteArray answer;
    while (answer.isEmpty())
        answer = ControlClient(simulator.controlPath()).ask("count sent");
    EXPECT_EQ(answer, "ok 0");
}

} // namespace simulator

} // namespace norvane
