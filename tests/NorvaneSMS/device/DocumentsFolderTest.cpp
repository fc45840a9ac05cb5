#include "NorvaneSMS/device/DocumentsFolder.h"

#include "common/FailureNumbers.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A system whose folders a test sets.
class Folders : public Platform
{
public:
    QString programFolder() const override { return u"/program"_s; }
    std::optional<VersionRecord> versionRecord() const override { return std::nullopt; }
    QString localeItem(qint32) const override { return {}; }
    QString nation() const override { return {}; }
    QString programFilesFolder() const override { return {}; }
    QString commonAppDataFolder() const override { return {}; }
    QString documentsFolder() const override
    {
        if (isFailing)
            throw NumberedFailure(51, u"documentsFolder"_s, QString());
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
    const QString expected = home.filePath(u"Norvane"_s);
    EXPECT_EQ(get(), expected);
    EXPECT_TRUE(QDir(expected).exists());
    EXPECT_EQ(get(), expected) << "one that is there is taken";
}

TEST_F(DocumentsFolderTest, theAnswerIsCutAtItsFirstNul)
{
    folders.documents = home.path() + QChar(u'\0') + u"rest"_s;
    EXPECT_EQ(get(), home.filePath(u"Norvane"_s));
}

TEST_F(DocumentsFolderTest, withoutDocumentsItIsTheProgramsFolder)
{
    for (const QString &blank : {QString(), u"   "_s, QString(QChar(u'\0')) + u"/x"_s}) {
        folders.documents = blank;
        EXPECT_EQ(get(), u"/program"_s);
    }
}

TEST_F(DocumentsFolderTest, anyFailureOnTheWayGivesTheProgramsFolder)
{
    folders.documents = home.filePath(u"missing"_s); // nothing can be made below it
    EXPECT_EQ(get(), u"/program"_s);

    folders.documents = home.path();
    QFile inTheWay(home.filePath(u"Norvane"_s));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    EXPECT_EQ(get(), u"/program"_s);

    folders.isFailing = true;
    EXPECT_EQ(get(), u"/program"_s);
}

} // namespace

} // namespace norvane
