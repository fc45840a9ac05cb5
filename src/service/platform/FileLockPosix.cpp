#include "service/platform/FileLock.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

FileLock::FileLock(const QString &file)
    : m_handle(::open(QFile::encodeName(file).constData(), O_RDWR | O_CREAT | O_CLOEXEC,
                      S_IRUSR | S_IWUSR))
{}

FileLock::~FileLock()
{
    if (m_handle >= 0)
        ::close(m_handle);
}

bool FileLock::tryLock()
{
    return m_handle >= 0 && ::flock(m_handle, LOCK_EX | LOCK_NB) == 0;
}
