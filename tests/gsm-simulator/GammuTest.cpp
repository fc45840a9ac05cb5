#include "gsm-simulator/RunningSimulator.h"

#include "support/WaitUntil.h"

#include <QFile>
#include <QStandardPaths>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A client that nobody of ours has written.
class Gammu : public testing::Test
{
protected:
    void SetUp() override
    {
        m_program = QStandardPaths::findExecutable(u"gammu"_s);
        if (m_program.isEmpty())
            GTEST_SKIP() << "gammu is not installed";
    }

    /// Runs it on the simulator's port.
    /// @return its exit code, or -1 if it didn't end
    int run(RunningSimulator &simulator, const QStringList &arguments)
    {
        QFile settings(simulator.folder() + u"/gammurc"_s);
        if (!settings.open(QIODevice::WriteOnly))
            return -1;
        settings.write("[gammu]\nconnection = at\ndevice = " + QFile::encodeName(simulator.link()) +
                       '\n');
        settings.close();
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(m_program, QStringList{u"-c"_s, settings.fileName()} + arguments);
        if (!process.waitForFinished(hangMs))
            return -1;
        m_output = process.readAll();
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    int send(RunningSimulator &simulator, const QString &text, const QStringList &more = {})
    {
        return run(simulator,
                   QStringList{u"sendsms"_s, u"TEXT"_s, u"+34600111222"_s, u"-text"_s, text} +
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
        text += message.value(u"text"_s).toString();
    return text;
}

const QString longText = u"The quick brown fox jumps over it. "_s.repeated(10);

} // namespace

TEST_F(Gammu, identifiesTheModem)
{
    RunningSimulator simulator({u"--manufacturer"_s, u"Maker"_s});
    ASSERT_TRUE(simulator.isReady());
    EXPECT_EQ(run(simulator, {u"--identify"_s}), 0) << m_output.data();
    for (const char *value : {"Maker", "490154203237518", "001010123456789"})
        EXPECT_TRUE(m_output.contains(value)) << m_output.data();
}

TEST_F(Gammu, sendsInPduMode)
{
    RunningSimulator simulator({u"--formats"_s, u"pdu"_s});
    ASSERT_TRUE(simulator.isReady());
    EXPECT_EQ(send(simulator, u"hello [world] {x} @$"_s), 0) << m_output.data();
    const QList<QJsonObject> messages = simulator.messages();
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(joinedText(messages), u"hello [world] {x} @$"_s);
    EXPECT_EQ(messages.constFirst().value(u"number"_s).toString(), u"+34600111222"_s);
    EXPECT_NE(messages.constFirst().value(u"pdu"_s).toString(), QString());
}

TEST_F(Gammu, sendsUnicode)
{
    RunningSimulator simulator;
    ASSERT_TRUE(simulator.isReady());
    const QString text = u"Coração à João Ж"_s;
    EXPECT_EQ(send(simulator, text, {u"-unicode"_s}), 0) << m_output.data();
    const QList<QJsonObject> messages = simulator.messages();
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(joinedText(messages), text);
    EXPECT_EQ(messages.constFirst().value(u"coding"_s).toString(), u"ucs2"_s);
}

TEST_F(Gammu, sendsALongTextInParts)
{
    RunningSimulator simulator;
    ASSERT_TRUE(simulator.isReady());
    EXPECT_EQ(send(simulator, longText, {u"-len"_s, u"400"_s}), 0) << m_output.data();
    const QList<QJsonObject> messages = simulator.messages();
    ASSERT_EQ(messages.size(), 3);
    EXPECT_EQ(joinedText(messages), longText);
    for (qsizetype i = 0; i < messages.size(); ++i) {
        EXPECT_EQ(messages.at(i).value(u"part"_s).toInt(), i + 1);
        EXPECT_EQ(messages.at(i).value(u"parts"_s).toInt(), 3);
        EXPECT_EQ(messages.at(i).value(u"concatenation"_s),
                  messages.constFirst().value(u"concatenation"_s));
    }
}

TEST_F(Gammu, sendsInTextMode)
{
    RunningSimulator simulator({u"--formats"_s, u"text"_s});
    ASSERT_TRUE(simulator.isReady());
    EXPECT_EQ(send(simulator, u"hello [world] {x} @$"_s), 0) << m_output.data();
    const QList<QJsonObject> messages = simulator.messages();
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(joinedText(messages), u"hello [world] {x} @$"_s);
    EXPECT_EQ(messages.constFirst().value(u"number"_s).toString(), u"+34600111222"_s);
    EXPECT_EQ(messages.constFirst().value(u"pdu"_s).toString(), QString());
}

TEST_F(Gammu, entersThePin)
{
    RunningSimulator simulator({u"--pin"_s, u"1234"_s});
    ASSERT_TRUE(simulator.isReady());
    EXPECT_NE(send(simulator, u"hello"_s), 0);
    EXPECT_EQ(run(simulator, {u"entersecuritycode"_s, u"PIN"_s, u"1234"_s}), 0) << m_output.data();
    EXPECT_EQ(send(simulator, u"hello"_s), 0) << m_output.data();
    EXPECT_EQ(simulator.messages().size(), 1);
}

TEST_F(Gammu, sendsOverAPacedLine)
{
    RunningSimulator simulator({u"--baud"_s, u"115200"_s, u"--latency"_s, u"100"_s});
    ASSERT_TRUE(simulator.isReady());
    EXPECT_EQ(send(simulator, u"hello"_s), 0) << m_output.data();
    EXPECT_EQ(simulator.messages().size(), 1);
}

TEST_F(Gammu, readsWhatHasArrived)
{
    RunningSimulator simulator({u"--memories"_s, u"SM,ME,SR"_s});
    ASSERT_TRUE(simulator.isReady());
    ControlClient control(simulator.controlPath());
    const QByteArrayList texts{"hello [world] {x} @$", "Coração à João Ж 😀", "¿mañana? €"};
    for (const QByteArray &text : texts)
        EXPECT_EQ(control.ask(R"(deliver {"from":"+34600111222","text":")" + text + "\"}"), "ok 1");
    EXPECT_EQ(control.ask(R"(deliver {"from":"Banco","time":"2026-03-09T12:00:05+01:00",)"
                          R"("text":"from a name"})"),
              "ok 1");
    EXPECT_EQ(control.ask(R"(deliver {"from":"1","text":"Pão é útil","single":"pt"})"), "ok 1");
    EXPECT_EQ(run(simulator, {u"getallsms"_s}), 0) << m_output.data();
    for (const QByteArray &text :
         texts + QByteArrayList{"from a name", "Banco", "+34600111222", "12:00:05 2026 +0100"})
        EXPECT_TRUE(m_output.contains(text)) << text.data() << m_output.data();
    EXPECT_TRUE(m_output.contains("5 SMS parts")) << m_output.data();
    EXPECT_EQ(run(simulator, {u"getsms"_s, u"1"_s, u"2"_s}), 0) << m_output.data();
    EXPECT_TRUE(m_output.contains(texts.at(1))) << m_output.data();
    EXPECT_TRUE(m_output.contains("Status               : Read")) << m_output.data();
    EXPECT_EQ(run(simulator, {u"deletesms"_s, u"1"_s, u"2"_s}), 0) << m_output.data();
    EXPECT_EQ(control.ask("memory SM"), "ok 4 20");
}

TEST_F(Gammu, joinsThePartsOfALongMessage)
{
    for (const char *bits : {"8", "16"}) {
        RunningSimulator simulator;
        ASSERT_TRUE(simulator.isReady());
        ControlClient control(simulator.controlPath());
        EXPECT_EQ(control.ask("deliver {\"from\":\"+34600111222\",\"reference\":7,\"bits\":" +
                              QByteArray(bits) + ",\"text\":\"" + longText.toUtf8() +
                              "\",\"order\":[2,3,1]}"),
                  "ok 3");
        EXPECT_EQ(run(simulator, {u"geteachsms"_s}), 0) << m_output.data();
        EXPECT_TRUE(m_output.contains(longText.trimmed().toUtf8())) << m_output.data();
    }
}

TEST_F(Gammu, readsInTextMode)
{
    RunningSimulator simulator({u"--formats"_s, u"text"_s});
    ASSERT_TRUE(simulator.isReady());
    ControlClient control(simulator.controlPath());
    EXPECT_EQ(control.ask(R"(deliver {"from":"+34600111222","text":"hello [world] {x} ¿?"})"),
              "ok 1");
    // It asks for the character set HEX, and doesn't undo that in numbers.
    EXPECT_EQ(run(simulator, {u"getallsms"_s}), 0) << m_output.data();
    EXPECT_TRUE(m_output.contains("hello [world] {x} ¿?")) << m_output.data();
}

TEST_F(Gammu, sendsWithARequestForAReport)
{
    RunningSimulator simulator;
    ASSERT_TRUE(simulator.isReady());
    ControlClient control(simulator.controlPath());
    EXPECT_EQ(send(simulator, u"hello"_s, {u"-report"_s}), 0) << m_output.data();
    EXPECT_EQ(simulator.messages().size(), 1);
    EXPECT_EQ(control.ask("count sent"), "ok 1");
    EXPECT_EQ(control.ask("count reports"), "ok 1");
}

} // namespace norvane
