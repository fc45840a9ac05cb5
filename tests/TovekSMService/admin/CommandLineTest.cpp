#include "TovekSMService/host/EngineProcess.h"

#include "TovekSMService/store/OtherConnection.h"

#include <QRegularExpression>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class CommandLineOfEngine : public EngineProcess
{
protected:
    static QString status() { return run({u"--status"_s}).out; }
    static Ended runWith(const char *option, const QString &value)
    {
        return run({QLatin1String(option), value});
    }
};

TEST_F(CommandLineOfEngine, helpNamesEveryOption)
{
    const Ended help = run({u"--help"_s});
    EXPECT_EQ(help.exitCode, 0);
    for (const char *const option :
         {"--help", "--version", "--name", "--device", "--pin", "--status", "--json", "--queue",
          "--report", "--inbox", "--since", "--format", "--opt-out", "--backup", "--log-level"})
        EXPECT_TRUE(help.out.contains(QLatin1String(option))) << option;
    EXPECT_FALSE(isOnBus());
}

TEST_F(CommandLineOfEngine, versionIsNameAndNumber)
{
    const Ended version = run({u"--version"_s});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(QRegularExpression(u"\\ATovekSMService \\d+\\.\\d+\\.\\d+\\n\\z"_s)
                    .match(version.out)
                    .hasMatch())
        << version.out.toStdString();
}

TEST_F(CommandLineOfEngine, whatItDoesNotKnowIsAnError)
{
    const QStringList wrong[] = {{u"--nonsense"_s},
                                 {u"nonsense"_s},
                                 {u"--device"_s},
                                 {u"--pin"_s},
                                 {u"--status"_s, u"nonsense"_s},
                                 {u"--status=yes"_s}};
    for (const QStringList &arguments : wrong) {
        const Ended ended = run(arguments);
        EXPECT_NE(ended.exitCode, 0) << arguments.join(u' ').toStdString();
        EXPECT_FALSE(ended.err.isEmpty()) << arguments.join(u' ').toStdString();
        EXPECT_EQ(ended.out, QString());
    }
    EXPECT_FALSE(isOnBus());
}

TEST_F(CommandLineOfEngine, statusTellsWhatIsStoredWithoutAnEngine)
{
    const Ended first = run({u"--status"_s});
    EXPECT_EQ(first.exitCode, 0);
    EXPECT_EQ(first.out, u"engine: not up, stopped\nqueue: 0\n"
                         "device: COM1, 9600\npin: none\n"_s);
    OtherConnection(storeFile()).run(u"INSERT INTO setting VALUES ('run', '1')"_s);
    EXPECT_TRUE(status().startsWith(u"engine: not up, to run when it is\n"_s));
    EXPECT_FALSE(isOnBus());
}

TEST_F(CommandLineOfEngine, aDeviceIsStoredWithoutAnEngine)
{
    const Ended stored = runWith("--device", u"/dev/ttyUSB0, 115200"_s);
    EXPECT_EQ(stored.exitCode, 0);
    EXPECT_EQ(stored.out + stored.err, QString());
    start();
    EXPECT_EQ(settings(), (WireSettings{0, QString(), 1, 1, u"/dev/ttyUSB0, 115200"_s}));
}

TEST_F(CommandLineOfEngine, aWrongDeviceIsRefusedAndNothingStored)
{
    for (const char *const wrong : {"", "ttyUSB0", "COM0, 9600", "/dev/ttyUSB0, fast", "COM1,"}) {
        const Ended refused = run({u"--device"_s, QLatin1String(wrong), u"--pin"_s, u"1234"_s});
        EXPECT_EQ(refused.exitCode, 1) << wrong;
        EXPECT_TRUE(refused.err.contains("not a device and a speed"_L1)) << wrong;
    }
    EXPECT_TRUE(status().endsWith(u"device: COM1, 9600\npin: none\n"_s));
}

TEST_F(CommandLineOfEngine, aPinIsStoredAndNeverShown)
{
    EXPECT_EQ(runWith("--pin", u"47119"_s).exitCode, 0);
    EXPECT_TRUE(status().contains(u"pin: set\n"_s));
    EXPECT_FALSE(status().contains(u"47119"_s));
    start();
    EXPECT_EQ(settings().pin, u"47119"_s);
    EXPECT_EQ(settings().parameter, u"COM1, 9600"_s);
    stop();
    EXPECT_EQ(runWith("--pin", QString()).exitCode, 0);
    EXPECT_TRUE(status().contains(u"pin: none\n"_s));
}

TEST_F(CommandLineOfEngine, settingsAndQuestionsGoTogether)
{
    const Ended all = run({u"--device"_s, u"COM3, 9600"_s, u"--pin"_s, u"1234"_s, u"--status"_s});
    EXPECT_EQ(all.exitCode, 0);
    EXPECT_TRUE(all.out.endsWith(u"device: COM3, 9600\npin: set\n"_s));
}

TEST_F(CommandLineOfEngine, theQueueIsPrintedAMessageALineWithAnEngineAndWithout)
{
    EXPECT_EQ(run({u"--queue"_s}).out, QString());
    start();
    addSMS(u"601"_s, u"ñ€"_s, u"2024-05-01T12:00:00"_s);
    addSMS(u"6\t0"_s, u"two\r\nlines\x1B[2J"_s, u"odd\n"_s);
    const QString expected = u"odd \t6 0\ttwo  lines [2J\n"
                             "2024-05-01T12:00:00\t601\tñ€\n"_s;
    EXPECT_EQ(run({u"--queue"_s}).out, expected);
    stop();
    EXPECT_EQ(run({u"--queue"_s}).out, expected);
}

TEST_F(CommandLineOfEngine, aLargeQueueIsPrintedWhole)
{
    start();
    call("AddSMSList", {QVariant::fromValue(QList<WireEntry>(9001, {u"600"_s, {}})), QString()});
    const Ended printed = run({u"--queue"_s});
    EXPECT_EQ(printed.exitCode, 0);
    EXPECT_EQ(printed.out.count(u'\n'), 9001);
}

TEST_F(CommandLineOfEngine, aRunningEngineIsAskedAndTold)
{
    start();
    EXPECT_EQ(status(), u"engine: stopped\nqueue: 0\n"
                        "device: COM1, 9600\npin: none\ntrouble: none\n"_s);
    setSettings({0, u"1234"_s, 3, 2, QString()});
    EXPECT_EQ(runWith("--device", u"/no/such/device, 9600"_s).exitCode, 0);
    EXPECT_EQ(settings(), (WireSettings{0, u"1234"_s, 1, 1, u"/no/such/device, 9600"_s}));
    addSMS(u"600"_s, QString(), QString());
    call("StartEngine");
    EXPECT_TRUE(until([] { return !status().endsWith(u"\ntrouble: none\n"_s); }));
    EXPECT_EQ(status(), u"engine: running\nqueue: 1\n"
                        "device: /no/such/device, 9600\npin: set\n"
                        "trouble: the device: -2 /no/such/device\n"_s);
}

TEST_F(CommandLineOfEngine, aNewDeviceComesIntoForceAtOnce)
{
    start();
    setSettings(noDevice());
    Listener listener(QDBusConnection::sessionBus());
    call("ReportState");
    call("StartEngine");
    ASSERT_TRUE(until([&] { return listener.has(u"WarningError -2 /no/such/"_s); }));
    EXPECT_EQ(runWith("--device", u"/no/other/device, 9600"_s).exitCode, 0);
    EXPECT_TRUE(until([&] { return listener.has(u"WarningError -2 /no/other/"_s); }));
}

TEST_F(CommandLineOfEngine, anEngineOutOfReachIsLeftAlone)
{
    start();
    QProcessEnvironment elsewhere = QProcessEnvironment::systemEnvironment();
    elsewhere.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/no/bus"_s);
    const Ended refused = run({u"--device"_s, u"COM2, 9600"_s}, elsewhere);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains("can't be reached"_L1));
    EXPECT_EQ(settings().parameter, u"COM1, 9600"_s);
}

TEST_F(CommandLineOfEngine, withoutABusTheStoreIsReadAllTheSame)
{
    QProcessEnvironment elsewhere = QProcessEnvironment::systemEnvironment();
    elsewhere.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/no/bus"_s);
    const Ended told = run({u"--status"_s}, elsewhere);
    EXPECT_EQ(told.exitCode, 0);
    EXPECT_TRUE(told.out.contains(u"engine: not up"_s));
}

TEST_F(CommandLineOfEngine, anEngineThatCannotAnswerIsAnErrorAndNotAnEmptyState)
{
    start();
    setSettings({0, u"1234"_s, 1, 1, u"COM2, 9600"_s});
    // The engine finds nothing where its settings were.
    OtherConnection other(storeFile());
    other.run(u"ALTER TABLE setting RENAME TO elsewhere"_s);
    for (const QStringList &arguments :
         {QStringList({u"--status"_s}), QStringList({u"--device"_s, u"COM3, 9600"_s})}) {
        const Ended failed = run(arguments);
        EXPECT_EQ(failed.exitCode, 1);
        EXPECT_FALSE(failed.err.isEmpty());
        EXPECT_EQ(failed.out, QString());
    }
    other.run(u"ALTER TABLE elsewhere RENAME TO setting"_s);
    EXPECT_EQ(settings().pin, u"1234"_s);
    EXPECT_EQ(settings().parameter, u"COM2, 9600"_s);
}

} // namespace

} // namespace norvane
