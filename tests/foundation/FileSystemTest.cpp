#include "foundation/FileSystem.h"

#include "common/NumberedFailure.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>

#include <sys/stat.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class FailingFiles : public PlatformFiles
{
public:
    explicit FailingFiles(int error) : m_error(error) {}
    Kind kind(const QString &) const override { return Kind::None; }
    int read(const QString &, qint64, QByteArray &) override { return m_error; }
    int replace(const QString &, const QByteArray &) override { return m_error; }
    int makeFolder(const QString &, Access) override { return m_error; }

private:
    int m_error;
};

qint32 numberOf(const std::function<void()> &action)
{
    try {
        action();
    } catch (const NumberedFailure &failure) {
        return failure.number();
    }
    return 0;
}

class FileSystemTest : public testing::Test
{
protected:
    QString makeFile(const QString &name)
    {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return file.fileName();
    }

    QTemporaryDir m_folder;
    FileSystem m_fileSystem;
};

TEST_F(FileSystemTest, pathIsBuiltWithOneSeparator)
{
    EXPECT_EQ(m_fileSystem.BuildPath(u"/a"_s, u"b"_s), u"/a/b"_s);
    EXPECT_EQ(m_fileSystem.BuildPath(u"/a/"_s, u"b"_s), u"/a/b"_s);
    EXPECT_EQ(m_fileSystem.BuildPath(u"/a"_s, u"/b"_s), u"/a/b"_s);
    EXPECT_EQ(m_fileSystem.BuildPath(u"/a/"_s, u"/b"_s), u"/a/b"_s);
    EXPECT_EQ(m_fileSystem.BuildPath(u"/"_s, u"b"_s), u"/b"_s);
    EXPECT_EQ(m_fileSystem.BuildPath(u""_s, u"b"_s), u"b"_s);
    EXPECT_EQ(m_fileSystem.BuildPath(u"/a"_s, u""_s), u"/a"_s);
}

TEST_F(FileSystemTest, filesAndFoldersAreToldApart)
{
    const QString file = makeFile(u"file"_s);
    EXPECT_TRUE(m_fileSystem.FileExists(file));
    EXPECT_FALSE(m_fileSystem.FolderExists(file));
    EXPECT_TRUE(m_fileSystem.FolderExists(m_folder.path()));
    EXPECT_TRUE(m_fileSystem.FolderExists(m_folder.path() + u'/'));
    EXPECT_FALSE(m_fileSystem.FileExists(m_folder.path()));
    EXPECT_FALSE(m_fileSystem.FileExists(m_folder.filePath(u"none"_s)));
    EXPECT_FALSE(m_fileSystem.FolderExists(m_folder.filePath(u"none"_s)));
    EXPECT_FALSE(m_fileSystem.FileExists(QString()));
    EXPECT_FALSE(m_fileSystem.FolderExists(QString()));
}

TEST_F(FileSystemTest, aLinkIsWhatItLeadsTo)
{
    const QString file = makeFile(u"file"_s);
    const auto linkTo = [&](const QString &target, const QString &name) {
        EXPECT_TRUE(QFile::link(target, m_folder.filePath(name)));
        return m_folder.filePath(name);
    };
    EXPECT_TRUE(m_fileSystem.FileExists(linkTo(file, u"to file"_s)));
    const QString toFolder = linkTo(m_folder.path(), u"to folder"_s);
    EXPECT_TRUE(m_fileSystem.FolderExists(toFolder));
    EXPECT_FALSE(m_fileSystem.FileExists(toFolder));
    const QString toNothing = linkTo(m_folder.filePath(u"none"_s), u"to nothing"_s);
    EXPECT_FALSE(m_fileSystem.FileExists(toNothing));
    EXPECT_FALSE(m_fileSystem.FolderExists(toNothing));
    EXPECT_FALSE(m_fileSystem.FileExists(u"/dev/null"_s));
}

TEST_F(FileSystemTest, whatTheToolkitHasInItselfIsNeitherFileNorFolder)
{
    const QDir resources(u":/qt-project.org"_s);
    ASSERT_TRUE(resources.exists());
    EXPECT_FALSE(m_fileSystem.FolderExists(resources.path()));
    EXPECT_FALSE(m_fileSystem.FolderExists(u":/"_s));
    QDirIterator files(resources.path(), QDir::Files, QDirIterator::Subdirectories);
    ASSERT_TRUE(files.hasNext());
    EXPECT_FALSE(m_fileSystem.FileExists(files.next()));
}

TEST_F(FileSystemTest, thereAreNoDrives)
{
    EXPECT_EQ(m_fileSystem.GetDriveName(u"/opt/x"_s), QString());
    EXPECT_EQ(m_fileSystem.GetDriveName(u"C:\\x"_s), QString());
}

TEST_F(FileSystemTest, folderIsMadeWithAndWithoutSeparatorAtItsEnd)
{
    m_fileSystem.CreateFolder(m_folder.filePath(u"a"_s));
    m_fileSystem.CreateFolder(m_folder.filePath(u"ñ b/"_s));
    EXPECT_TRUE(QDir(m_folder.filePath(u"a"_s)).exists());
    EXPECT_TRUE(QDir(m_folder.filePath(u"ñ b"_s)).exists());
}

TEST_F(FileSystemTest, folderThatCannotBeMadeIsANumberedFailure)
{
    const QString file = makeFile(u"file"_s);
    const QList<std::pair<QString, qint32>> cases{
        {m_folder.path(), 58},
        {file, 58},
        {m_folder.filePath(u"none/below"_s), 76},
        {file + u"/below"_s, 76},
        {QString(), 5},
        {m_folder.filePath(u"a"_s) + QChar(QChar::Null), 52},
        {m_folder.filePath(QString(300, u'x')), 76},
    };
    for (const auto &[path, number] : cases)
        EXPECT_EQ(numberOf([&] { m_fileSystem.CreateFolder(path); }), number) << path.toStdString();
}

TEST_F(FileSystemTest, platformErrorDecidesTheNumber)
{
    for (const auto &[error, number] :
         QList<std::pair<int, qint32>>{{EACCES, 70}, {ENOSPC, 61}, {EROFS, 70}, {EIO, 57}}) {
        FailingFiles files(error);
        FileSystem fileSystem(files);
        EXPECT_EQ(numberOf([&] { fileSystem.CreateFolder(u"/x"_s); }), number) << error;
    }
}

TEST_F(FileSystemTest, wholeFileIsReplacedThroughALinkAndKeepsItsMode)
{
    const QString file = makeFile(u"file"_s);
    ASSERT_EQ(::chmod(QFile::encodeName(file).constData(), 0640), 0);
    const QString link = m_folder.filePath(u"link"_s);
    ASSERT_TRUE(QFile::link(file, link));

    EXPECT_EQ(platformFiles().replace(link, "new"), 0);
    QByteArray bytes;
    EXPECT_EQ(platformFiles().read(file, 3, bytes), 0);
    EXPECT_EQ(bytes, "new");
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    struct stat status = {};
    ASSERT_EQ(::stat(QFile::encodeName(file).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST_F(FileSystemTest, failedReplacementLeavesNothingBehind)
{
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(u"taken"_s));
    EXPECT_EQ(platformFiles().replace(m_folder.filePath(u"taken"_s), "new"), EISDIR);
    EXPECT_EQ(platformFiles().replace(m_folder.filePath(u"none/x"_s), "new"), ENOENT);
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{u"taken"_s});
}

TEST_F(FileSystemTest, readingTakesRegularFilesUpToTheLimitOnly)
{
    const QString path = m_folder.filePath(u"four"_s);
    ASSERT_EQ(platformFiles().replace(path, "four"), 0);
    QByteArray bytes;
    EXPECT_EQ(platformFiles().read(path, 4, bytes), 0);
    EXPECT_EQ(platformFiles().read(path, 3, bytes), EFBIG);
    EXPECT_EQ(platformFiles().read(m_folder.path(), 4, bytes), EISDIR);
    EXPECT_EQ(platformFiles().read(u"/dev/null"_s, 4, bytes), EINVAL);
    EXPECT_EQ(platformFiles().read(QString(), 4, bytes), ENOENT);
}

} // namespace

} // namespace norvane
