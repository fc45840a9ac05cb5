#include "NorvaneSMS/platform/FileStreams.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <iterator>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// From here on every attempt of this process to take a file away fails.
bool refuseRemovals(unsigned error)
{
    const unsigned refused = SECCOMP_RET_ERRNO | error;
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
#ifdef SYS_unlink
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_unlink, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, refused),
#endif
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_unlinkat, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, refused),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{static_cast<unsigned short>(std::size(program)), program};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

/// The error of removeForced() on a file system that refuses with `error`.
int removalRefusedWith(int error, const QString &path)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(refuseRemovals(static_cast<unsigned>(error)) ? fileStreams().removeForced(path)
                                                             : 255);
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << status;
    return WEXITSTATUS(status);
}

class FileStreamsTest : public ::testing::Test
{
protected:
    QString makeReadOnly(const QString &name) const
    {
        const QString path = folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(::chmod(QFile::encodeName(path).constData(), 0400), 0);
        return path;
    }
    static mode_t modeOf(const QString &path)
    {
        struct stat status = {};
        EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
        return status.st_mode & 0777;
    }

    const QTemporaryDir folder;
};

} // namespace

TEST_F(FileStreamsTest, readOnlyFileThatIsRefusedIsMadeWritableForASecondAttempt)
{
    for (const int error : {EACCES, EPERM}) {
        const QString path = makeReadOnly(QString::number(error));
        EXPECT_EQ(removalRefusedWith(error, path), error);
        EXPECT_EQ(modeOf(path), 0600U);
    }
}

TEST_F(FileStreamsTest, whatALinkLeadsToKeepsItsRightsWhenTheLinkCantBeTakenAway)
{
    const QString path = makeReadOnly(u"other"_s);
    const QString link = folder.filePath(u"sms.0"_s);
    ASSERT_TRUE(QFile::link(path, link));
    EXPECT_EQ(removalRefusedWith(EACCES, link), EACCES);
    EXPECT_EQ(modeOf(path), 0400U);
    EXPECT_EQ(fileStreams().removeForced(link), 0);
    EXPECT_EQ(modeOf(path), 0400U);
}

TEST_F(FileStreamsTest, anyOtherRefusalLeavesTheRightsAsTheyAre)
{
    const QString path = makeReadOnly(u"busy"_s);
    EXPECT_EQ(removalRefusedWith(EBUSY, path), EBUSY);
    EXPECT_EQ(modeOf(path), 0400U);
}

TEST_F(FileStreamsTest, whatIsNoFileIsNotOpened)
{
    const QString pipe = folder.filePath(u"pipe"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString &path : {pipe, u"/dev/null"_s, folder.path()}) {
        std::unique_ptr<ByteStream> stream;
        EXPECT_NE(fileStreams().openToRead(path, stream), 0) << path.toStdString();
        EXPECT_FALSE(stream) << path.toStdString();
    }
}

} // namespace norvane
