#include "TovekSMService/host/EngineProcess.h"
#include "gsm-simulator/RunningSimulator.h"

#include "TovekSMService/dispatch/EngineSettings.h"
#include "TovekSMService/store/OtherConnection.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// What the engine writes to standard error.
class EngineOutput : public EngineProcess
{
protected:
    EngineOutput()
    {
        m_engine.setProcessChannelMode(QProcess::SeparateChannels);
        m_engine.setStandardErrorFile(logFile());
    }

    QString logFile() const { return m_folder.filePath(QStringLiteral("log")); }
    QString log() const
    {
        QFile file(logFile());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    /// Sends one message and fails another, with a SIM that asks for the PIN.
    void work()
    {
        RunningSimulator device({QStringLiteral("--pin"), QStringLiteral("47119"),
                                 QStringLiteral("--fail-every"), QStringLiteral("2"),
                                 QStringLiteral("--fail-code"), QStringLiteral("8")});
        ASSERT_TRUE(device.isReady());
        start();
        setSettings({0, QStringLiteral("47119"), 1, 1, device.link() + QStringLiteral(", 115200")});
        const QString due = QStringLiteral("2024-01-01T00:00:00");
        addSMS(QStringLiteral("600111222"), QStringLiteral("Zanahoria"), due);
        addSMS(QStringLiteral("600111333"), QStringLiteral("Zanahoria"), due);
        addSMS(QStringLiteral("not a number"), QStringLiteral("Zanahoria"), due);
        call("StartEngine");
        EXPECT_TRUE(until([] { return callForNumber("GetQueueSize") == 0; }));
        EXPECT_EQ(device.messages().size(), 1);
        // A PIN that is refused, and a device that is gone.
        setSettings({0, QStringLiteral("58220"), 1, 1, QStringLiteral("/no/such/device, 9600")});
        call("ApplySettings");
        Listener listener(QDBusConnection::sessionBus());
        call("ReportState");
        EXPECT_TRUE(until([&] { return listener.has(QStringLiteral("WarningError -2")); }));
        stop();
    }
    void expectNoSecrets() const
    {
        const QString text = log();
        EXPECT_TRUE(text.contains(QLatin1String("up, version"))) << text.toStdString();
        EXPECT_TRUE(text.contains(QLatin1String("/no/such/device"))) << text.toStdString();
        for (const char *const secret : {"47119", "58220", "Zanahoria"})
            EXPECT_FALSE(text.contains(QLatin1String(secret), Qt::CaseInsensitive))
                << secret << " in:\n"
                << text.toStdString();
    }

    QTemporaryDir m_folder;
};

TEST_F(EngineOutput, noTextAndNoPinIsLogged)
{
    work();
    expectNoSecrets();
}

TEST_F(EngineOutput, noTextAndNoPinIsLoggedInFullEither)
{
    m_engine.setArguments({QStringLiteral("--log-level"), QStringLiteral("debug")});
    work();
    expectNoSecrets();
    const QString text = log();
    EXPECT_TRUE(text.contains(QLatin1String(" debug engine.at: -> AT+CPIN=****\n")));
    EXPECT_TRUE(text.contains(QLatin1String(" debug engine.at: -> ****\n")));
    EXPECT_TRUE(text.contains(QLatin1String(" debug engine.at: <- +CMGS: ")));
    // The number as the PDU has it.
    EXPECT_FALSE(text.contains(QLatin1String("06101122F2"))) << text.toStdString();
}

TEST_F(EngineOutput, noLineOfTheDeviceIsLoggedUnlessItIsAskedFor)
{
    work();
    EXPECT_FALSE(log().contains(QLatin1String("engine.at"))) << log().toStdString();
}

TEST_F(EngineOutput, elsewhereALineHasTimeAndLevel)
{
    work();
    const QRegularExpression line(
        QStringLiteral("\\A\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} "
                       "(debug|info|warning|error|fatal) ."));
    const QStringList lines = log().split(u'\n', Qt::SkipEmptyParts);
    EXPECT_GE(lines.size(), 3);
    for (const QString &one : lines)
        EXPECT_TRUE(line.match(one).hasMatch()) << one.toStdString();
}

TEST_F(EngineOutput, theLevelLeavesOutWhatIsLess)
{
    m_engine.setArguments({QStringLiteral("--log-level"), QStringLiteral("warning")});
    start();
    stop();
    EXPECT_EQ(log(), QString());
}

/// Runs the engine with a level in its settings.
class EngineLogLevel : public EngineOutput
{
protected:
    ~EngineLogLevel() override { QFile::remove(EngineSettings::file()); }

    void runWith(const QByteArray &level)
    {
        const QString settings = EngineSettings::file();
        ASSERT_TRUE(QDir().mkpath(QFileInfo(settings).path()));
        QFile file(settings);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Log]\nLevel=" + level + '\n');
        file.close();
        RunningSimulator device;
        ASSERT_TRUE(device.isReady());
        start();
        setSettings({0, QString(), 1, 1, device.link() + QStringLiteral(", 115200")});
        Listener listener(QDBusConnection::sessionBus());
        call("StartEngine");
        ASSERT_TRUE(until([&] { return listener.has(QStringLiteral("DeviceInfo")); }));
        stop();
    }
};

TEST_F(EngineLogLevel, isThatOfTheSettings)
{
    runWith("debug");
    EXPECT_TRUE(log().contains(QLatin1String("engine.at: -> AT\n"))) << log().toStdString();
}

TEST_F(EngineLogLevel, isThatOfTheCommandLineBeforeThatOfTheSettings)
{
    m_engine.setArguments({QStringLiteral("--log-level"), QStringLiteral("info")});
    runWith("debug");
    EXPECT_FALSE(log().contains(QLatin1String("engine.at"))) << log().toStdString();
}

TEST_F(EngineLogLevel, thatDoesNotExistIsToldAndNotTaken)
{
    runWith("loud");
    EXPECT_TRUE(log().contains(QLatin1String("warning engine.host: settings: Log/Level=loud")));
    EXPECT_TRUE(log().contains(QLatin1String("info engine.host: up")));
    EXPECT_FALSE(log().contains(QLatin1String("engine.at"))) << log().toStdString();
}

/// Runs the engine as a console starts it, with the log beside its store.
class EngineLogFile : public EngineOutput
{
protected:
    static constexpr qint64 maxSize = 10 * 1024 * 1024;
    static QString logBesideStore() { return folder() + QStringLiteral("/engine.log"); }

    void runWith(const QString &file, qint64 size)
    {
        ASSERT_TRUE(QDir().mkpath(folder()));
        QFile log(file);
        ASSERT_TRUE(log.open(QIODevice::WriteOnly));
        ASSERT_TRUE(log.resize(size));
        m_engine.setStandardErrorFile(file, QIODevice::Append);
        start();
        stop();
    }
};

TEST_F(EngineLogFile, isSetAsideByTheEngineBeforeItIsTooLarge)
{
    runWith(logBesideStore(), maxSize);
    QFile file(logBesideStore());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    EXPECT_TRUE(text.contains("up, version") && text.contains("ends")) << text.toStdString();
    EXPECT_LT(text.size(), 1000);
    EXPECT_EQ(file.permissions() & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    EXPECT_EQ(QFileInfo(logBesideStore() + QStringLiteral(".1")).size(), maxSize);
}

TEST_F(EngineLogFile, isGoneOnWithWhileItHasRoom)
{
    runWith(logBesideStore(), maxSize - 10'000);
    EXPECT_GT(QFileInfo(logBesideStore()).size(), maxSize - 10'000);
    EXPECT_FALSE(QFile::exists(logBesideStore() + QStringLiteral(".1")));
}

TEST_F(EngineLogFile, ofSomebodyElsesChoiceIsLeftToThem)
{
    runWith(logFile(), maxSize);
    EXPECT_GT(QFileInfo(logFile()).size(), maxSize);
    EXPECT_FALSE(QFile::exists(logFile() + QStringLiteral(".1")));
}

/// Runs the engine with a file as its standard error that JOURNAL_STREAM names, or doesn't.
class EngineOnJournal : public EngineOutput
{
protected:
    void startWith(qulonglong inodeMore)
    {
        QFile file(logFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        struct stat info = {};
        ASSERT_EQ(::fstat(file.handle(), &info), 0);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("JOURNAL_STREAM"),
                           QStringLiteral("%1:%2")
                               .arg(static_cast<qulonglong>(info.st_dev))
                               .arg(static_cast<qulonglong>(info.st_ino) + inodeMore));
        m_engine.setProcessEnvironment(environment);
        m_engine.setStandardErrorFile(logFile(), QIODevice::Append);
        start();
        setSettings(noDevice());
        call("StartEngine");
        ASSERT_TRUE(until([this] { return log().contains(QLatin1String("/no/such/device")); }));
        stop();
    }
};

TEST_F(EngineOnJournal, aLineForTheJournalHasItsPriorityAndNoTime)
{
    startWith(0);
    EXPECT_TRUE(log().startsWith(QLatin1String("<6>engine.host: up, version")))
        << log().toStdString();
    const QRegularExpression warning(QStringLiteral("\n<4>engine\\.dispatch: warning -2"));
    EXPECT_TRUE(warning.match(log()).hasMatch()) << log().toStdString();
}

TEST_F(EngineOnJournal, aJournalThatStandardErrorNoLongerLeadsToIsNone)
{
    startWith(1);
    EXPECT_FALSE(log().startsWith(u'<')) << log().toStdString();
}

} // namespace
