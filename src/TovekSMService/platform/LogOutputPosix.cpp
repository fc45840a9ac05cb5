#include "TovekSMService/platform/LogOutput.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace norvane {

namespace {

ssize_t writeOnce(int handle, const QByteArray &bytes)
{
    ssize_t written = -1;
    do
        written = ::write(handle, bytes.constData(), static_cast<std::size_t>(bytes.size()));
    while (written < 0 && errno == EINTR);
    return written;
}

qint64 sizeOf(int handle)
{
    struct stat info = {};
    return ::fstat(handle, &info) == 0 ? qint64{info.st_size} : 0;
}

} // namespace

LogOutput::LogOutput(int handle, QString file, qint64 maxSize)
    : m_handle(handle), m_file(QFile::encodeName(file)), m_olderFile(m_file + ".1"),
      m_maxSize(maxSize), m_isBounded(isLogFile())
{}

void LogOutput::write(const QByteArray &line)
{
    if (m_isBounded)
        makeRoomFor(line.size());
    const QByteArray bytes = m_lineIsCut ? '\n' + line : line;
    const ssize_t written = writeOnce(m_handle, bytes);
    // There is nobody to tell of a failure.
    if (written > 0)
        m_lineIsCut = bytes.at(written - 1) != '\n';
}

/// Whether the handle is for the file that bears the name now.
bool LogOutput::isLogFile() const
{
    struct stat open = {};
    struct stat named = {};
    return ::fstat(m_handle, &open) == 0 && S_ISREG(open.st_mode) &&
           ::stat(m_file.constData(), &named) == 0 && open.st_dev == named.st_dev &&
           open.st_ino == named.st_ino;
}

void LogOutput::makeRoomFor(qint64 size)
{
    // Another process has set the file aside, or somebody has deleted it.
    if (!isLogFile())
        reopen();
    // The line feed is that of a line that was cut.
    if (sizeOf(m_handle) + size + 1 <= m_maxSize)
        return;
    // The lock is the file's: it ends when the handle is for another one. Who doesn't get it leaves
    // the file to the process that has it.
    if (::flock(m_handle, LOCK_EX | LOCK_NB) != 0)
        return;
    setAside();
    ::flock(m_handle, LOCK_UN);
}

void LogOutput::setAside()
{
    // Another process may have done it between the look and the lock.
    const bool renamed = isLogFile() && ::rename(m_file.constData(), m_olderFile.constData()) == 0;
    if (reopen())
        return;
    if (renamed)
        ::rename(m_olderFile.constData(), m_file.constData());
    if (::ftruncate(m_handle, 0) == 0)
        m_lineIsCut = false;
}

/// Leads the handle to the file that bears the name, which is made if need be.
/// @return whether it leads to another file now
bool LogOutput::reopen()
{
    const int opened =
        ::open(m_file.constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (opened < 0)
        return false;
    struct stat before = {};
    struct stat now = {};
    const bool isOther = ::fstat(m_handle, &before) == 0 && ::fstat(opened, &now) == 0 &&
                         (before.st_dev != now.st_dev || before.st_ino != now.st_ino);
    const bool done = isOther && ::dup2(opened, m_handle) >= 0;
    if (done) {
        ::fchmod(m_handle, S_IRUSR | S_IWUSR);
        m_lineIsCut = false;
    }
    ::close(opened);
    return done;
}

} // namespace norvane
