#include "TovekSMService/platform/NewFile.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace norvane {

namespace {

QString reason()
{
    return qt_error_string(errno);
}

QString flushHandle(int handle)
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

QString NewFile::flushFile(const QString &file)
{
    const QString failure =
        flushHandle(::open(QFile::encodeName(file).constData(), O_RDONLY | O_CLOEXEC));
    if (!failure.isEmpty())
        return failure;
    const QByteArray folder = QFile::encodeName(QFileInfo(file).absolutePath());
    return flushHandle(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

} // namespace norvane
