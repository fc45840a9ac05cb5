#include "NorvaneSMS/platform/Removal.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace norvane {

bool isRemovable(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    const QByteArray folder = name.left(qMax<qsizetype>(name.lastIndexOf('/'), 0)) + '/';
    struct stat file = {};
    struct stat place = {};
    if (::lstat(name.constData(), &file) != 0 || S_ISDIR(file.st_mode) ||
        ::stat(folder.constData(), &place) != 0 ||
        ::faccessat(AT_FDCWD, folder.constData(), W_OK | X_OK, AT_EACCESS) != 0)
        return false;
    const uid_t account = ::geteuid();
    const bool isKept = (place.st_mode & S_ISVTX) != 0;
    return !isKept || account == 0 || account == file.st_uid || account == place.st_uid;
}

} // namespace norvane
