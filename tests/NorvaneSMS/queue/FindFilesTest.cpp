#include "NorvaneSMS/queue/FindFiles.h"

#include "common/NumberedFailure.h"
#include "support/RecordingMessageBoxes.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <new>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Folders that stand on no disk.
class MadeUpListing : public FolderListing
{
public:
    QList<Entry> entries(const QString &folderPath) const override
    {
        return folders.value(folderPath);
    }

    std::optional<EntryKind> kind(const QString &path) const override
    {
        if (path == failing)
            throw std::bad_alloc();
        if (raised)
            throw *raised;
        if (unreadable.contains(path))
            return std::nullopt;
        return kinds.value(path, EntryKind::File);
    }

    void addFolder(const QString &parent, const QString &name)
    {
        folders[parent].append({name, 0});
        kinds.insert(parent + name, EntryKind::Folder);
    }

    QHash<QString, QList<Entry>> folders;
    QHash<QString, EntryKind> kinds;
    QStringList unreadable;
    QString failing;                       ///< memory runs out when its kind is asked
    std::optional<NumberedFailure> raised; ///< when any kind is asked
};

struct Outcome
{
    qint16 fileCount = 0;
    qint16 folderCount = 0;
    FileSearchResult result;
    qint64 sum = 0;
};

Outcome search(QString folder, const QString &pattern, Descent descent = Descent::StayInFolder,
               const FolderListing &listing = folderListing())
{
    Outcome outcome;
    outcome.sum = FindFiles(folder, pattern, outcome.fileCount, outcome.folderCount, outcome.result,
                            descent, listing);
    return outcome;
}

class FindFilesTest : public testing::Test
{
protected:
    void makeFile(const QString &name, const QByteArray &bytes = {})
    {
        QFile file(m_folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    QStringList found(const QString &pattern, Descent descent = Descent::StayInFolder)
    {
        QStringList files = search(m_folder.path(), pattern, descent).result.Files;
        const QString start = m_folder.path() + u'/';
        for (QString &file : files) {
            EXPECT_TRUE(file.startsWith(start)) << file.toStdString();
            file = file.sliced(start.size());
        }
        files.sort();
        return files;
    }

    QTemporaryDir m_folder;
    RecordingMessageBoxes m_boxes;
};

TEST_F(FindFilesTest, emptyFolderGivesNothing)
{
    const Outcome outcome = search(m_folder.path(), u"sms.*"_s);
    EXPECT_EQ(outcome.fileCount, 0);
    EXPECT_EQ(outcome.result.Count, 0);
    EXPECT_TRUE(outcome.result.Files.isEmpty());
    EXPECT_EQ(outcome.sum, 0);
}

TEST_F(FindFilesTest, filesThatMatchAreCountedAndStored)
{
    makeFile(u"sms.0"_s, "12345");
    makeFile(u"sms.1"_s, "123");
    makeFile(u"other.0"_s, "1");
    const Outcome outcome = search(m_folder.path(), u"sms.*"_s);
    EXPECT_EQ(outcome.fileCount, 2);
    EXPECT_EQ(outcome.folderCount, 0);
    EXPECT_EQ(outcome.result.Count, 2);
    EXPECT_EQ(outcome.result.Files.size(), 2);
    EXPECT_EQ(outcome.sum, 8);
    EXPECT_EQ(found(u"sms.*"_s), (QStringList{u"sms.0"_s, u"sms.1"_s}));
}

TEST_F(FindFilesTest, separatorIsAddedToTheCallersPathOnce)
{
    makeFile(u"sms.0"_s);
    for (const QString &end : {u""_s, u"/"_s}) {
        QString folder = m_folder.path() + end;
        qint16 files = 0;
        qint16 folders = 0;
        FileSearchResult result;
        FindFiles(folder, u"sms.*"_s, files, folders, result, Descent::StayInFolder);
        EXPECT_EQ(folder, m_folder.path() + u'/');
        EXPECT_EQ(result.Files, QStringList{m_folder.path() + u"/sms.0"_s});
    }
}

TEST_F(FindFilesTest, folderThatMatchesIsNotListed)
{
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(u"sms.1"_s));
    makeFile(u"sms.0"_s);
    EXPECT_EQ(found(u"sms.*"_s), QStringList{u"sms.0"_s});
}

TEST_F(FindFilesTest, onlyRegularFilesAreListed)
{
    makeFile(u"sms.0"_s);
    ASSERT_TRUE(QFile::link(m_folder.filePath(u"sms.0"_s), m_folder.filePath(u"sms.1"_s)));
    ASSERT_EQ(::mkfifo(QFile::encodeName(m_folder.filePath(u"sms.2"_s)).constData(), 0600), 0);
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(m_folder.filePath(u"sms.3"_s));
    ASSERT_LT(static_cast<std::size_t>(path.size()), sizeof address.sun_path);
    std::copy(path.begin(), path.end(), address.sun_path);
    ASSERT_EQ(::bind(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    ::close(descriptor);

    EXPECT_EQ(found(u"sms.*"_s), QStringList{u"sms.0"_s});
    EXPECT_EQ(found(u"sms.*"_s, Descent::IntoSubfolders), QStringList{u"sms.0"_s});
    EXPECT_TRUE(search(u"/dev"_s, u"null"_s).result.Files.isEmpty());
}

TEST_F(FindFilesTest, caseDoesNotCount)
{
    makeFile(u"SMS.7"_s);
    makeFile(u"Sms.8"_s);
    EXPECT_EQ(found(u"sms.*"_s), (QStringList{u"SMS.7"_s, u"Sms.8"_s}));
}

TEST_F(FindFilesTest, nameThatIsNoTextIsPassedOver)
{
    makeFile(u"sms.ñ"_s);
    const QByteArray path = QFile::encodeName(m_folder.path()) + "/sms.\xF1";
    const int descriptor = ::creat(path.constData(), 0600);
    ASSERT_GE(descriptor, 0);
    ::close(descriptor);
    EXPECT_EQ(found(u"sms.*"_s), QStringList{u"sms.ñ"_s});
    EXPECT_EQ(folderListing().entries(m_folder.path()).size(), 1);
    EXPECT_EQ(::unlink(path.constData()), 0);
}

TEST_F(FindFilesTest, nameThatEndsInABlankIsPassedOver)
{
    makeFile(u"sms.1"_s);
    makeFile(u"sms.1 "_s);
    makeFile(u"sms.2 "_s);
    EXPECT_EQ(found(u"sms.*"_s), QStringList{u"sms.1"_s});
}

TEST_F(FindFilesTest, folderThatCannotBeListedAddsNothing)
{
    const Outcome outcome = search(m_folder.filePath(u"none"_s), u"*"_s, Descent::IntoSubfolders);
    EXPECT_EQ(outcome.result.Count, 0);
    EXPECT_EQ(outcome.sum, 0);
    EXPECT_TRUE(m_boxes.shown.isEmpty());
}

TEST_F(FindFilesTest, subfoldersAreSearchedOnlyOnDescent)
{
    ASSERT_TRUE(QDir(m_folder.path()).mkpath(u"a/b"_s));
    makeFile(u"sms.0"_s, "1");
    makeFile(u"a/sms.1"_s, "22");
    makeFile(u"a/b/sms.2"_s, "333");
    EXPECT_EQ(found(u"sms.*"_s), QStringList{u"sms.0"_s});
    EXPECT_EQ(found(u"sms.*"_s, Descent::IntoSubfolders),
              (QStringList{u"a/b/sms.2"_s, u"a/sms.1"_s, u"sms.0"_s}));

    const Outcome outcome = search(m_folder.path(), u"sms.*"_s, Descent::IntoSubfolders);
    EXPECT_EQ(outcome.folderCount, 2);
    EXPECT_EQ(outcome.fileCount, 3);
    EXPECT_EQ(outcome.sum, 6);
    EXPECT_EQ(search(m_folder.path(), u"sms.*"_s).folderCount, 0);
}

TEST_F(FindFilesTest, ownFilesComeBeforeThoseOfSubfolders)
{
    MadeUpListing listing;
    listing.addFolder(u"/q/"_s, u"b"_s);
    listing.addFolder(u"/q/"_s, u"a"_s);
    listing.folders[u"/q/"_s].append({u"z"_s, 0});
    listing.folders[u"/q/"_s].append({u"y"_s, 0});
    listing.folders[u"/q/a/"_s].append({u"1"_s, 0});
    listing.folders[u"/q/b/"_s].append({u"2"_s, 0});
    EXPECT_EQ(search(u"/q"_s, u"*"_s, Descent::IntoSubfolders, listing).result.Files,
              (QStringList{u"/q/z"_s, u"/q/y"_s, u"/q/b/2"_s, u"/q/a/1"_s}));
}

TEST_F(FindFilesTest, linkToAFolderIsNotFollowed)
{
    makeFile(u"sms.0"_s);
    ASSERT_TRUE(QFile::link(m_folder.path(), m_folder.filePath(u"loop"_s)));
    const Outcome outcome = search(m_folder.path(), u"sms.*"_s, Descent::IntoSubfolders);
    EXPECT_EQ(outcome.fileCount, 1);
    EXPECT_EQ(outcome.folderCount, 0);
}

TEST_F(FindFilesTest, entryWhoseKindCannotBeReadCountsAsAFolder)
{
    MadeUpListing listing;
    listing.folders[u"/q/"_s] = {{u"sms.0"_s, 1}, {u"sms.1"_s, 2}};
    listing.unreadable = {u"/q/sms.0"_s};
    Outcome outcome = search(u"/q"_s, u"sms.*"_s, Descent::StayInFolder, listing);
    EXPECT_EQ(outcome.result.Files, QStringList{u"/q/sms.1"_s});
    EXPECT_EQ(outcome.folderCount, 0);
    EXPECT_EQ(outcome.sum, 2);

    outcome = search(u"/q"_s, u"sms.*"_s, Descent::IntoSubfolders, listing);
    EXPECT_EQ(outcome.result.Files, QStringList{u"/q/sms.1"_s});
    EXPECT_EQ(outcome.folderCount, 1);
}

TEST_F(FindFilesTest, namesAreCutAtNulAndTrimmed)
{
    MadeUpListing listing;
    listing.folders[u"/q/"_s] = {{u" sms.0"_s + QChar(QChar::Null) + u"rest"_s, 0},
                                 {u"  "_s, 0},
                                 {u". "_s, 0},
                                 {u".."_s, 0},
                                 {u"."_s, 0}};
    listing.kinds = {{u"/q/"_s, EntryKind::Folder},
                     {u"/q/."_s, EntryKind::Folder},
                     {u"/q/.."_s, EntryKind::Folder}};
    const Outcome outcome = search(u"/q"_s, u"*"_s, Descent::IntoSubfolders, listing);
    EXPECT_EQ(outcome.result.Files, QStringList{u"/q/sms.0"_s});
    EXPECT_EQ(outcome.folderCount, 0);
}

TEST_F(FindFilesTest, sumTakesTheLowHalfAsSignedAndSubtractsTheHighHalf)
{
    const QList<std::pair<quint64, qint64>> sizes{
        {0x7FFF'FFFF, 0x7FFF'FFFF}, {0x8000'0000, -0x8000'0000LL},
        {0xFFFF'FFFF, -1},          {0x1'0000'0000, -1},
        {0x3'0000'0005, 2},
    };
    for (const auto &[size, sum] : sizes) {
        MadeUpListing listing;
        listing.folders[u"/q/"_s] = {{u"a"_s, size}};
        EXPECT_EQ(search(u"/q"_s, u"*"_s, Descent::StayInFolder, listing).sum, sum) << size;
    }
}

TEST_F(FindFilesTest, memoryThatRunsOutEndsTheFolderWithABoxAndWhatWasFoundStays)
{
    MadeUpListing listing;
    for (int i = 0; i < 4; ++i)
        listing.folders[u"/q/"_s].append({u"sms."_s + QString::number(i), 10});
    listing.failing = u"/q/sms.2"_s;
    const Outcome outcome = search(u"/q"_s, u"sms.*"_s, Descent::StayInFolder, listing);
    ASSERT_EQ(m_boxes.shown.size(), 1);
    EXPECT_EQ(m_boxes.shown.first(),
              (RecordingMessageBoxes::Shown{u" 7 - Out of memory"_s, MessageBoxes::Icon::Critical,
                                            MessageBoxes::Buttons::Ok, u"Error"_s}));
    EXPECT_EQ(outcome.result.Files, (QStringList{u"/q/sms.0"_s, u"/q/sms.1"_s}));
    EXPECT_EQ(outcome.result.Count, 2);
    EXPECT_EQ(outcome.sum, 20);
}

TEST_F(FindFilesTest, boxHasABlankWhereTheNumberHasNoSign)
{
    const QList<std::pair<qint32, QString>> cases{
        {-1, u"-1 - odd"_s}, {0, u" 0 - odd"_s}, {76, u" 76 - odd"_s}};
    for (const auto &[number, text] : cases) {
        MadeUpListing listing;
        listing.folders[u"/q/"_s] = {{u"sms.0"_s, 1}};
        listing.raised = NumberedFailure(number, QString(), u"odd"_s);
        search(u"/q"_s, u"sms.*"_s, Descent::StayInFolder, listing);
        ASSERT_FALSE(m_boxes.shown.isEmpty());
        EXPECT_EQ(m_boxes.shown.last().text, text);
    }
}

void addFiles(MadeUpListing &listing, const QString &folder, int count)
{
    for (int i = 0; i < count; ++i)
        listing.folders[folder].append({u"sms."_s + QString::number(i), 1});
}

TEST_F(FindFilesTest, counterHoldsThirtyTwoThousandSevenHundredAndSixtySevenFiles)
{
    MadeUpListing listing;
    addFiles(listing, u"/q/"_s, 32767);
    const Outcome outcome = search(u"/q"_s, u"sms.*"_s, Descent::StayInFolder, listing);
    EXPECT_EQ(outcome.fileCount, 32767);
    EXPECT_EQ(outcome.result.Count, 32767);
    EXPECT_EQ(outcome.sum, 32767);
    EXPECT_TRUE(m_boxes.shown.isEmpty());
}

TEST_F(FindFilesTest, oneFileMoreOverflowsIntoTheErrorBox)
{
    MadeUpListing listing;
    addFiles(listing, u"/q/"_s, 32770);
    const Outcome outcome = search(u"/q"_s, u"sms.*"_s, Descent::StayInFolder, listing);
    ASSERT_EQ(m_boxes.shown.size(), 1);
    EXPECT_EQ(m_boxes.shown.at(0).text, u" 6 - Overflow"_s);
    EXPECT_EQ(m_boxes.shown.at(0).title, u"Error"_s);
    EXPECT_EQ(m_boxes.shown.at(0).icon, MessageBoxes::Icon::Critical);
    EXPECT_EQ(m_boxes.shown.at(0).buttons, MessageBoxes::Buttons::Ok);
    EXPECT_EQ(outcome.fileCount, 32767);
    EXPECT_EQ(outcome.result.Count, 32767);
    EXPECT_EQ(outcome.result.Files.size(), 32767);
    EXPECT_EQ(outcome.result.Files.last(), u"/q/sms.32766"_s);
}

TEST_F(FindFilesTest, overflowEndsOnlyTheFolderItHappensIn)
{
    MadeUpListing listing;
    listing.addFolder(u"/q/"_s, u"a"_s);
    listing.addFolder(u"/q/"_s, u"b"_s);
    addFiles(listing, u"/q/a/"_s, 32768);
    addFiles(listing, u"/q/b/"_s, 1);
    const Outcome outcome = search(u"/q"_s, u"sms.*"_s, Descent::IntoSubfolders, listing);
    EXPECT_EQ(m_boxes.shown.size(), 2);
    EXPECT_EQ(outcome.result.Count, 32767);
}

TEST_F(FindFilesTest, folderCounterOverflowsToo)
{
    MadeUpListing listing;
    for (int i = 0; i < 32768; ++i)
        listing.addFolder(u"/q/"_s, QString::number(i));
    listing.folders[u"/q/"_s].append({u"sms.0"_s, 1});
    const Outcome outcome = search(u"/q"_s, u"sms.*"_s, Descent::IntoSubfolders, listing);
    ASSERT_EQ(m_boxes.shown.size(), 1);
    EXPECT_EQ(m_boxes.shown.at(0).text, u" 6 - Overflow"_s);
    EXPECT_EQ(outcome.folderCount, 32767);
    EXPECT_EQ(outcome.result.Count, 0);
}

TEST(PatternTest, starAndQuestionMarkStandForOtherCharacters)
{
    struct Case
    {
        QStringView name;
        QStringView pattern;
        bool matches;
    };
    const QList<Case> cases{
        {u"sms.0", u"sms.*", true},
        {u"sms.", u"sms.*", true},
        {u"sms", u"sms.*", false},
        {u"xsms.0", u"sms.*", false},
        {u"SMS.ABC", u"sms.*", true},
        {u"sms.0.bak", u"sms.*", true},
        {u"smsX0", u"sms.*", false},
        {u"abc", u"a?c", true},
        {u"ac", u"a?c", false},
        {u"abbc", u"a?c", false},
        {u"", u"*", true},
        {u"", u"", true},
        {u"a", u"", false},
        {u"", u"?", false},
        {u"abcabd", u"*ab?", true},
        {u"abcabd", u"*abc", false},
        {u"abc", u"ab*bc", false},
        {u"a[b]", u"a[b]", true},
        {u"ab", u"a[b]", false},
        {u"ÑANDÚ", u"ñandú", true},
        {u"a.b", u"**b", true},
        {u"a*b", u"a*b", true},
        {u"aXYb", u"a*Y*b", true},
        {u"sms.1", u"SMS.?", true},
        {u"ſms.1", u"sms.*", false},
        {u"smſ.1", u"SMS.*", false},
        {u"ΣΑΣ", u"σας", false}, // its last letter has a small form of its own
    };
    for (const Case &c : cases)
        EXPECT_EQ(matchesPattern(c.name, c.pattern), c.matches)
            << c.name.toString().toStdString() << " " << c.pattern.toString().toStdString();
}

TEST(PatternTest, manyStarsTakeNoUndueTime)
{
    const QString name(255, u'a');
    EXPECT_FALSE(matchesPattern(name, QString(u"*a"_s).repeated(60) + u'b'));
}

} // namespace

} // namespace norvane
