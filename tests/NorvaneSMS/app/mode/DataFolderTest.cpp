#include "NorvaneSMS/app/mode/DataFolder.h"

#include "NorvaneSMS/app/mode/MadeUpPlatform.h"
#include "foundation/FailureTexts.h"
#include "support/RaisedFailure.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Files that fail to make folders, and where told do so because someone else was first.
class FailingFiles : public PlatformFiles
{
public:
    explicit FailingFiles(int error) : m_error(error) {}

    Kind kind(const QString &path) const override { return platformFiles().kind(path); }
    int read(const QString &path, qint64 limit, QByteArray &bytes) override
    {
        return platformFiles().read(path, limit, bytes);
    }
    int replace(const QString &path, const QByteArray &bytes) override
    {
        return platformFiles().replace(path, bytes);
    }
    int makeFolder(const QString &path, Access access) override
    {
        asked.append(path);
        if (someoneElseIsFirst)
            platformFiles().makeFolder(path, access);
        return m_error;
    }

    QStringList asked;
    bool someoneElseIsFirst = false;

private:
    int m_error;
};

class DataFolderTest : public ::testing::Test
{
protected:
    DataFolderTest()
    {
        platform.ownFolder = m_folder.filePath(u"own"_s);
        platform.commonData = m_folder.filePath(u"data"_s);
        platform.programFiles = u"/opt"_s;
        QDir().mkpath(platform.ownFolder);
        QDir().mkpath(platform.commonData);
    }

    QString tree() const { return platform.commonData + u"/KELD/Norvane"_s; }

    void writeConfiguration(const QByteArray &text) const
    {
        QFile file(platform.ownFolder + u"/Norvane.ini"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    bool resolve() { return ResolveDataFolder(PlatformHelpers(platform), dataFolder); }

    MadeUpPlatform platform;
    QString dataFolder;

private:
    QTemporaryDir m_folder;
};

TEST_F(DataFolderTest, treeIsMadeWithoutAConfigurationFileAndTheFolderStaysEmpty)
{
    EXPECT_FALSE(resolve());
    EXPECT_EQ(dataFolder, QString());
    EXPECT_TRUE(QFileInfo(tree()).isDir());
}

TEST_F(DataFolderTest, treeIsMadeOverAgainWithoutComplaint)
{
    EXPECT_FALSE(resolve());
    EXPECT_FALSE(resolve());
    QDir().rmdir(tree());
    EXPECT_FALSE(resolve());
    EXPECT_TRUE(QFileInfo(tree()).isDir());
}

TEST_F(DataFolderTest, valueOfTheFileIsTakenAndTheTreeMadeAllTheSame)
{
    writeConfiguration("[General]\r\nDataFolder=/srv/norvane\r\n");
    EXPECT_TRUE(resolve());
    EXPECT_EQ(dataFolder, u"/srv/norvane"_s);
    EXPECT_TRUE(QFileInfo(tree()).isDir());
}

TEST_F(DataFolderTest, emptyOrMissingValueGivesTheTree)
{
    for (const char *text : {"[General]\nDataFolder=\n", "[General]\nDataFolder=   \n",
                             "[General]\nOther=1\n", "[Other]\nDataFolder=/x\n", ""}) {
        writeConfiguration(text);
        dataFolder.clear();
        EXPECT_TRUE(resolve()) << text;
        EXPECT_EQ(dataFolder, tree()) << text;
    }
}

TEST_F(DataFolderTest, valueIsTakenAsItStandsAndItsFolderNotMade)
{
    const QString wanted = platform.commonData + u"/wanted"_s;
    writeConfiguration("[General]\nDataFolder=" + wanted.toUtf8() + "\n");
    EXPECT_TRUE(resolve());
    EXPECT_EQ(dataFolder, wanted);
    EXPECT_FALSE(QFileInfo::exists(wanted));

    writeConfiguration("[General]\nDataFolder=%CommonAppDataFolder%/a/%PrimaryVolumePath%\n");
    EXPECT_TRUE(resolve());
    EXPECT_EQ(dataFolder, u"%CommonAppDataFolder%/a/%PrimaryVolumePath%"_s);
}

TEST_F(DataFolderTest, valueEndsAfterFiveHundredAndTwelveCharacters)
{
    writeConfiguration("[General]\nDataFolder=/" + QByteArray(511, 'a') + "\n");
    EXPECT_TRUE(resolve());
    EXPECT_EQ(dataFolder, u'/' + QString(511, u'a'));
    writeConfiguration("[General]\nDataFolder=/" + QByteArray(511, 'a') + "b\n");
    EXPECT_TRUE(resolve());
    EXPECT_EQ(dataFolder, u'/' + QString(511, u'a'));
}

TEST_F(DataFolderTest, folderOfTheConfigurationsNameIsNoConfiguration)
{
    QDir().mkpath(platform.ownFolder + u"/Norvane.ini"_s);
    EXPECT_FALSE(resolve());
    EXPECT_EQ(dataFolder, QString());
}

TEST_F(DataFolderTest, withoutACommonDataFolderTheTreeLiesInTheProgramsOwn)
{
    platform.commonData.clear();
    writeConfiguration("");
    EXPECT_TRUE(resolve());
    EXPECT_EQ(dataFolder, platform.ownFolder + u"/KELD/Norvane"_s);
    EXPECT_TRUE(QFileInfo(dataFolder).isDir());
}

TEST_F(DataFolderTest, folderThatIsNotThereYetIsMadeFromTheTop)
{
    platform.commonData += u"/not/yet"_s;
    EXPECT_FALSE(resolve());
    EXPECT_TRUE(QFileInfo(tree()).isDir());
}

TEST_F(DataFolderTest, tokenInTheNameOfAFolderIsNotExpandedAgain)
{
    platform.commonData += u"/%PrimaryVolumePath%"_s;
    writeConfiguration("");
    EXPECT_TRUE(resolve());
    EXPECT_EQ(dataFolder, platform.commonData + u"/KELD/Norvane"_s);
}

TEST_F(DataFolderTest, folderThatCannotBeMadeFails)
{
    QFile inTheWay(platform.commonData + u"/KELD"_s);
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    writeConfiguration("[General]\nDataFolder=/srv/norvane\n");
    const auto failure = raisedFailure([&] { resolve(); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->description(), FailureText::dataFolderNotMade(inTheWay.fileName()));
    EXPECT_EQ(dataFolder, QString());
}

TEST_F(DataFolderTest, failureOfThePlatformKeepsItsNumber)
{
    const std::pair<int, qint32> rows[] = {
        {EACCES, 70}, {EROFS, 70}, {ENOSPC, 61}, {ENOENT, 76}, {EEXIST, 58}};
    for (const auto &[error, number] : rows) {
        FailingFiles files(error);
        EXPECT_EQ(
            raisedNumber([&] { ResolveDataFolder(PlatformHelpers(platform), dataFolder, files); }),
            number)
            << error;
        // The first failure ends it.
        EXPECT_EQ(files.asked, (QStringList{platform.commonData + u"/KELD/"_s}));
    }
}

TEST_F(DataFolderTest, folderThatAnotherConsoleMakesAtTheSameMomentIsWelcome)
{
    FailingFiles files(EEXIST);
    files.someoneElseIsFirst = true;
    EXPECT_FALSE(ResolveDataFolder(PlatformHelpers(platform), dataFolder, files));
    EXPECT_EQ(files.asked.size(), 2);
    EXPECT_TRUE(QFileInfo(tree()).isDir());
}

} // namespace

} // namespace norvane
