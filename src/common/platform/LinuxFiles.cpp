#include "common/platform/PlatformFiles.h"

#include "common/platform/PosixDescriptor.h"

#include <QFile>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace norvane {

namespace {

int readAll(int descriptor, qint64 limit, QByteArray &bytes)
{
    QByteArray block(65536, Qt::Uninitialized);
    bytes.clear();
    for (;;) {
        const ssize_t count =
            ::read(descriptor, block.data(), static_cast<std::size_t>(block.size()));
        if (count == 0)
            return 0;
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return errno;
        if (bytes.size() + count > limit)
            return EFBIG;
        bytes.append(block.constData(), count);
    }
}

int writeAll(int descriptor, const QByteArray &bytes)
{
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(descriptor, bytes.constData() + written,
                                      static_cast<std::size_t>(bytes.size() - written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return errno;
        written += count;
    }
    return ::fsync(descriptor) == 0 ? 0 : errno;
}

struct Free
{
    void operator()(char *text) const { std::free(text); }
};

// A link is written through: what it names is replaced, not the link.
QByteArray targetOf(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    const std::unique_ptr<char, Free> target(::realpath(name.constData(), nullptr));
    return target ? QByteArray(target.get()) : name;
}

int fill(Descriptor &file, const QByteArray &target, const QByteArray &bytes)
{
    struct stat old = {};
    if (::stat(target.constData(), &old) == 0 && ::fchmod(file.value(), old.st_mode & 0777) != 0)
        return errno;
    if (const int error = writeAll(file.value(), bytes))
        return error;
    return file.close();
}

class LinuxFiles : public PlatformFiles
{
public:
    Kind kind(const QString &path) const override
    {
        struct stat status = {};
        if (!isUsablePath(path) || ::stat(QFile::encodeName(path).constData(), &status) != 0)
            return Kind::None;
        if (S_ISREG(status.st_mode))
            return Kind::File;
        return S_ISDIR(status.st_mode) ? Kind::Folder : Kind::Other;
    }

    int read(const QString &path, qint64 limit, QByteArray &bytes) override
    {
        if (!isUsablePath(path))
            return ENOENT;
        const Descriptor file(::open(QFile::encodeName(path).constData(),
                                     O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
        if (!file.isOpen())
            return errno;
        struct stat status = {};
        if (::fstat(file.value(), &status) != 0)
            return errno;
        if (S_ISDIR(status.st_mode))
            return EISDIR;
        if (!S_ISREG(status.st_mode))
            return EINVAL;
        if (status.st_size > limit)
            return EFBIG;
        return readAll(file.value(), limit, bytes);
    }

    int replace(const QString &path, const QByteArray &bytes) override
    {
        if (!isUsablePath(path))
            return ENOENT;
        const QByteArray target = targetOf(path);
        QByteArray temporary = target + ".XXXXXX";
        Descriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
        if (!file.isOpen())
            return errno;
        int error = fill(file, target, bytes);
        if (error == 0 && ::rename(temporary.constData(), target.constData()) != 0)
            error = errno;
        if (error != 0)
            ::unlink(temporary.constData());
        return error;
    }

    int makeFolder(const QString &path, Access access) override
    {
        if (!isUsablePath(path))
            return ENOENT;
        const mode_t mode = access == Access::OwnerOnly ? 0700 : 0777;
        return ::mkdir(QFile::encodeName(path).constData(), mode) == 0 ? 0 : errno;
    }
};

} // namespace

PlatformFiles &platformFiles()
{
    static LinuxFiles files;
    return files;
}

} // namespace norvane
