#include "TovekSMService/host/EngineProcess.h"

#include "TovekSMService/store/OtherConnection.h"

#include <QRegularExpression>

namespace {

class CommandLineOfEngine : public EngineProcess
{
protected:
    static QString status() { return run({QStringLiteral("--status")}).out; }
    static Ended runWith(const char *option, const QString &value)
    {
        return run({QLatin1String(option), value});
    }
};

TEST_F(CommandLineOfEngine, helpNamesEveryOption)
{
    const Ended help = run({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    for (const char *const option :
         {"--help", "--version", "--device", "--pin", "--status", "--json", "--queue", "--report",
          "--since", "--format", "--backup", "--log-level"})
        EXPECT_TRUE(help.out.contains(QLatin1String(option))) << option;
    EXPECT_FALSE(isOnBus());
}

TEST_F(CommandLineOfEngine, versionIsNameAndNumber)
{
    const Ended version = run({QStringLiteral("--version")});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(QRegularExpression(QStringLiteral("\\ATovekSMService \\d+\\.\\d+\\.\\d+\\n\\z"))
                    .match(version.out)
                    .hasMatch())
        << version.out.toStdString();
}

TEST_F(CommandLineOfEngine, whatItDoesNotKnowIsAnError)
{
    const QStringList wrong[] = {{QStringLiteral("--nonsense")},
                                 {QStringLiteral("nonsense")},
                                 {QStringLiteral("--device")},
                                 {QStringLiteral("--pin")},
                                 {QStringLiteral("--status"), QStringLiteral("nonsense")},
                                 {QStringLiteral("--status=yes")}};
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
    const Ended first = run({QStringLiteral("--status")});
    EXPECT_EQ(first.exitCode, 0);
    EXPECT_EQ(first.out, QStringLiteral("engine: not up, stopped\nqueue: 0\n"
                                        "device: COM1, 9600\npin: none\n"));
    OtherConnection(storeFile()).run(QStringLiteral("INSERT INTO setting VALUES ('run', '1')"));
    EXPECT_TRUE(status().startsWith(QStringLiteral("engine: not up, to run when it is\n")));
    EXPECT_FALSE(isOnBus());
}

TEST_F(CommandLineOfEngine, aDeviceIsStoredWithoutAnEngine)
{
    const Ended stored = runWith("--device", QStringLiteral("/dev/ttyUSB0, 115200"));
    EXPECT_EQ(stored.exitCode, 0);
    EXPECT_EQ(stored.out + stored.err, QString());
    start();
    EXPECT_EQ(settings(),
              (WireSettings{0, QString(), 1, 1, QStringLiteral("/dev/ttyUSB0, 115200")}));
}

TEST_F(CommandLineOfEngine, aWrongDeviceIsRefusedAndNothingStored)
{
    for (const char *const wrong : {"", "ttyUSB0", "COM0, 9600", "/dev/ttyUSB0, fast", "COM1,"}) {
        const Ended refused = run({QStringLiteral("--device"), QLatin1String(wrong),
                                   QStringLiteral("--pin"), QStringLiteral("1234")});
        EXPECT_EQ(refused.exitCode, 1) << wrong;
        EXPECT_TRUE(refused.err.contains(QLatin1String("not a device and a speed"))) << wrong;
    }
    EXPECT_TRUE(status().endsWith(QStringLiteral("device: COM1, 9600\npin: none\n")));
}

TEST_F(CommandLineOfEngine, aPinIsStoredAndNeverShown)
{
    EXPECT_EQ(runWith("--pin", QStringLiteral("47119")).exitCode, 0);
    EXPECT_TRUE(status().contains(QStringLiteral("pin: set\n")));
    EXPECT_FALSE(status().contains(QStringLiteral("47119")));
    start();
    EXPECT_EQ(settings().pin, QStringLiteral("47119"));
    EXPECT_EQ(settings().parameter, QStringLiteral("COM1, 9600"));
    stop();
    EXPECT_EQ(runWith("--pin", QString()).exitCode, 0);
    EXPECT_TRUE(status().contains(QStringLiteral("pin: none\n")));
}

TEST_F(CommandLineOfEngine, settingsAndQuestionsGoTogether)
{
    const Ended all =
        run({QStringLiteral("--device"), QStringLiteral("COM3, 9600"), QStringLiteral("--pin"),
             QStringLiteral("1234"), QStringLiteral("--status")});
    EXPECT_EQ(all.exitCode, 0);
    EXPECT_TRUE(all.out.endsWith(QStringLiteral("device: COM3, 9600\npin: set\n")));
}

TEST_F(CommandLineOfEngine, theQueueIsPrintedAMessageALineWithAnEngineAndWithout)
{
    EXPECT_EQ(run({QStringLiteral("--queue")}).out, QString());
    start();
    addSMS(QStringLiteral("601"), QStringLiteral("ñ€"), QStringLiteral("2024-05-01T12:00:00"));
    addSMS(QStringLiteral("6\t0"), QStringLiteral("two\r\nlines\x1B[2J"), QStringLiteral("odd\n"));
    const QString expected = QStringLiteral("odd \t6 0\ttwo  lines [2J\n"
                                            "2024-05-01T12:00:00\t601\tñ€\n");
    EXPECT_EQ(run({QStringLiteral("--queue")}).out, expected);
    stop();
    EXPECT_EQ(run({QStringLiteral("--queue")}).out, expected);
}

TEST_F(CommandLineOfEngine, aLargeQueueIsPrintedWhole)
{
    start();
    call("AddSMSList",
         {QVariant::fromValue(QList<WireEntry>(9001, {QStringLiteral("600"), {}})), QString()});
    const Ended printed = run({QStringLiteral("--queue")});
    EXPECT_EQ(printed.exitCode, 0);
    EXPECT_EQ(printed.out.count(u'\n'), 9001);
}

TEST_F(CommandLineOfEngine, aRunningEngineIsAskedAndTold)
{
    start();
    EXPECT_EQ(status(), QStringLiteral("engine: stopped\nqueue: 0\n"
                                       "device: COM1, 9600\npin: none\ntrouble: none\n"));
    setSettings({0, QStringLiteral("1234"), 3, 2, QString()});
    EXPECT_EQ(runWith("--device", QStringLiteral("/no/such/device, 9600")).exitCode, 0);
    EXPECT_EQ(settings(), (WireSettings{0, QStringLiteral("1234"), 1, 1,
                                        QStringLiteral("/no/such/device, 9600")}));
    addSMS(QStringLiteral("600"), QString(), QString());
    call("StartEngine");
    EXPECT_TRUE(until([] { return !status().endsWith(QStringLiteral("\ntrouble: none\n")); }));
    EXPECT_EQ(status(), QStringLiteral("engine: running\nqueue: 1\n"
                                       "device: /no/such/device, 9600\npin: set\n"
                                       "trouble: the device: -2 /no/such/device\n"));
}

TEST_F(CommandLineOfEngine, aNewDeviceComesIntoForceAtOnce)
{
    start();
    setSettings(noDevice());
    Listener listener(QDBusConnection::sessionBus());
    call("ReportState");
    call("StartEngine");
    ASSERT_TRUE(until([&] { return listener.has(QStringLiteral("WarningError -2 /no/such/")); }));
    EXPECT_EQ(runWith("--device", QStringLiteral("/no/other/device, 9600")).exitCode, 0);
    EXPECT_TRUE(until([&] { return listener.has(QStringLiteral("WarningError -2 /no/other/")); }));
}

TEST_F(CommandLineOfEngine, anEngineOutOfReachIsLeftAlone)
{
    start();
    QProcessEnvironment elsewhere = QProcessEnvironment::systemEnvironment();
    elsewhere.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                     QStringLiteral("unix:path=/no/bus"));
    const Ended refused =
        run({QStringLiteral("--device"), QStringLiteral("COM2, 9600")}, elsewhere);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains(QLatin1String("can't be reached")));
    EXPECT_EQ(settings().parameter, QStringLiteral("COM1, 9600"));
}

TEST_F(CommandLineOfEngine, withoutABusTheStoreIsReadAllTheSame)
{
    QProcessEnvironment elsewhere = QProcessEnvironment::systemEnvironment();
    elsewhere.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                     QStringLiteral("unix:path=/no/bus"));
    const Ended told = run({QStringLiteral("--status")}, elsewhere);
    EXPECT_EQ(told.exitCode, 0);
    EXPECT_TRUE(told.out.contains(QStringLiteral("engine: not up")));
}

TEST_F(CommandLineOfEngine, anEngineThatCannotAnswerIsAnErrorAndNotAnEmptyState)
{
    start();
    setSettings({0, QStringLiteral("1234"), 1, 1, QStringLiteral("COM2, 9600")});
    // The engine finds nothing where its settings were.
    OtherConnection other(storeFile());
    other.run(QStringLiteral("ALTER TABLE setting RENAME TO elsewhere"));
    for (const QStringList &arguments :
         {QStringList({QStringLiteral("--status")}),
          QStringList({QStringLiteral("--device"), QStringLiteral("COM3, 9600")})}) {
        const Ended failed = run(arguments);
        EXPECT_EQ(failed.exitCode, 1);
        EXPECT_FALSE(failed.err.isEmpty());
        EXPECT_EQ(failed.out, QString());
    }
    other.run(QStringLiteral("ALTER TABLE elsewhere RENAME TO setting"));
    EXPECT_EQ(settings().pin, QStringLiteral("1234"));
    EXPECT_EQ(settings().parameter, QStringLiteral("COM2, 9600"));
}

} // namespace
