#include "NorvaneSMS/platform/FileStreams.h"
#include "common/platform/PlatformFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

#include <sys/syscall.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// What the system answers to this thread's calls, where that is not what it would answer by
/// itself.
struct Answers
{
    int interrupted = 0; ///< readings and writings that a signal interrupts
    std::size_t max = 0; ///< bytes that one writing takes; 0 for all of them
    int closeError = 0;  ///< the file is closed all the same
    int syncError = 0;
};

thread_local Answers *t_answers = nullptr;

bool isInterrupted()
{
    if (t_answers == nullptr || t_answers->interrupted == 0)
        return false;
    --t_answers->interrupted;
    errno = EINTR;
    return true;
}

int failed(int error)
{
    errno = error;
    return -1;
}

} // namespace

// In the place of the C library's own, for this program and all libraries of it.
extern "C" {
ssize_t read(int file, void *bytes, std::size_t count)
{
    return isInterrupted() ? -1 : ::syscall(SYS_read, file, bytes, count);
}
ssize_t write(int file, const void *bytes, std::size_t count)
{
    if (isInterrupted())
        return -1;
    const bool isPart = t_answers != nullptr && t_answers->max != 0;
    return ::syscall(SYS_write, file, bytes, isPart ? qMin(t_answers->max, count) : count);
}
int close(int file)
{
    const auto result = static_cast<int>(::syscall(SYS_close, file));
    const int error = t_answers != nullptr ? std::exchange(t_answers->closeError, 0) : 0;
    return error != 0 ? failed(error) : result;
}
int fsync(int file)
{
    const int error = t_answers != nullptr ? t_answers->syncError : 0;
    return error != 0 ? failed(error) : static_cast<int>(::syscall(SYS_fsync, file));
}
}

namespace {

class FileCallsTest : public ::testing::Test
{
protected:
    /// Does `work` while the system answers as told.
    template <typename Work>
    static int answering(Answers answers, Work &&work)
    {
        t_answers = &answers;
        const int error = work();
        t_answers = nullptr;
        return error;
    }
    static std::unique_ptr<ByteStream> opened(const QString &path)
    {
        std::unique_ptr<ByteStream> stream;
        EXPECT_EQ(fileStreams().openToRead(path, stream), 0);
        return stream;
    }
    static std::unique_ptr<ByteStream> created(const QString &path)
    {
        std::unique_ptr<ByteStream> stream;
        EXPECT_EQ(fileStreams().createNew(path, stream), 0);
        return stream;
    }
    static QByteArray bytesOf(const QString &path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
    QString fileOf(const QByteArray &bytes) const
    {
        QFile file(folder.filePath(u"file"_s));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        return file.fileName();
    }
    /// The error of a replacement that fails while the system answers as told. The file and its
    /// folder stay as they are.
    int failedReplacement(const Answers &answers) const
    {
        const QString file = fileOf("old");
        const int error =
            answering(answers, [&file] { return platformFiles().replace(file, "new"); });
        EXPECT_EQ(bytesOf(file), "old");
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden),
                  QStringList{u"file"_s});
        return error;
    }

    const QTemporaryDir folder;
    const QString path = folder.filePath(u"sms.0"_s);
};

TEST_F(FileCallsTest, aStreamReadsOnAfterASignal)
{
    const auto stream = opened(fileOf("text"));
    QByteArray bytes;
    EXPECT_EQ(answering({2, 0, 0, 0}, [&] { return stream->read(100, bytes); }), 0);
    EXPECT_EQ(bytes, "text");
}

TEST_F(FileCallsTest, aStreamWritesOnAfterASignal)
{
    const auto stream = created(path);
    EXPECT_EQ(answering({2, 0, 0, 0}, [&] { return stream->write("text"); }), 0);
    EXPECT_EQ(bytesOf(path), "text");
}

TEST_F(FileCallsTest, aStreamWritesTheRestOfWhatWasTakenInPart)
{
    const auto stream = created(path);
    EXPECT_EQ(answering({1, 3, 0, 0}, [&] { return stream->write("a longer text"); }), 0);
    EXPECT_EQ(bytesOf(path), "a longer text");
}

TEST_F(FileCallsTest, aStreamTellsThatClosingItFails)
{
    const auto stream = created(path);
    EXPECT_EQ(answering({0, 0, EDQUOT, 0}, [&] { return stream->close(); }), EDQUOT);
}

TEST_F(FileCallsTest, aFileIsReadOnAfterASignal)
{
    const QString file = fileOf("text");
    QByteArray bytes;
    EXPECT_EQ(answering({2, 0, 0, 0}, [&] { return platformFiles().read(file, 100, bytes); }), 0);
    EXPECT_EQ(bytes, "text");
}

TEST_F(FileCallsTest, aFileIsReplacedByTheWholeOfWhatIsTakenInParts)
{
    const QString file = fileOf("old");
    EXPECT_EQ(
        answering({2, 3, 0, 0}, [&file] { return platformFiles().replace(file, "a longer text"); }),
        0);
    EXPECT_EQ(bytesOf(file), "a longer text");
}

TEST_F(FileCallsTest, aFileIsReplacedOnceItsBytesAreOnTheDisk)
{
    EXPECT_EQ(failedReplacement({0, 0, 0, EIO}), EIO);
}

TEST_F(FileCallsTest, aFileIsNotReplacedByOneThatCannotBeClosed)
{
    EXPECT_EQ(failedReplacement({0, 0, EDQUOT, 0}), EDQUOT);
}

} // namespace

} // namespace norvane
