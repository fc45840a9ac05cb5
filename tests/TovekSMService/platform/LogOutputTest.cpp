#include "TovekSMService/platform/LogOutput.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <csignal>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maxSize = 100;

/// A handle as a program gets it from the one that starts it.
class Handle
{
public:
    explicit Handle(const QString &file)
        : m_handle(::open(QFile::encodeName(file).constData(),
                          O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, S_IRUSR | S_IWUSR))
    {}
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    ~Handle() { ::close(m_handle); }
    int number() const { return m_handle; }

private:
    int m_handle;
};

/// A limit of this process while it is in scope.
class Limit
{
public:
    Limit(__rlimit_resource_t resource, rlim_t value)
        : m_resource(resource), m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(::getrlimit(resource, &m_before), 0);
        const rlimit lower{value, m_before.rlim_max};
        EXPECT_EQ(::setrlimit(resource, &lower), 0);
    }
    Limit(const Limit &) = delete;
    Limit &operator=(const Limit &) = delete;
    ~Limit()
    {
        ::setrlimit(m_resource, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    __rlimit_resource_t m_resource;
    void (*m_handler)(int);
    rlimit m_before{};
};

class LogFile : public testing::Test
{
protected:
    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    std::string log() const { return contentOf(m_file).toStdString(); }
    std::string older() const { return contentOf(m_older).toStdString(); }
    /// A line of so many bytes, its end included.
    static QByteArray line(char letter, int size = 40)
    {
        return QByteArray(size - 1, letter) + '\n';
    }
    static std::string text(const QByteArray &bytes) { return bytes.toStdString(); }

    QTemporaryDir m_folder;
    const QString m_file = m_folder.filePath(u"engine.log"_s);
    const QString m_older = m_file + u".1"_s;
    const Handle m_handle{m_file};
    LogOutput m_output{m_handle.number(), m_file, maxSize};
};

TEST_F(LogFile, isSetAsideByTheLineThatWouldMakeItTooLarge)
{
    m_output.write(line('a'));
    m_output.write(line('b'));
    EXPECT_EQ(log(), text(line('a') + line('b')));
    EXPECT_FALSE(QFile::exists(m_older));
    m_output.write(line('c'));
    EXPECT_EQ(log(), text(line('c')));
    EXPECT_EQ(older(), text(line('a') + line('b')));
    for (const char letter : {'d', 'e', 'f'})
        m_output.write(line(letter));
    EXPECT_EQ(log(), text(line('e') + line('f')));
    EXPECT_EQ(older(), text(line('c') + line('d')));
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::Files).size(), 2) << "one older file";
}

TEST_F(LogFile, neverGrowsBeyondItsSize)
{
    for (int size = 1; size < 100; ++size) {
        m_output.write(line('x', size));
        ASSERT_LE(QFileInfo(m_file).size(), maxSize) << size;
        ASSERT_LE(QFileInfo(m_older).size(), maxSize) << size;
    }
}

TEST_F(LogFile, thatIsTooLargeAlreadyIsSetAsideByTheFirstLine)
{
    ASSERT_TRUE(QFile::resize(m_file, 10 * maxSize));
    m_output.write(line('a'));
    EXPECT_EQ(log(), text(line('a')));
    EXPECT_EQ(QFileInfo(m_older).size(), 10 * maxSize);
}

TEST_F(LogFile, isForItsOwnerAlone)
{
    const mode_t mask = ::umask(0);
    for (int i = 0; i < 3; ++i)
        m_output.write(line('a'));
    ::umask(mask);
    constexpr auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                            QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    EXPECT_FALSE(QFileInfo(m_file).permissions() & others);
    EXPECT_FALSE(QFileInfo(m_older).permissions() & others);
}

TEST_F(LogFile, ofTwoProcessesIsSetAsideOnce)
{
    const Handle otherHandle(m_file);
    LogOutput other(otherHandle.number(), m_file, maxSize);
    m_output.write(line('a'));
    other.write(line('b'));
    m_output.write(line('c'));
    EXPECT_EQ(older(), text(line('a') + line('b')));
    other.write(line('d'));
    EXPECT_EQ(log(), text(line('c') + line('d'))) << "the other process follows";
    EXPECT_EQ(older(), text(line('a') + line('b')));
    other.write(line('e'));
    m_output.write(line('f'));
    EXPECT_EQ(log(), text(line('e') + line('f')));
    EXPECT_EQ(older(), text(line('c') + line('d')));
}

TEST_F(LogFile, losesNoLineBetweenProcessesThatWriteAtTheSameTime)
{
    constexpr int lines = 400;
    constexpr qint64 size = 20'000; // all lines need two files, and no third
    const auto writeAll = [&](char letter) {
        const Handle handle(m_file);
        LogOutput output(handle.number(), m_file, size);
        for (int i = 0; i < lines; ++i)
            output.write(line(letter));
    };
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        writeAll('b');
        ::_exit(0);
    }
    writeAll('a');
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    const QByteArray all = contentOf(m_older) + contentOf(m_file);
    EXPECT_EQ(all.count(line('a')), lines);
    EXPECT_EQ(all.count(line('b')), lines);
    EXPECT_EQ(all.size(), 2 * lines * 40);
}

TEST_F(LogFile, isLeftToTheProcessThatIsSettingItAside)
{
    m_output.write(line('a'));
    m_output.write(line('b'));
    const Handle other(m_file);
    ASSERT_EQ(::flock(other.number(), LOCK_EX | LOCK_NB), 0);
    m_output.write(line('c'));
    EXPECT_EQ(log(), text(line('a') + line('b') + line('c')));
    EXPECT_FALSE(QFile::exists(m_older));
    ASSERT_EQ(::flock(other.number(), LOCK_UN), 0);
    m_output.write(line('d'));
    EXPECT_EQ(log(), text(line('d')));
    EXPECT_EQ(older(), text(line('a') + line('b') + line('c')));
}

TEST_F(LogFile, isBegunAnewWhereSomebodyHasDeletedIt)
{
    m_output.write(line('a'));
    ASSERT_TRUE(QFile::remove(m_file));
    m_output.write(line('b'));
    EXPECT_EQ(log(), text(line('b')));
}

TEST_F(LogFile, goesOnWhenTheDiskHasRoomAgain)
{
    {
        const Limit full(RLIMIT_FSIZE, 50);
        m_output.write(line('a'));
        m_output.write(line('b')); // ten bytes of it get to the disk
        m_output.write(line('c'));
    }
    m_output.write(line('d'));
    EXPECT_EQ(log(), text(line('a') + QByteArray(10, 'b') + '\n' + line('d')));
}

TEST_F(LogFile, isEmptiedWhereItCannotBeSetAside)
{
    ASSERT_TRUE(QDir().mkpath(m_older + u"/in the way"_s));
    for (const char letter : {'a', 'b', 'c'})
        m_output.write(line(letter));
    EXPECT_EQ(log(), text(line('c')));
}

TEST_F(LogFile, isEmptiedWhereNoNewOneCanBeMade)
{
    {
        m_output.write(line('a'));
        m_output.write(line('b'));
        const Limit noHandle(RLIMIT_NOFILE, 0);
        m_output.write(line('c'));
    }
    EXPECT_EQ(log(), text(line('c')));
    m_output.write(line('d'));
    m_output.write(line('e'));
    EXPECT_EQ(log(), text(line('e')));
    EXPECT_EQ(older(), text(line('c') + line('d')));
}

TEST_F(LogFile, ofAnotherNameIsNotTouched)
{
    const QString otherFile = m_folder.filePath(u"my.log"_s);
    const Handle handle(otherFile);
    LogOutput output(handle.number(), m_file, maxSize);
    for (int i = 0; i < 5; ++i)
        output.write(line('a'));
    EXPECT_EQ(QFileInfo(otherFile).size(), 200);
    EXPECT_EQ(log(), std::string());
    EXPECT_FALSE(QFile::exists(otherFile + u".1"_s));
}

TEST_F(LogFile, whatIsNoFileIsJustWrittenTo)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    LogOutput output(ends[1], m_file, maxSize);
    for (int i = 0; i < 5; ++i)
        output.write(line('a'));
    ::close(ends[1]);
    QFile reader;
    ASSERT_TRUE(reader.open(ends[0], QIODevice::ReadOnly, QFile::AutoCloseHandle));
    EXPECT_EQ(reader.readAll().size(), 200);
    EXPECT_EQ(log(), std::string());
}

} // namespace

} // namespace norvane
