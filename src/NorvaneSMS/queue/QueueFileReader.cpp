#include "NorvaneSMS/queue/QueueFileReader.h"

#include "NorvaneSMS/platform/Removal.h"
#include "NorvaneSMS/queue/QueueDropFile.h"
#include "NorvaneSMS/queue/RecordHandover.h"
#include "common/FailureNumbers.h"

#include <algorithm>
#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype blockLength = 65'536;

void check(int error)
{
    if (error != 0)
        Failure::raiseErrno(error, u"ImportSMSFile"_s);
}

/// Takes records off the front of `bytes`.
void feedWholeRecords(QByteArray &bytes, RecordHandover &handover)
{
    QByteArrayView rest(bytes);
    while (rest.size() >= QueueDropFile::recordLength) {
        handover.add(QueueDropFile::decode(rest.first(QueueDropFile::recordLength)));
        rest = rest.sliced(QueueDropFile::recordLength);
    }
    bytes = rest.toByteArray();
}

void feed(ByteStream &file, RecordHandover &handover)
{
    QByteArray waiting;
    for (;;) {
        QByteArray block;
        check(file.read(blockLength, block));
        if (block.isEmpty())
            return;
        waiting += block;
        feedWholeRecords(waiting, handover);
    }
}

/// A file whose records the engine was given.
struct TakenFile
{
    QString path;
    qsizetype end = 0;      ///< records given when it ended
    bool hadFailed = false; ///< so that taking it away is what follows a failure, and final
};

/// Opens, reads and closes a file.
TakenFile taken(const QString &path, RecordHandover &handover, const QueueAccess &access)
{
    bool failed = false;
    try {
        std::unique_ptr<ByteStream> file;
        check(access.files->openToRead(path, file));
        feed(*file, handover);
        check(file->close());
    } catch (...) {
        failed = true;
    }
    return {path, handover.given(), failed};
}

/// Reads `paths` from the first on, as far as the engine takes their records. A file that may not
/// be removable is read alone, as nothing after it may be read if it stays.
/// @return the files that are done, at least one; they are to be removed
QList<TakenFile> takeTogether(const QStringList &paths, SMSManager &engine,
                              const QString &messageFooter, const QueueAccess &access)
{
    QList<TakenFile> files;
    RecordHandover handover(engine, messageFooter);
    for (const QString &path : paths) {
        const bool mayStay = !isRemovable(path);
        if (mayStay && !files.isEmpty())
            break;
        files.append(taken(path, handover, access));
        if (mayStay || handover.fellShort())
            break;
    }
    try {
        handover.commit();
    } catch (...) { // as behind a call for each record, the files of those that failed go too
    }
    if (!handover.fellShort())
        return files;
    // The rest of this file is lost. What follows it in the batch never reached the engine, so
    // those files are read once more.
    const auto lost = std::find_if(files.begin(), files.end(), [&handover](const TakenFile &file) {
        return file.end > handover.stored();
    });
    if (lost == files.end())
        return files;
    lost->hadFailed = true;
    return files.first(lost - files.begin() + 1);
}

/// Takes a file away; one that was read without a failure is tried once more.
/// @return the error, 0 for none
int remove(const TakenFile &file, const QueueAccess &access)
{
    const int error = access.files->removeForced(file.path);
    return error == 0 || file.hadFailed ? error : access.files->removeForced(file.path);
}

} // namespace

void ImportSMSFile(const QString &path, SMSManager &engine, const QString &messageFooter,
                   const QueueAccess &access)
{
    ImportSMSFiles({path}, engine, messageFooter, access);
}

void ImportSMSFiles(const QStringList &paths, SMSManager &engine, const QString &messageFooter,
                    const QueueAccess &access)
{
    int firstError = 0;
    QStringList rest = paths;
    while (!rest.isEmpty()) {
        const QList<TakenFile> files = takeTogether(rest, engine, messageFooter, access);
        for (const TakenFile &file : files) {
            const int error = remove(file, access);
            firstError = firstError == 0 ? error : firstError;
        }
        rest = rest.sliced(files.size());
        if (firstError != 0)
            break;
    }
    check(firstError);
}

} // namespace norvane
