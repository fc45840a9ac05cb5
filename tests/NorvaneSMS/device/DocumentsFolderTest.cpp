#include "NorvaneSMS/device/DocumentsFolder.h"

#include "common/FailureNumbers.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

namespace {

/// A system whose folders a test sets.
class Folders : public Platform
{
public:
    QString programFolder() const override { return QStringLiteral("/program"); }
    std::optional<VersionRecord> versionRecord() const override { return std::nullopt; }
    QString localeItem(qint32) const override { return {}; }
    QString nation() const override { return {}; }
    QString programFilesFolder() const override { return {}; }
    QString commonAppDataFolder() const override { return {}; }
    QString documentsFolder() const override
    {
        if (isFailing)
            throw NumberedFailure(51, QStringLiteral("documentsFolder"), QString());
        return documents;
    }

    QString documents;
    bool isFailing = false;
};

class DocumentsFolderTest : public ::testing::Test
{
protected:
    QString get() { return GetDocumentsFolder(folders, files); }

    QTemporaryDir home;
    Folders folders;
    FileSystem files;
};

TEST_F(DocumentsFolderTest, theSuitesFolderIsMadeBelowTheDocuments)
{
    folders.documents = home.path();
    const QString expected = home.filePath(QStringLiteral("Norvane"));
    EXPECT_EQ(get(), expected);
    EXPECT_TRUE(QDir(expected).exists());
    EXPECT_EQ(get(), expected) << "one that is there is taken";
}

TEST_F(DocumentsFolderTest, theAnswerIsCutAtItsFirstNul)
{
    folders.documents = home.path() + QChar(u'\0') + QStringLiteral("rest");
    EXPECT_EQ(get(), home.filePath(QStringLiteral("Norvane")));
}

TEST_F(DocumentsFolderTest, withoutDocumentsItIsTheProgramsFolder)
{
    for (const QString &blank :
         {QString(), QStringLiteral("   "), QString(QChar(u'\0')) + QStringLiteral("/x")}) {
        folders.documents = blank;
        EXPECT_EQ(get(), QStringLiteral("/program"));
    }
}

TEST_F(DocumentsFolderTest, anyFailureOnTheWayGivesTheProgramsFolder)
{
    folders.documents = home.filePath(QStringLiteral("missing")); // nothing can be made below it
    EXPECT_EQ(get(), QStringLiteral("/program"));

    folders.documents = home.path();
    QFile inTheWay(home.filePath(QStringLiteral("Norvane")));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    EXPECT_EQ(get(), QStringLiteral("/program"));

    folders.isFailing = true;
    EXPECT_EQ(get(), QStringLiteral("/program"));
}

} // namespace
