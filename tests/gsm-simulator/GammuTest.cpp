#include "gsm-simulator/RunningSimulator.h"

#include "support/WaitUntil.h"

#include <QFile>
#include <QStandardPaths>

#include <gtest/gtest.h>

namespace {

/// A client that nobody of ours has written.
class Gammu : public testing::Test
{
protected:
    void SetUp() override
    {
        m_program = QStandardPaths::findExecutable(QStringLiteral("gammu"));
        if (m_program.isEmpty())
            GTEST_SKIP() << "gammu is not installed";
    }

    /// Runs it on the simulator's port.
    /// @return its exit code, or -1 if it didn't end
    int run(RunningSimulator &simulator, const QStringList &arguments)
    {
        QFile settings(simulator.folder() + QStringLiteral("/gammurc"));
        if (!settings.open(QIODevice::WriteOnly))
            return -1;
        settings.write("[gammu]\nconnection = at\ndevice = " + QFile::encodeName(simulator.link()) +
                       '\n');
        settings.close();
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(m_program,
                      QStringList{QStringLiteral("-c"), settings.fileName()} + arguments);
        if (!process.waitForFinished(hangMs))
            return -1;
        m_output = process.readAll();
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    int send(RunningSimulator &simulator, const QString &text, const QStringList &more = {})
    {
        return run(simulator,
                   QStringList{QStringLiteral("sendsms"), QStringLiteral("TEXT"),
                               QStringLiteral("+34600111222"), QStringLiteral("-text"), text} +
                       more);
    }

    QByteArray m_output;

private:
    QString m_program;
};

QString joinedText(const QList<QJsonObject> &messages)
{
    QString text;
    for (const QJsonObject &message : messages)
        text += message.value(QStringLiteral("text")).toString();
    return text;
}

const QString LongText = QStringLiteral("The quick brown fox jumps over it. ").repeated(10);

} // namespace

TEST_F(Gammu, identifiesTheModem)
{
    RunningSimulator simulator({QStringLiteral("--manufacturer"), QStringLiteral("Maker")});
    ASSERT_TRUE(simulator.isReady());
    EXPECT_EQ(run(simulator, {QStringLiteral("--identify")}), 0) << m_output.data();
    for (const char *value : {"Maker", "490154203237518", "001010123456789"})
        EXPECT_TRUE(m_output.contains(value)) << m_output.data();
}

TEST_F(Gammu, sendsInPduMode)
{
    RunningSimulator simulator({QStringLiteral("--formats"), QStringLiteral("pdu")});
    ASSERT_TRUE(simulator.isReady());
    EXPECT_EQ(send(simulator, QStringLiteral("hello [world] {x} @$")), 0) << m_output.data();
    const QList<QJsonObject> messages = simulator.messages();
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(joinedText(messages), QStringLiteral("hello [world] {x} @$"));
    EXPECT_EQ(messages.constFirst().value(QStringLiteral("number")).toString(),
              QStringLiteral("+34600111222"));
    EXPECT_NE(messages.constFirst().value(QStringLiteral("pdu")).toString(), QString());
}

TEST_F(Gammu, sendsUnicode)
{
    RunningSimulator simulator;
    ASSERT_TRUE(simulator.isReady());
    const QString text = QStringLiteral("Coração à João Ж");
    EXPECT_EQ(send(simulator, text, {QStringLiteral("-unicode")}), 0) << m_output.data();
    const QList<QJsonObject> messages = simulator.messages();
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(joinedText(messages), text);
    EXPECT_EQ(messages.constFirst().value(QStringLiteral("coding")).toString(),
              QStringLiteral("ucs2"));
}

TEST_F(Gammu, sendsALongTextInParts)
{
    RunningSimulator simulator;
    ASSERT_TRUE(simulator.isReady());
    EXPECT_EQ(send(simulator, LongText, {QStringLiteral("-len"), QStringLiteral("400")}), 0)
        << m_output.data();
    const QList<QJsonObject> messages = simulator.messages();
    ASSERT_EQ(messages.size(), 3);
    EXPECT_EQ(joinedText(messages), LongText);
    for (qsizetype i = 0; i < messages.size(); ++i) {
        EXPECT_EQ(messages.at(i).value(QStringLiteral("part")).toInt(), i + 1);
        EXPECT_EQ(messages.at(i).value(QStringLiteral("parts")).toInt(), 3);
        EXPECT_EQ(messages.at(i).value(QStringLiteral("concatenation")),
                  messages.constFirst().value(QStringLiteral("concatenation")));
    }
}

TEST_F(Gammu, sendsInTextMode)
{
    RunningSimulator simulator({QStringLiteral("--formats"), QStringLiteral("text")});
    ASSERT_TRUE(simulator.isReady());
    EXPECT_EQ(send(simulator, QStringLiteral("hello [world] {x} @$")), 0) << m_output.data();
    const QList<QJsonObject> messages = simulator.messages();
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(joinedText(messages), QStringLiteral("hello [world] {x} @$"));
    EXPECT_EQ(messages.constFirst().value(QStringLiteral("number")).toString(),
              QStringLiteral("+34600111222"));
    EXPECT_EQ(messages.constFirst().value(QStringLiteral("pdu")).toString(), QString());
}

TEST_F(Gammu, entersThePin)
{
    RunningSimulator simulator({QStringLiteral("--pin"), QStringLiteral("1234")});
    ASSERT_TRUE(simulator.isReady());
    EXPECT_NE(send(simulator, QStringLiteral("hello")), 0);
    EXPECT_EQ(run(simulator, {QStringLiteral("entersecuritycode"), QStringLiteral("PIN"),
                              QStringLiteral("1234")}),
              0)
        << m_output.data();
    EXPECT_EQ(send(simulator, QStringLiteral("hello")), 0) << m_output.data();
    EXPECT_EQ(simulator.messages().size(), 1);
}

TEST_F(Gammu, sendsOverAPacedLine)
{
    RunningSimulator simulator({QStringLiteral("--baud"), QStringLiteral("115200"),
                                QStringLiteral("--latency"), QStringLiteral("100")});
    ASSERT_TRUE(simulator.isReady());
    EXPECT_EQ(send(simulator, QStringLiteral("hello")), 0) << m_output.data();
    EXPECT_EQ(simulator.messages().size(), 1);
}
