#include "TovekSMService/host/EngineProcess.h"
#include "gsm-simulator/RunningSimulator.h"

#include "TovekSMService/dispatch/EngineSettings.h"
#include "TovekSMService/store/EngineName.h"
#include "TovekSMService/store/OtherConnection.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

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

    QString logFile() const { return m_folder.filePath(u"log"_s); }
    QString log() const
    {
        QFile file(logFile());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    /// Sends one message and fails another, with a SIM that asks for the PIN.
    void work()
    {
        RunningSimulator device(
            {u"--pin"_s, u"47119"_s, u"--fail-every"_s, u"2"_s, u"--fail-code"_s, u"8"_s});
        ASSERT_TRUE(device.isReady());
        start();
        setSettings({0, u"47119"_s, 1, 1, device.link() + u", 115200"_s});
        const QString due = u"2024-01-01T00:00:00"_s;
        addSMS(u"600111222"_s, u"Zanahoria"_s, due);
        addSMS(u"600111333"_s, u"Zanahoria"_s, due);
        addSMS(u"not a number"_s, u"Zanahoria"_s, due);
        call("StartEngine");
        EXPECT_TRUE(until([] { return callForNumber("GetQueueSize") == 0; }));
        EXPECT_EQ(device.messages().size(), 1);
        // A PIN that is refused, and a device that is gone.
        setSettings({0, u"58220"_s, 1, 1, u"/no/such/device, 9600"_s});
        call("ApplySettings");
        Listener listener(QDBusConnection::sessionBus());
        call("ReportState");
        EXPECT_TRUE(until([&] { return listener.has(u"WarningError -2"_s); }));
        stop();
    }
    void expectNoSecrets() const
    {
        const QString text = log();
        EXPECT_TRUE(text.contains("up, version"_L1)) << text.toStdString();
        EXPECT_TRUE(text.contains("/no/such/device"_L1)) << text.toStdString();
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
    m_engine.setArguments({u"--log-level"_s, u"debug"_s});
    work();
    expectNoSecrets();
    const QString text = log();
    EXPECT_TRUE(text.contains(" debug engine.at: -> AT+CPIN=****\n"_L1));
    EXPECT_TRUE(text.contains(" debug engine.at: -> ****\n"_L1));
    EXPECT_TRUE(text.contains(" debug engine.at: <- +CMGS: "_L1));
    // The number as the PDU has it.
    EXPECT_FALSE(text.contains("06101122F2"_L1)) << text.toStdString();
}

TEST_F(EngineOutput, noLineOfTheDeviceIsLoggedUnlessItIsAskedFor)
{
    work();
    EXPECT_FALSE(log().contains("engine.at"_L1)) << log().toStdString();
}

TEST_F(EngineOutput, elsewhereALineHasTimeAndLevel)
{
    work();
    const QRegularExpression line(u"\\A\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} "
                                  "(debug|info|warning|error|fatal) ."_s);
    const QStringList lines = log().split(u'\n', Qt::SkipEmptyParts);
    EXPECT_GE(lines.size(), 3);
    for (const QString &one : lines)
        EXPECT_TRUE(line.match(one).hasMatch()) << one.toStdString();
}

TEST_F(EngineOutput, theLevelLeavesOutWhatIsLess)
{
    m_engine.setArguments({u"--log-level"_s, u"warning"_s});
    start();
    stop();
    EXPECT_EQ(log(), QString());
}

/// Runs the engine with a level in its settings.
class EngineLogLevel : public EngineOutput
{
protected:
    ~EngineLogLevel() override { QFile::remove(EngineSettings::file(EngineName())); }

    void runWith(const QByteArray &level)
    {
        const QString settings = EngineSettings::file(EngineName());
        ASSERT_TRUE(QDir().mkpath(QFileInfo(settings).path()));
        QFile file(settings);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Log]\nLevel=" + level + '\n');
        file.close();
        RunningSimulator device;
        ASSERT_TRUE(device.isReady());
        start();
        setSettings({0, QString(), 1, 1, device.link() + u", 115200"_s});
        Listener listener(QDBusConnection::sessionBus());
        call("StartEngine");
        ASSERT_TRUE(until([&] { return listener.has(u"DeviceInfo"_s); }));
        stop();
    }
};

TEST_F(EngineLogLevel, isThatOfTheSettings)
{
    runWith("debug");
    EXPECT_TRUE(log().contains("engine.at: -> AT\n"_L1)) << log().toStdString();
}

TEST_F(EngineLogLevel, isThatOfTheCommandLineBeforeThatOfTheSettings)
{
    m_engine.setArguments({u"--log-level"_s, u"info"_s});
    runWith("debug");
    EXPECT_FALSE(log().contains("engine.at"_L1)) << log().toStdString();
}

TEST_F(EngineLogLevel, thatDoesNotExistIsToldAndNotTaken)
{
    runWith("loud");
    EXPECT_TRUE(log().contains("warning engine.host: settings: Log/Level=loud"_L1));
    EXPECT_TRUE(log().contains("info engine.host: up"_L1));
    EXPECT_FALSE(log().contains("engine.at"_L1)) << log().toStdString();
}

/// Runs the engine as a console starts it, with the log beside its store.
class EngineLogFile : public EngineOutput
{
protected:
    static constexpr qint64 maxSize = 10 * 1024 * 1024;
    static QString logBesideStore() { return folder() + u"/engine.log"_s; }

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
    EXPECT_EQ(QFileInfo(logBesideStore() + u".1"_s).size(), maxSize);
}

TEST_F(EngineLogFile, isGoneOnWithWhileItHasRoom)
{
    runWith(logBesideStore(), maxSize - 10'000);
    EXPECT_GT(QFileInfo(logBesideStore()).size(), maxSize - 10'000);
    EXPECT_FALSE(QFile::exists(logBesideStore() + u".1"_s));
}

TEST_F(EngineLogFile, ofSomebodyElsesChoiceIsLeftToThem)
{
    runWith(logFile(), maxSize);
    EXPECT_GT(QFileInfo(logFile()).size(), maxSize);
    EXPECT_FALSE(QFile::exists(logFile() + u".1"_s));
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
        environment.insert(u"JOURNAL_STREAM"_s,
                           u"%1:%2"_s.arg(static_cast<qulonglong>(info.st_dev))
                               .arg(static_cast<qulonglong>(info.st_ino) + inodeMore));
        m_engine.setProcessEnvironment(environment);
        m_engine.setStandardErrorFile(logFile(), QIODevice::Append);
        start();
        setSettings(noDevice());
        call("StartEngine");
        ASSERT_TRUE(until([this] { return log().contains("/no/such/device"_L1); }));
        stop();
    }
};

TEST_F(EngineOnJournal, aLineForTheJournalHasItsPriorityAndNoTime)
{
    startWith(0);
    EXPECT_TRUE(log().startsWith("<6>engine.host: up, version"_L1)) << log().toStdString();
    const QRegularExpression warning(u"\n<4>engine\\.dispatch: warning -2"_s);
    EXPECT_TRUE(warning.match(log()).hasMatch()) << log().toStdString();
}

TEST_F(EngineOnJournal, aJournalThatStandardErrorNoLongerLeadsToIsNone)
{
    startWith(1);
    EXPECT_FALSE(log().startsWith(u'<')) << log().toStdString();
}

} // namespace

} // namespace norvane
