#include "TovekSMService/modem/at/AtChannel.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/modem/at/FakeModemLine.h"
#include "support/TurnedTime.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QStringList g_logged;

void note(QtMsgType, const QMessageLogContext &context, const QString &message)
{
    EXPECT_STREQ(context.category, "engine.at");
    g_logged.append(message);
}

/// A channel whose lines are logged.
class Trace : public testing::Test
{
protected:
    Trace()
    {
        g_logged.clear();
        EXPECT_TRUE(m_line.open(u"/dev/fake"_s, 9600));
        QLoggingCategory::setFilterRules(u"engine.*.debug=true"_s);
        m_handler = qInstallMessageHandler(note);
    }
    ~Trace() override
    {
        qInstallMessageHandler(m_handler);
        QLoggingCategory::setFilterRules(QString());
    }

    void run(const QByteArray &command)
    {
        bool answered = false;
        m_channel.run({command, 1000, {}}, [&](const AtAnswer &) { answered = true; });
        EXPECT_TRUE(m_time.until([&] { return answered; }));
    }
    void submit(const QByteArray &payload)
    {
        bool answered = false;
        m_channel.submit({"AT+CMGS=23", 1000, {}}, payload, 1000,
                         [&](const AtAnswer &) { answered = true; });
        EXPECT_TRUE(m_time.until([&] { return answered; }));
    }
    void synchronise()
    {
        bool done = false;
        m_channel.synchronise(1, [&](SyncOutcome) { done = true; });
        EXPECT_TRUE(m_time.until([&] { return done; }));
    }
    /// Lets the device say something by itself.
    void say(const QByteArray &bytes)
    {
        bool heard = false;
        const auto context = std::make_unique<QObject>();
        QObject::connect(&m_line, &SerialLine::received, context.get(), [&] { heard = true; });
        m_line.say(bytes);
        EXPECT_TRUE(m_time.until([&] { return heard; }));
    }

    static QStringList takeLog() { return std::exchange(g_logged, {}); }
    static QStringList lines(std::initializer_list<const char *> list)
    {
        QStringList result;
        for (const char *const line : list)
            result.append(QLatin1String(line));
        return result;
    }
    static void expectNothingOf(const QStringList &pieces, const QString &where)
    {
        const QString log = takeLog().join(u'\n');
        for (const QString &piece : pieces)
            EXPECT_FALSE(log.contains(piece)) << qPrintable(piece) << " in\n"
                                              << qPrintable(log) << '\n'
                                              << qPrintable(where);
    }
    /// All pieces of this length.
    static QStringList piecesOf(const QByteArray &text, qsizetype length)
    {
        QStringList pieces;
        for (qsizetype at = 0; at + length <= text.size(); ++at)
            pieces.append(QString::fromLatin1(text.mid(at, length)));
        return pieces;
    }

    TurnedTime m_time;
    FakeModemLine m_line;
    AtChannel m_channel{&m_line, ModemTimings{}, m_time};
    QtMessageHandler m_handler = nullptr;
};

TEST_F(Trace, showsEveryLineOfBothDirections)
{
    m_line.answers.insert("AT+CSQ", "\r\n+CREG: 1\r\n+CSQ: 20,0\r\n\r\nOK\r\n");
    run("AT+CSQ");
    EXPECT_EQ(takeLog(), lines({"-> AT+CSQ", "<- +CREG: 1", "<- +CSQ: 20,0", "<- OK"}));
    say("\r\nRING\r\n");
    EXPECT_EQ(takeLog(), lines({"<- RING"}));
}

TEST_F(Trace, showsHowTheDeviceIsLookedFor)
{
    m_line.answers.insert("AT", "\r\nOK\r\n");
    synchronise();
    EXPECT_EQ(takeLog(), lines({"-> ESC", "-> AT", "<- OK", "in command mode"}));
    m_line.silent = true;
    synchronise();
    EXPECT_EQ(takeLog(), lines({"-> ESC", "-> AT", "not in command mode: nothing came"}));
    run("AT+CSQ");
    EXPECT_EQ(takeLog(), lines({"-> AT+CSQ", "no answer within the time limit"}));
}

TEST_F(Trace, saysNothingUnlessItIsAsked)
{
    QLoggingCategory::setFilterRules(QString());
    m_line.answers.insert("AT+CSQ", "\r\n+CSQ: 20,0\r\n\r\nOK\r\n");
    run("AT+CSQ");
    synchronise();
    EXPECT_EQ(takeLog(), QStringList());
}

TEST_F(Trace, showsNeitherThePinNorItsEcho)
{
    m_line.echo = true;
    m_line.answers.insert("AT+CPIN=\"47119\"", "\r\nOK\r\n");
    m_line.answers.insert("AT+CPIN?", "\r\n+CPIN: READY\r\n\r\nOK\r\n");
    run("AT+CPIN=\"47119\"");
    run("AT+CPIN?");
    EXPECT_EQ(takeLog(), lines({"-> AT+CPIN=****", "<- ****", "<- OK", "-> AT+CPIN?", "<- ****",
                                "<- +CPIN: READY", "<- OK"}));
}

TEST_F(Trace, showsNoPieceOfAPinWhoseEchoIsCutInTwo)
{
    const QByteArray command = "AT+CPIN=\"47119\"";
    m_line.echo = true;
    m_line.interjection = "\r\n+CREG: 1\r\n";
    m_line.answers.insert(command, "\r\nOK\r\n");
    for (int at = 0; at <= command.size() + 8; ++at) {
        m_line.interjectAfter = at;
        run(command);
        expectNothingOf(piecesOf("47119", 1), u"cut after %1"_s.arg(at));
    }
}

TEST_F(Trace, showsNoPieceOfAPinThatComesBehindALateAnswer)
{
    m_line.answers.insert("AT+COPS?", "");
    m_line.answers.insert("AT+CPIN=\"47119\"", "\r\nOK\r\nAT+CPIN=\"4\r\n711\r\n9\"\r\n");
    m_line.answers.insert("AT+CPIN?", "\r\n7\r\n\r\nOK\r\n");
    run("AT+COPS?"); // its answer comes behind its time, as that to the PIN
    run("AT+CPIN=\"47119\"");
    run("AT+CPIN?");
    expectNothingOf(piecesOf("47119", 1), QString());
}

TEST_F(Trace, showsNoPieceOfAPinThatComesBehindALateAnswerWhichNobodyCounts)
{
    m_line.answers.insert("AT", "\r\nOK\r\n");
    m_line.answers.insert("AT+COPS?", "");
    m_line.answers.insert("AT+CPIN=\"47119\"", "\r\nOK\r\n");
    m_line.answers.insert("AT+CPIN?", "AT+CPIN=\"4\r\n711\r\n9\r\n\"\r\n\r\nOK\r\n");
    run("AT+COPS?");
    synchronise();
    run("AT+CPIN=\"47119\""); // its OK is that of the first command
    run("AT+CPIN?");
    expectNothingOf(piecesOf("47119", 1), QString());
}

TEST_F(Trace, showsEverythingAgainWhenThePinHasBeenAnsweredFor)
{
    m_line.answers.insert("AT+CPIN=\"47119\"", "\r\nOK\r\n");
    m_line.answers.insert("AT+CGMI", "\r\nNorvane\r\n\r\nOK\r\n");
    run("AT+CPIN=\"47119\"");
    run("AT+CGMI");
    takeLog();
    run("AT+CGMI");
    EXPECT_EQ(takeLog(), lines({"-> AT+CGMI", "<- Norvane", "<- OK"}));
}

TEST_F(Trace, showsNoMessageThatIsSent)
{
    const QByteArray payload = "0011000B914306011122F20000AA095A707BF9A3C3D36F0B";
    m_line.echo = true;
    submit(payload);
    const QStringList log = takeLog();
    EXPECT_EQ(log.first(), u"-> AT+CMGS=23"_s);
    EXPECT_TRUE(log.contains(u"-> ****"_s)) << qPrintable(log.join(u'\n'));
    EXPECT_TRUE(log.contains(u"<- +CMGS: 42"_s)) << qPrintable(log.join(u'\n'));
    m_line.interjection = "\r\n+CREG: 1\r\n";
    for (int at = 0; at <= payload.size() + 20; ++at) {
        m_line.interjectAfter = at;
        submit(payload);
        expectNothingOf(piecesOf(payload, 4), u"cut after %1"_s.arg(at));
    }
}

TEST_F(Trace, showsNoMessageThatComes)
{
    say("\r\n+CMT: \"+34600111222\",,\"26/05/01,12:00:00+08\"\r\nZanahoria\r\nOK\r\nTomate\r\n");
    EXPECT_EQ(takeLog(), lines({"<- +CMT: ****", "<- ****", "<- OK", "<- ****"}));
    m_line.answers.insert(
        "AT+CMGR=1", "\r\n+CMGR: \"REC "
                     "UNREAD\",\"+34600111222\"\r\nZanahoria\r\n600333\r\n\r\nOK\r\nTomate\r\n");
    run("AT+CMGR=1");
    EXPECT_EQ(takeLog(),
              lines({"-> AT+CMGR=1", "<- +CMGR: ****", "<- ****", "<- ****", "<- OK", "<- ****"}));
}

} // namespace

} // namespace norvane
