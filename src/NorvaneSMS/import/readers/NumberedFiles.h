#pragma once

#include "NorvaneSMS/platform/FileStreams.h"

#include <QHash>
#include <QString>

#include <memory>

namespace norvane {

/// Text files that are read line by line under a number. A number stays in use until it is closed:
/// a reading that breaks off leaves it so. One such table serves the whole program.
class NumberedFiles
{
public:
    explicit NumberedFiles(FileStreams &files = fileStreams());
    ~NumberedFiles();

    /// @throws NumberedFailure 55 if the number is in use; 53, 70, 76 ... by the platform's error
    void openForInput(qint16 number, const QString &path);

    /// Whether everything has been read.
    /// @throws NumberedFailure 52 for a number that isn't in use, else by the platform's error
    bool isAtEnd(qint16 number);

    /// The next line, its bytes as ANSI text. It ends at a carriage return, which a line feed may
    /// follow, or with the file; a line feed alone is a character of the line.
    /// @throws NumberedFailure 62 at the end, 52 for a number that isn't in use, 7 for a line that
    ///         no memory holds, else by the platform's error
    QString lineInput(qint16 number);

    /// Closes the number, if it is in use.
    void close(qint16 number);

private:
    struct OpenFile;

    OpenFile &inUse(qint16 number);

    FileStreams &m_files;
    QHash<qint16, std::shared_ptr<OpenFile>> m_open;
};

} // namespace norvane
