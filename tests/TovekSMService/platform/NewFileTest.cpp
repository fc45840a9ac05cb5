#include "TovekSMService/platform/NewFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

TEST(NewFile, isEmptyAndForItsOwnerAlone)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"new"_s);
    ASSERT_TRUE(NewFile::make(file).has_value());
    struct stat info = {};
    ASSERT_EQ(::stat(QFile::encodeName(file).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600u);
    EXPECT_EQ(info.st_size, 0);
    EXPECT_TRUE(NewFile::flushFile(file).has_value());
}

TEST(NewFile, takesNothingsPlaceAndTellsWhy)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"new"_s);
    ASSERT_TRUE(NewFile::make(file).has_value());
    const auto again = NewFile::make(file);
    ASSERT_FALSE(again.has_value());
    EXPECT_EQ(again.error().text, u"File exists"_s);

    const QString link = folder.filePath(u"link"_s);
    ASSERT_TRUE(QFile::link(folder.filePath(u"nowhere"_s), link));
    EXPECT_FALSE(NewFile::make(link).has_value());
    EXPECT_FALSE(QFile::exists(folder.filePath(u"nowhere"_s)));
}

TEST(NewFile, whatIsNotThereCannotBeMadeInOrFlushed)
{
    const auto made = NewFile::make(u"/no/such/folder/x"_s);
    ASSERT_FALSE(made.has_value());
    EXPECT_EQ(made.error().kind, PlatformFailure::Kind::Gone);
    const auto flushed = NewFile::flushFile(u"/no/such/folder/x"_s);
    ASSERT_FALSE(flushed.has_value());
    EXPECT_EQ(flushed.error().kind, PlatformFailure::Kind::Gone);
    EXPECT_EQ(flushed.error().text, u"No such file or directory"_s);
}

} // namespace

} // namespace norvane
