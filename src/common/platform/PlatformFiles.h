#pragma once

#include <QByteArray>
#include <QString>

namespace norvane {

/// Files and folders as the platform gives them. Every operation gives 0, or the platform's error
/// (errno on POSIX systems). Tests put failing files in its place.
class PlatformFiles
{
public:
    enum class Access { OwnerOnly, Usual };
    enum class Kind { None, File, Folder, Other };

    PlatformFiles() = default;
    PlatformFiles(const PlatformFiles &) = delete;
    PlatformFiles &operator=(const PlatformFiles &) = delete;
    virtual ~PlatformFiles() = default;

    /// What stands at `path`, or what a link there leads to; None if that is unknown.
    virtual Kind kind(const QString &path) const = 0;

    /// Reads a whole regular file; it never waits, whatever stands at `path`.
    /// @param limit  largest size in bytes; a larger file gives EFBIG and is not read
    virtual int read(const QString &path, qint64 limit, QByteArray &bytes) = 0;

    /// Puts `bytes` in the place of what the file held: all of them or, on an error, none. A new
    /// file is for its owner alone, an old one keeps its mode.
    virtual int replace(const QString &path, const QByteArray &bytes) = 0;

    /// Makes one folder; the folder above it must exist.
    virtual int makeFolder(const QString &path, Access access) = 0;
};

/// The platform's own files.
PlatformFiles &platformFiles();

} // namespace norvane
