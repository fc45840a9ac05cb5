#include "TovekSMService/platform/FileLock.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace norvane {

FileLock::FileLock(const QString &file)
    : m_handle(::open(QFile::encodeName(file).constData(), O_RDWR | O_CREAT | O_CLOEXEC,
                      S_IRUSR | S_IWUSR))
{
    // On a disk that can't be written, a file that is there can be locked all the same.
    if (m_handle < 0)
        m_handle = ::open(QFile::encodeName(file).constData(), O_RDONLY | O_CLOEXEC);
}

FileLock::~FileLock()
{
    if (m_handle >= 0)
        ::close(m_handle);
}

bool FileLock::tryLock()
{
    return m_handle >= 0 && ::flock(m_handle, LOCK_EX | LOCK_NB) == 0;
}

} // namespace norvane
