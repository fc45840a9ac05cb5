#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace norvane {

/// Writes lines to an open file of this process, and keeps it within its size if it is the log
/// file.
///
/// A line that would make the log file larger than that sets it aside first, as FILE.1 in the place
/// of an older one, and goes on in a new file behind the same handle. Where that fails, the file is
/// emptied. Of several processes that write to one log file, one sets it aside and the others
/// follow.
class LogOutput
{
public:
    /// @param handle   open for appending; stays open, and stays the caller's
    /// @param file     the log file; a handle that is for something else is just written to
    /// @param maxSize  in bytes
    LogOutput(int handle, QString file, qint64 maxSize);

    /// Writes in one go, so that the lines of several processes don't mix. A line that the disk has
    /// no room for is lost; so is its rest, if a part of it was written.
    /// @param line  with its end
    void write(const QByteArray &line);

private:
    bool isLogFile() const;
    void makeRoomFor(qint64 size);
    void setAside();
    bool reopen();

    const int m_handle;
    const QByteArray m_file;
    const QByteArray m_olderFile;
    const qint64 m_maxSize;
    const bool m_isBounded;
    bool m_lineIsCut = false; ///< the last line in the file has no end
};

} // namespace norvane
