#include "NorvaneSMS/app/AppFixture.h"
#include "NorvaneSMS/app/modSMSClient.h"
#include "NorvaneSMS/console/frmSMSClient.h"
#include "common/FailureNumbers.h"
#include "foundation/Globals.h"
#include "support/RaisedFailure.h"
#include "support/RecordingEngine.h"

#include <QFileInfo>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A store in memory that notes into `log` what it is asked.
class NotingSettings : public StoredSettings
{
public:
    explicit NotingSettings(QStringList &log) : m_log(log) {}

    QString get(const QString &, const QString &, const QString &key,
                const QString &defaultValue) const override
    {
        m_log.append(u"read "_s + key);
        if (fails)
            Failure::raise(Failure::PathFileAccess, u"settings"_s);
        return values.value(key, defaultValue);
    }
    void save(const QString &, const QString &, const QString &key, const QString &value) override
    {
        m_log.append(u"write "_s + key + u'=' + value);
        values.insert(key, value);
    }

    QHash<QString, QString> values;
    bool fails = false;

private:
    QStringList &m_log;
};

class MainTest : public AppFixture
{
protected:
    MainTest()
    {
        platform.onLocaleItem = [this](qint32) { note(u"locale"_s); };
        platform.onCommonAppDataFolder = [this] {
            languageWasLoadedFirst = goLocalize != nullptr;
            note(u"data folder"_s);
        };
    }

    std::unique_ptr<frmSMSClient> runMain()
    {
        return modSMSClient::Main(
            helpers, {[this]() -> std::unique_ptr<SMSManager> {
                          note(u"engine"_s);
                          if (engineFails)
                              Failure::raise(Failure::CannotCreateObject, u"SMSManager"_s);
                          return std::make_unique<RecordingEngine>(script);
                      },
                      modSMSClient::ReleaseGlobals,
                      [] { return QDateTime(QDate(2024, 5, 6), QTime(10, 0), Qt::UTC); },
                      ModeSettings(settings, platform.ownFolder), QLocale::c()});
    }

    QString tree() const { return platform.commonData + u"/KELD"_s; }

    void expectNothingStarted()
    {
        EXPECT_EQ(boxes.shown.size(), 1);
        EXPECT_EQ(log, (QStringList{u"locale"_s}));
        EXPECT_TRUE(script.calls.isEmpty());
        EXPECT_FALSE(QFileInfo::exists(tree()));
        EXPECT_EQ(DataFolder, QString());
    }

    /// Notes `what` unless it was noted just before.
    void note(const QString &what)
    {
        if (log.isEmpty() || log.last() != what)
            log.append(what);
    }

    QStringList log;
    NotingSettings settings{log};
    RecordingEngine::Script script;
    bool engineFails = false;
    bool languageWasLoadedFirst = false;
};

TEST_F(MainTest, missingLanguageFileEndsTheProgramBeforeAnythingIsStarted)
{
    settings.values[u"ServerMode"_s] = u"perhaps"_s;
    EXPECT_FALSE(runMain());
    expectNothingStarted();
    EXPECT_EQ(settings.values.value(u"ServerMode"_s), u"perhaps"_s);
}

TEST_F(MainTest, badLanguageFileEndsTheProgramBeforeAnythingIsStarted)
{
    writeLanguageFile(u"ESN"_s, "<xml>");
    EXPECT_FALSE(runMain());
    expectNothingStarted();
}

TEST_F(MainTest, emptyLanguageFileEndsTheProgramBeforeAnythingIsStarted)
{
    writeLanguageFile(u"ESN"_s, fileWithoutRows());
    EXPECT_FALSE(runMain());
    expectNothingStarted();
}

TEST_F(MainTest, entryGoesFromTheEnvironmentOverTheDataFolderAndTheRepairToTheConsole)
{
    installLanguage(u"ESN"_s);
    const auto console = runMain();
    ASSERT_TRUE(console);
    EXPECT_EQ(
        log, (QStringList{u"locale"_s, u"data folder"_s, u"read ServerMode"_s, u"read ServerMode"_s,
                          u"read QueueFolder"_s, u"read ServerMode"_s, u"engine"_s}));
    EXPECT_TRUE(languageWasLoadedFirst);
    EXPECT_EQ(script.calls,
              (QStringList{u"new 1"_s, u"GetQueueSize"_s, u"GetQueue"_s, u"GetEngineStatus"_s}));
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(console->isVisible());
    EXPECT_FALSE(console->isModal());
    EXPECT_EQ(console->windowTitle(), u"Norvane SMS - Centro de mensajes"_s);
}

TEST_F(MainTest, snapshotIsThereFirstOfAll)
{
    installLanguage(u"ESN"_s);
    bool wasThere = true;
    platform.onLocaleItem = [&](qint32) { wasThere = wasThere && goStartUpData; };
    ASSERT_FALSE(goStartUpData);
    const auto console = runMain();
    EXPECT_TRUE(wasThere);
    EXPECT_EQ(goStartUpData->Language, u"ESN"_s);
}

TEST_F(MainTest, dataFolderIsResolvedAndItsMissingFileIgnored)
{
    installLanguage(u"ESN"_s);
    const auto console = runMain();
    ASSERT_TRUE(console);
    EXPECT_TRUE(QFileInfo(tree() + u"/Norvane"_s).isDir());
    EXPECT_EQ(DataFolder, QString());
}

TEST_F(MainTest, dataFolderOfTheConfigurationIsKept)
{
    installLanguage(u"ESN"_s);
    QFile file(platform.ownFolder + u"/Norvane.ini"_s);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[General]\nDataFolder=/srv/norvane\n");
    file.close();
    const auto console = runMain();
    EXPECT_EQ(DataFolder, u"/srv/norvane"_s);
    console->close();
    EXPECT_EQ(DataFolder, u"/srv/norvane"_s);
}

TEST_F(MainTest, unreadableModeIsRepairedBeforeTheConsoleReadsIt)
{
    installLanguage(u"ESN"_s);
    settings.values[u"ServerMode"_s] = u"perhaps"_s;
    const auto console = runMain();
    ASSERT_TRUE(console);
    EXPECT_EQ(log.filter(u"write"_s), (QStringList{u"write ServerMode=True"_s}));
    EXPECT_LT(log.indexOf(u"write ServerMode=True"_s), log.indexOf(u"read QueueFolder"_s));
    EXPECT_EQ(script.objectsMade, 1);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(MainTest, unconfiguredConsoleWritesNoSettings)
{
    installLanguage(u"ESN"_s);
    const auto console = runMain();
    EXPECT_TRUE(log.filter(u"write"_s).isEmpty());
}

TEST_F(MainTest, clientComesUpWithoutAnEngine)
{
    installLanguage(u"ESN"_s);
    settings.values[u"ServerMode"_s] = u"False"_s;
    const auto console = runMain();
    ASSERT_TRUE(console);
    EXPECT_TRUE(console->isVisible());
    EXPECT_FALSE(log.contains(u"engine"_s));
    EXPECT_TRUE(script.calls.isEmpty());
    console->close();
    EXPECT_TRUE(script.calls.isEmpty());
    EXPECT_FALSE(goLocalize);
}

TEST_F(MainTest, closingTheConsoleReleasesTheEngineWithoutAStopAndThenTheGlobals)
{
    installLanguage(u"ESN"_s);
    script.status = 1;
    const auto console = runMain();
    script.calls.clear();
    console->close();
    EXPECT_EQ(script.calls, (QStringList{u"release 1"_s}));
    EXPECT_FALSE(goStartUpData);
    EXPECT_FALSE(goLocalize);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(MainTest, failureOfTheDataFolderLeavesNoConsole)
{
    installLanguage(u"ESN"_s);
    QFile inTheWay(tree());
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    EXPECT_NE(raisedNumber([this] { runMain(); }), 0);
    EXPECT_EQ(log, (QStringList{u"locale"_s, u"data folder"_s}));
}

TEST_F(MainTest, failureOfTheSettingsLeavesNoConsole)
{
    installLanguage(u"ESN"_s);
    settings.fails = true;
    EXPECT_EQ(raisedNumber([this] { runMain(); }), 75);
    EXPECT_EQ(script.objectsMade, 0);
}

TEST_F(MainTest, failureOfTheEnginesCreationIsNotCaught)
{
    installLanguage(u"ESN"_s);
    engineFails = true;
    EXPECT_EQ(raisedNumber([this] { runMain(); }), 429);
    EXPECT_TRUE(boxes.shown.isEmpty()); // the box is the affair of whoever called
}

TEST_F(MainTest, failureWhileStateIsPulledIsNotCaught)
{
    installLanguage(u"ESN"_s);
    script.failingCalls.enqueue(1);
    EXPECT_EQ(raisedNumber([this] { runMain(); }), 462);
    EXPECT_EQ(script.calls.last(), u"release 1"_s);
}

} // namespace

} // namespace norvane
