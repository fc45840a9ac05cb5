#include "foundation/PlatformHelpers.h"

#include "common/NumberedFailure.h"
#include "foundation/platform/LinuxPlatform.h"
#include "support/RecordingMessageBoxes.h"

#include <QCoreApplication>
#include <QHash>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class MadeUpPlatform : public Platform
{
public:
    QString programFolder() const override { return u"/own"_s; }
    std::optional<VersionRecord> versionRecord() const override
    {
        ++queries;
        return version;
    }
    QString localeItem(qint32 item) const override { return items.value(item); }
    QString nation() const override { return nationText; }
    QString programFilesFolder() const override { return shellFolder(); }
    QString commonAppDataFolder() const override { return shellFolder(); }
    QString documentsFolder() const override { return shellFolder(); }

    std::optional<VersionRecord> version;
    mutable int queries = 0;
    QHash<qint32, QString> items;
    QString nationText;
    QString folder;
    bool folderFails = false;

private:
    QString shellFolder() const
    {
        if (folderFails)
            throw NumberedFailure(76, u"shell"_s, u"Path not found"_s);
        return folder;
    }
};

const QString Nul(QChar(QChar::Null));

TEST(StripNullsTest, textIsCutInPlaceAndTheResultTrimmed)
{
    QString text = u"  a b "_s + Nul + u"rest"_s + Nul;
    EXPECT_EQ(StripNulls(text), u"a b"_s);
    EXPECT_EQ(text, u"  a b "_s);
    text = u" plain "_s;
    EXPECT_EQ(StripNulls(text), u"plain"_s);
    EXPECT_EQ(text, u" plain "_s);
    text = Nul;
    EXPECT_EQ(StripNulls(text), QString());
    EXPECT_EQ(text, QString());
    text = u"   "_s;
    EXPECT_EQ(StripNulls(text), QString());
    text = u"\tx\t"_s; // only blanks are trimmed
    EXPECT_EQ(StripNulls(text), u"\tx\t"_s);
}

VersionRecord version(quint32 platformId, quint32 major, quint32 minor)
{
    VersionRecord record;
    record.platformId = platformId;
    record.major = major;
    record.minor = minor;
    return record;
}

TEST(OsIdentifierTest, tableOfSystems)
{
    EXPECT_EQ(osIdentifier(version(0, 3, 1)), 32);
    EXPECT_EQ(osIdentifier(version(1, 4, 0)), 95);
    EXPECT_EQ(osIdentifier(version(1, 4, 10)), 98);
    EXPECT_EQ(osIdentifier(version(1, 4, 90)), 99);
    EXPECT_EQ(osIdentifier(version(2, 3, 51)), 351);
    EXPECT_EQ(osIdentifier(version(2, 4, 0)), 40);
    EXPECT_EQ(osIdentifier(version(2, 5, 0)), 2000);
    EXPECT_EQ(osIdentifier(version(2, 5, 1)), 2002);
    EXPECT_EQ(osIdentifier(version(2, 5, 2)), 2003);
    EXPECT_EQ(osIdentifier(version(2, 6, 0)), 2007);
    EXPECT_EQ(osIdentifier(version(2, 6, 1)), 2007);
    EXPECT_EQ(osIdentifier(version(3, 5, 0)), 0);
    EXPECT_EQ(osIdentifier(version(1, 4, 11)), 0);
    EXPECT_EQ(osIdentifier(version(2, 5, 3)), 0);
    EXPECT_EQ(osIdentifier(version(2, 10, 0)), 0);
}

TEST(OsIdentifierTest, knownSystemIsAskedOnce)
{
    MadeUpPlatform platform;
    platform.version = version(2, 5, 1);
    PlatformHelpers helpers(platform);
    EXPECT_EQ(helpers.GetOSIdentifier(false), 2002);
    platform.version = version(2, 5, 2);
    EXPECT_EQ(helpers.GetOSIdentifier(false), 2002);
    EXPECT_EQ(platform.queries, 1);
}

TEST(OsIdentifierTest, unknownSystemIsAskedAgain)
{
    MadeUpPlatform platform;
    platform.version = version(9, 5, 1);
    PlatformHelpers helpers(platform);
    EXPECT_EQ(helpers.GetOSIdentifier(false), 0);
    platform.version = version(2, 5, 2);
    EXPECT_EQ(helpers.GetOSIdentifier(false), 2003);
    EXPECT_EQ(platform.queries, 2);
}

TEST(OsIdentifierTest, failedQueryIsRemembered)
{
    RecordingMessageBoxes boxes;
    MadeUpPlatform platform;
    PlatformHelpers helpers(platform);
    EXPECT_EQ(helpers.GetOSIdentifier(true), 0);
    platform.version = version(2, 5, 2);
    EXPECT_EQ(helpers.GetOSIdentifier(true), 0);
    EXPECT_EQ(platform.queries, 1);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST(OsIdentifierTest, debugModeShowsTheVersionRecord)
{
    RecordingMessageBoxes boxes;
    MadeUpPlatform platform;
    platform.version = version(2, 5, 1);
    platform.version->build = 2600;
    platform.version->servicePack = u"Service Pack %1"_s;
    PlatformHelpers helpers(platform);
    helpers.GetOSIdentifier(false);
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(helpers.GetOSIdentifier(true), 2002);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.at(0).icon, MessageBoxes::Icon::None);
    EXPECT_EQ(boxes.shown.at(0).buttons, MessageBoxes::Buttons::Ok);
    EXPECT_EQ(boxes.shown.at(0).text, u"RUNNING IN DEBUG MODE !! OS INFO ID:\r\n"
                                      u".dwMajorVersion = 5\r\n"
                                      u".dwMinorVersion = 1\r\n"
                                      u".dwOSVersionInfoSize = 148\r\n"
                                      u".dwBuildNumber = 2600\r\n"
                                      u".szCSDVersion = Service Pack %1"_s);
}

TEST(LocaleTextTest, itemIsGivenAndAnUnknownOneIsEmpty)
{
    MadeUpPlatform platform;
    platform.items = {{14, u","_s}, {2, QString(255, u'x')}, {3, QString(256, u'x')}};
    const PlatformHelpers helpers(platform);
    EXPECT_EQ(helpers.GetLocaleText(14), u","_s);
    EXPECT_EQ(helpers.GetLocaleText(9999), QString());
    EXPECT_EQ(helpers.GetLocaleText(2), QString(255, u'x'));
    EXPECT_EQ(helpers.GetLocaleText(3), QString());
}

TEST(NationTest, answerIsCutAtItsFirstNul)
{
    MadeUpPlatform platform;
    const PlatformHelpers helpers(platform);
    EXPECT_EQ(helpers.GetNationISO3(), QString());
    platform.nationText = u"ESP"_s + Nul + u"x"_s;
    EXPECT_EQ(helpers.GetNationISO3(), u"ESP"_s);
}

TEST(KnownFolderTest, emptyAnswerOrFailureGivesTheProgramsOwnFolder)
{
    MadeUpPlatform platform;
    const PlatformHelpers helpers(platform);
    const QList<std::pair<QString, QString>> answers{{u"/data"_s, u"/data"_s},
                                                     {u"/data"_s + Nul + u"x"_s, u"/data"_s},
                                                     {QString(), u"/own"_s},
                                                     {u"   "_s, u"/own"_s},
                                                     {Nul + u"x"_s, u"/own"_s}};
    for (const auto &[answer, folder] : answers) {
        platform.folder = answer;
        EXPECT_EQ(helpers.GetProgramFilesFolder(), folder);
        EXPECT_EQ(helpers.GetCommonAppDataFolder(), folder);
    }
    platform.folder = u"/data"_s;
    platform.folderFails = true;
    EXPECT_EQ(helpers.GetProgramFilesFolder(), u"/own"_s);
    EXPECT_EQ(helpers.GetCommonAppDataFolder(), u"/own"_s);
}

TEST(LinuxPlatformTest, systemIsNoneOfTheTable)
{
    const LinuxPlatform platform;
    const auto record = platform.versionRecord();
    ASSERT_TRUE(record);
    EXPECT_GT(record->major, 0U);
    EXPECT_EQ(record->recordSize, 148U);
    EXPECT_EQ(osIdentifier(*record), 0);
}

TEST(LinuxPlatformTest, localeItemsOfPortugal)
{
    const LinuxPlatform platform(QLocale(u"pt_PT"_s));
    EXPECT_EQ(platform.localeItem(2), u"Portuguese"_s);
    EXPECT_EQ(platform.localeItem(3), u"POR"_s);
    EXPECT_EQ(platform.localeItem(7), u"PRT"_s);
    EXPECT_EQ(platform.localeItem(8), u"Portugal"_s);
    EXPECT_EQ(platform.localeItem(14), u","_s);
    EXPECT_EQ(platform.localeItem(31), u"dd/MM/yy"_s);
    EXPECT_TRUE(platform.localeItem(32).contains(u"MMMM"));
    EXPECT_EQ(platform.nation(), u"PRT"_s);
    EXPECT_EQ(platform.localeItem(9999), QString());
}

TEST(LinuxPlatformTest, localeItemsOfSpainInSpanishAndCatalan)
{
    const LinuxPlatform spanish(QLocale(u"es_ES"_s));
    EXPECT_EQ(spanish.localeItem(3), u"SPA"_s);
    EXPECT_EQ(spanish.localeItem(7), u"ESP"_s);
    EXPECT_EQ(spanish.localeItem(8), u"España"_s);
    EXPECT_EQ(spanish.localeItem(15), u"."_s);
    const LinuxPlatform catalan(QLocale(u"ca_ES"_s));
    EXPECT_EQ(catalan.localeItem(3), u"CAT"_s);
    EXPECT_EQ(catalan.nation(), u"ESP"_s);
}

TEST(LinuxPlatformTest, localeWithoutACountryHasNoNation)
{
    EXPECT_EQ(LinuxPlatform(QLocale::c()).nation(), QString());
}

TEST(LinuxPlatformTest, foldersAreThoseOfTheEnvironment)
{
    const LinuxPlatform platform;
    EXPECT_EQ(platform.programFolder(), QCoreApplication::applicationDirPath());
    EXPECT_EQ(platform.commonAppDataFolder(), qEnvironmentVariable("XDG_DATA_HOME"));
    EXPECT_EQ(platform.programFilesFolder(), u"/opt"_s);
    EXPECT_FALSE(platform.documentsFolder().isEmpty());
}

} // namespace

} // namespace norvane
