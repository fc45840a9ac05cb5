#include "TovekSMService/platform/JournalStream.h"

#include <QByteArray>

#include <sys/stat.h>
#include <unistd.h>

namespace norvane {

bool standardErrorIsJournal()
{
    // The variable is inherited by programs whose standard error was led elsewhere since, so it
    // names the stream by device and inode.
    const QByteArray named = qgetenv("JOURNAL_STREAM");
    struct stat info = {};
    return !named.isEmpty() && ::fstat(STDERR_FILENO, &info) == 0 &&
           named == QByteArray::number(static_cast<qulonglong>(info.st_dev)) + ':' +
                        QByteArray::number(static_cast<qulonglong>(info.st_ino));
}

} // namespace norvane
