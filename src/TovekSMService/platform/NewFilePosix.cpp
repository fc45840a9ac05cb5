#include "TovekSMService/platform/NewFile.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString reason()
{
    return qt_error_string(errno);
}

QString bringHandleToDisk(int handle)
{
    if (handle < 0)
        return reason();
    const QString failure = ::fsync(handle) == 0 ? QString() : reason();
    ::close(handle);
    return failure;
}

} // namespace

QString NewFile::make(const QString &file)
{
    const int handle = ::open(QFile::encodeName(file).constData(),
                              O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (handle < 0)
        return reason();
    ::close(handle);
    return {};
}

QString NewFile::bringToDisk(const QString &file)
{
    const QString failure =
        bringHandleToDisk(::open(QFile::encodeName(file).constData(), O_RDONLY | O_CLOEXEC));
    if (!failure.isEmpty())
        return failure;
    const QByteArray folder = QFile::encodeName(QFileInfo(file).absolutePath());
    return bringHandleToDisk(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}
