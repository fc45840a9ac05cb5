#include "NorvaneSMS/platform/FileStreams.h"

#include "common/platform/PosixDescriptor.h"

#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace norvane {

namespace {

class PosixStream : public ByteStream
{
public:
    explicit PosixStream(int descriptor) : m_file(descriptor) {}

    bool isOpen() const { return m_file.isOpen(); }
    int descriptor() const { return m_file.value(); }

    /// Lets the stream end after so many bytes, however far the file goes.
    void endAfter(qint64 bytes) { m_left = bytes; }

    int read(qsizetype max, QByteArray &bytes) override
    {
        bytes.resize(qMin<qint64>(max, m_left));
        ssize_t count = 0;
        do {
            count = ::read(m_file.value(), bytes.data(), static_cast<std::size_t>(bytes.size()));
        } while (count < 0 && errno == EINTR);
        const int error = count < 0 ? errno : 0;
        bytes.truncate(qMax<qsizetype>(count, 0));
        m_left -= bytes.size();
        return error;
    }

    int write(const QByteArray &bytes) override
    {
        qsizetype written = 0;
        while (written < bytes.size()) {
            const ssize_t count = ::write(m_file.value(), bytes.constData() + written,
                                          static_cast<std::size_t>(bytes.size() - written));
            if (count < 0 && errno != EINTR)
                return errno;
            written += qMax<ssize_t>(count, 0);
        }
        return 0;
    }

    int close() override { return m_file.close(); }

private:
    Descriptor m_file;
    qint64 m_left = 0;
};

/// What stands at a path may have changed since it was listed, so it is looked at once it is open.
/// @param size  in bytes
int checkRegular(int descriptor, qint64 &size)
{
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0)
        return errno;
    if (S_ISDIR(status.st_mode))
        return EISDIR;
    size = status.st_size;
    return S_ISREG(status.st_mode) ? 0 : EINVAL;
}

class LinuxFileStreams : public FileStreams
{
public:
    int openToRead(const QString &path, std::unique_ptr<ByteStream> &stream) override
    {
        // What was a file when it was listed may have been replaced by a link since.
        return open(path, O_RDONLY | O_NONBLOCK | O_NOFOLLOW, stream);
    }

    int createNew(const QString &path, std::unique_ptr<ByteStream> &stream) override
    {
        return open(path, O_WRONLY | O_CREAT | O_EXCL, stream);
    }

    int removeForced(const QString &path) override
    {
        if (!isUsablePath(path))
            return ENOENT;
        const QByteArray name = QFile::encodeName(path);
        if (::unlink(name.constData()) == 0)
            return 0;
        const int error = errno;
        // Some network file systems refuse to take away what is read-only. What a link leads to is
        // none of theirs, and stays as it is.
        if ((error == EACCES || error == EPERM) &&
            ::fchmodat(AT_FDCWD, name.constData(), 0600, AT_SYMLINK_NOFOLLOW) == 0 &&
            ::unlink(name.constData()) == 0)
            return 0;
        return error;
    }

private:
    static int open(const QString &path, int flags, std::unique_ptr<ByteStream> &stream)
    {
        if (!isUsablePath(path))
            return ENOENT;
        constexpr mode_t mode = 0666; // less what the user's mask takes away
        auto file = std::make_unique<PosixStream>(
            ::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC | O_NOCTTY, mode));
        if (!file->isOpen())
            return errno;
        qint64 size = 0;
        if (const int error = checkRegular(file->descriptor(), size))
            return error;
        file->endAfter(qMax(size, maxFollowed));
        stream = std::move(file);
        return 0;
    }
};

} // namespace

FileStreams &fileStreams()
{
    static LinuxFileStreams streams;
    return streams;
}

} // namespace norvane
