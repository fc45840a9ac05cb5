#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

namespace norvane {

/// An open file as a stream of bytes. Every operation gives 0, or the platform's error (errno on
/// POSIX systems). The file is closed with this object at the latest.
class ByteStream
{
public:
    ByteStream() = default;
    ByteStream(const ByteStream &) = delete;
    ByteStream &operator=(const ByteStream &) = delete;
    virtual ~ByteStream() = default;

    /// Reads what comes next: at least one byte and at most `max`, or none at the end of the file.
    virtual int read(qsizetype max, QByteArray &bytes) = 0;
    /// Writes all of `bytes` or, on an error, any part of them; in one piece where the platform
    /// takes them so.
    virtual int write(const QByteArray &bytes) = 0;
    virtual int close() = 0;
};

/// Files that are read or written from front to back, and then taken away. Every operation gives 0,
/// or the platform's error. Tests put failing files in its place.
class FileStreams
{
public:
    FileStreams() = default;
    FileStreams(const FileStreams &) = delete;
    FileStreams &operator=(const FileStreams &) = delete;
    virtual ~FileStreams() = default;

    /// How far a file that grows is followed: further than any that the console writes.
    static constexpr qint64 maxFollowed = 8 * 1024 * 1024;

    /// Opens a regular file; it never waits, whatever stands at `path`. A file that grows while it
    /// is read is followed up to maxFollowed bytes, or to where it ended when it was opened if
    /// that is further: one that is written to all the while keeps no reader for ever.
    virtual int openToRead(const QString &path, std::unique_ptr<ByteStream> &stream) = 0;

    /// Makes a file that nobody else made: EEXIST if anything stands at `path`.
    virtual int createNew(const QString &path, std::unique_ptr<ByteStream> &stream) = 0;

    /// Takes a file away, also one that is read-only. A folder isn't taken away, and of a link only
    /// the link.
    virtual int removeForced(const QString &path) = 0;
};

/// The platform's own files.
FileStreams &fileStreams();

} // namespace norvane
