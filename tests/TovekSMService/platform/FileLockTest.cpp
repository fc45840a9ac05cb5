#include "TovekSMService/platform/FileLock.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

TEST(FileLock, isHeldByOneUntilThatEnds)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"lock"_s);
    auto first = FileLock::open(file);
    const auto second = FileLock::open(file);
    ASSERT_TRUE(first && second);
    EXPECT_TRUE((*first)->tryLock());
    EXPECT_FALSE((*second)->tryLock());
    first->reset();
    EXPECT_TRUE((*second)->tryLock());
    EXPECT_TRUE(QFile::exists(file));
}

TEST(FileLock, withoutAFolderThereIsNone)
{
    const auto lock = FileLock::open(u"/no/such/folder/lock"_s);
    ASSERT_FALSE(lock.has_value());
    EXPECT_EQ(lock.error().kind, PlatformFailure::Kind::Gone);
}

} // namespace

} // namespace norvane
