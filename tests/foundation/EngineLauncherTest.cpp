#include "foundation/EngineLauncher.h"

#include "contract/BusTypes.h"
#include "foundation/EngineWait.h"
#include "foundation/FailureTexts.h"
#include "support/PrivateBus.h"
#include "support/RaisedFailure.h"

#include <QDBusConnectionInterface>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>

#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int longLimit = 24 * 3'600'000; // ms; a start that takes it hangs

QString nowhere()
{
    return u"/nonexistent/TovekSMService"_s;
}

std::optional<NumberedFailure> failureOfStart(const QDBusConnection &bus, const QString &program,
                                              int timeLimit)
{
    ProcessEngineLauncher launcher(bus, program, timeLimit);
    return raisedFailure([&] { launcher.ensureRunning(); });
}

bool engineIsOnBus(const QDBusConnection &bus)
{
    return bus.interface()->isServiceRegistered(QLatin1String(Bus::serviceName));
}

/// A program of a few lines, in a folder of its own.
class Script
{
public:
    explicit Script(const QByteArray &lines)
    {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly))
            return;
        file.write("#!/bin/sh\n" + lines + '\n');
        file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }
    QString path() const { return m_folder.filePath(u"engine"_s); }

private:
    QTemporaryDir m_folder;
};

/// Runs as long as its script is there, and never gets to the bus.
constexpr char staysAway[] = "while [ -e \"$0\" ]; do sleep 0.1; done";

QString logFolder()
{
    return qEnvironmentVariable("XDG_DATA_HOME") + u"/TovekSMService"_s;
}

QString logText()
{
    QFile file(logFolder() + u"/engine.log"_s);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

TEST(EngineLauncherTest, withoutABusThereIsNoEngine)
{
    const auto failure = failureOfStart(QDBusConnection(u"no such connection"_s),
                                        QStringLiteral(NORVANE_FAKE_ENGINE), longLimit);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->number(), 429);
    EXPECT_EQ(failure->source(), u"SMSManager"_s);
    EXPECT_EQ(failure->shown(),
              u"The sending engine can't be started: there is no session bus - 429"_s);
}

TEST(EngineLauncherTest, missingProgramFailsAtOnceAndIsNamed)
{
    const PrivateBus bus;
    const auto failure = failureOfStart(bus.connection(), nowhere(), longLimit);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->number(), 429);
    EXPECT_TRUE(failure->description().contains(nowhere()));
}

TEST(EngineLauncherTest, fileThatIsNoProgramFailsAtOnce)
{
    const PrivateBus bus;
    QTemporaryDir folder;
    const QString path = folder.filePath(u"TovekSMService"_s);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("no program");
    file.close();
    const auto notExecutable = failureOfStart(bus.connection(), path, longLimit);
    ASSERT_TRUE(notExecutable);
    EXPECT_EQ(notExecutable->number(), 429);

    const auto isFolder = failureOfStart(bus.connection(), folder.path(), longLimit);
    ASSERT_TRUE(isFolder);
    EXPECT_EQ(isFolder->number(), 429);
}

TEST(EngineLauncherTest, programThatNeverComesUpIsWaitedForNoLongerThanTheLimit)
{
    const PrivateBus bus;
    const Script program(staysAway);
    const auto failure = failureOfStart(bus.connection(), program.path(), 50);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->number(), 429);
    EXPECT_EQ(failure->description(),
              FailureText::engineNotStarted(FailureText::engineDidNotComeUp()));
}

TEST(EngineLauncherTest, programThatEndsWithoutComingUpIsNotWaitedFor)
{
    const PrivateBus bus;
    const auto failure = failureOfStart(bus.connection(), u"/bin/true"_s, longLimit);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->number(), 429);
    EXPECT_EQ(failure->description(), FailureText::engineNotStarted(FailureText::engineEnded()));
}

TEST(EngineLauncherTest, programThatEndsBecauseAnotherEngineIsUpIsNoFailure)
{
    const PrivateBus bus;
    QDBusConnection other = bus.connection();
    // The other engine comes up between the look at the bus and the end of the program.
    class OtherEngine : public EngineWait
    {
    public:
        explicit OtherEngine(QDBusConnection &bus) : m_bus(bus) {}
        void waiting(qint64) override { m_bus.registerService(QLatin1String(Bus::serviceName)); }
        void ended() override {}

    private:
        QDBusConnection &m_bus;
    } engine(other);
    const Script program("exec sleep 0.2");
    ProcessEngineLauncher launcher(bus.connection(), program.path(), longLimit, &engine);
    EXPECT_FALSE(raisedFailure([&] { launcher.ensureRunning(); }));
}

/// Notes a wait for the engine's start.
class NotedEngineWait : public EngineWait
{
public:
    void waiting(qint64 milliseconds) override
    {
        times << milliseconds;
        QFile mark(markFile());
        EXPECT_TRUE(mark.open(QIODevice::WriteOnly));
    }
    void ended() override { ++ends; }

    /// A program that becomes the fake engine once somebody has been told that it is waited for.
    QByteArray engineThatIsWaitedFor() const
    {
        return "while [ ! -e '" + QFile::encodeName(markFile()) +
               "' ]; do sleep 0.02; done\n"
               "exec '" NORVANE_FAKE_ENGINE "'";
    }

    QList<qint64> times;
    int ends = 0;

private:
    QString markFile() const { return m_folder.filePath(u"waited"_s); }

    QTemporaryDir m_folder;
};

TEST(EngineLauncherTest, theWaitIsToldUntilItEndsWhetherTheBusStartsTheEngineOrTheLauncher)
{
    for (const bool activated : {true, false}) {
        NotedEngineWait wait;
        const Script engine(wait.engineThatIsWaitedFor());
        const PrivateBus bus(activated ? engine.path() : QString());
        ProcessEngineLauncher launcher(bus.connection(), engine.path(), longLimit, &wait);
        launcher.ensureRunning();
        EXPECT_FALSE(wait.times.isEmpty());
        EXPECT_TRUE(std::is_sorted(wait.times.cbegin(), wait.times.cend()));
        EXPECT_EQ(wait.ends, 1);
        launcher.ensureRunning();
        EXPECT_EQ(wait.ends, 1) << "nothing is waited for";
    }
}

TEST(EngineLauncherTest, theWaitEndsWithAFailureToo)
{
    const PrivateBus bus;
    const Script program(staysAway);
    NotedEngineWait wait;
    ProcessEngineLauncher launcher(bus.connection(), program.path(), 50, &wait);
    EXPECT_TRUE(raisedFailure([&] { launcher.ensureRunning(); }));
    EXPECT_FALSE(wait.times.isEmpty());
    EXPECT_EQ(wait.ends, 1);
}

TEST(EngineLauncherTest, engineThatIsUpIsNotStartedAgain)
{
    const PrivateBus bus;
    QDBusConnection connection = bus.connection();
    ASSERT_TRUE(connection.registerService(QLatin1String(Bus::serviceName)));
    EXPECT_FALSE(failureOfStart(connection, nowhere(), longLimit));
}

TEST(EngineLauncherTest, programIsStartedInASessionOfItsOwnWithItsErrorsInAFile)
{
    const PrivateBus bus;
    const auto failure =
        failureOfStart(bus.connection(), QStringLiteral(NORVANE_FAKE_ENGINE), longLimit);
    ASSERT_FALSE(failure) << qPrintable(failure->shown());
    EXPECT_TRUE(engineIsOnBus(bus.connection()));
    const QString log = logText();
    EXPECT_TRUE(log.startsWith(u"arguments 0\nfolder /\nsession ")) << qPrintable(log);
    EXPECT_FALSE(log.endsWith(u"session %1\n"_s.arg(::getsid(0)))) << qPrintable(log);
    const auto rights = QFileInfo(logFolder()).permissions();
    EXPECT_FALSE(rights & (QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                           QFile::ReadOther | QFile::WriteOther | QFile::ExeOther));
    EXPECT_FALSE(failureOfStart(bus.connection(), nowhere(), longLimit));
}

TEST(EngineLauncherTest, installedEngineIsStartedByTheBus)
{
    const PrivateBus bus(QStringLiteral(NORVANE_FAKE_ENGINE));
    const auto failure = failureOfStart(bus.connection(), nowhere(), longLimit);
    ASSERT_FALSE(failure) << qPrintable(failure->shown());
    EXPECT_TRUE(engineIsOnBus(bus.connection()));
}

TEST(EngineLauncherTest, failureOfTheBusToStartTheEngineIsToldInItsWords)
{
    const PrivateBus bus(u"/nonexistent/TovekSMService"_s);
    // The program at hand isn't tried: what is installed decides.
    const auto failure =
        failureOfStart(bus.connection(), QStringLiteral(NORVANE_FAKE_ENGINE), longLimit);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->number(), 429);
    EXPECT_TRUE(failure->description().contains(u"com.tovek.SMService"))
        << qPrintable(failure->description());
    EXPECT_FALSE(engineIsOnBus(bus.connection()));
}

} // namespace

} // namespace norvane
