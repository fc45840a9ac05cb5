#include "TovekSMService/platform/NewFile.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace norvane {

namespace {

Result<void, PlatformFailure> lastError()
{
    return failed(PlatformFailure::ofErrno(errno));
}

Result<void, PlatformFailure> flushHandle(int handle)
{
    if (handle < 0)
        return lastError();
    const auto flushed = ::fsync(handle) == 0 ? Result<void, PlatformFailure>() : lastError();
    ::close(handle);
    return flushed;
}

} // namespace

Result<void, PlatformFailure> NewFile::make(const QString &file)
{
    const int handle = ::open(QFile::encodeName(file).constData(),
                              O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (handle < 0)
        return lastError();
    ::close(handle);
    return {};
}

Result<void, PlatformFailure> NewFile::flushFile(const QString &file)
{
    const auto flushed =
        flushHandle(::open(QFile::encodeName(file).constData(), O_RDONLY | O_CLOEXEC));
    if (!flushed)
        return flushed;
    const QByteArray folder = QFile::encodeName(QFileInfo(file).absolutePath());
    return flushHandle(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

} // namespace norvane
