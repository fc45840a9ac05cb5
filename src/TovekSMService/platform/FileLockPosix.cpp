#include "TovekSMService/platform/FileLock.h"

#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace norvane {

Result<std::unique_ptr<FileLock>, PlatformFailure> FileLock::open(const QString &file)
{
    const QByteArray name = QFile::encodeName(file);
    int handle = ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    // On a disk that can't be written, a file that is there can be locked all the same.
    if (handle < 0)
        handle = ::open(name.constData(), O_RDONLY | O_CLOEXEC);
    if (handle < 0)
        return failed(PlatformFailure::ofErrno(errno));
    return std::unique_ptr<FileLock>(new FileLock(handle));
}

FileLock::~FileLock()
{
    ::close(m_handle);
}

bool FileLock::tryLock()
{
    return ::flock(m_handle, LOCK_EX | LOCK_NB) == 0;
}

} // namespace norvane
