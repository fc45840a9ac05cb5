#include "queue/QueueFileReader.h"

#include "foundation/FailureNumbers.h"
#include "queue/QueueDropFile.h"

#include <memory>

namespace {

constexpr qsizetype BlockLength = 16'384;

void check(int error)
{
    if (error != 0)
        Failure::raiseErrno(error, QStringLiteral("ImportSMSFile"));
}

/// Takes records off the front of `bytes`.
void feedWholeRecords(QByteArray &bytes, SMSManager &engine, const QString &messageFooter)
{
    QByteArrayView rest(bytes);
    while (rest.size() >= QueueDropFile::RecordLength) {
        const QueueDropFile::Record record =
            QueueDropFile::decode(rest.first(QueueDropFile::RecordLength));
        engine.AddSMS(record.phone, record.message + messageFooter, record.deliveryDate);
        rest = rest.sliced(QueueDropFile::RecordLength);
    }
    bytes = rest.toByteArray();
}

void feed(ByteStream &file, SMSManager &engine, const QString &messageFooter)
{
    QByteArray waiting;
    for (;;) {
        QByteArray block;
        check(file.read(BlockLength, block));
        if (block.isEmpty())
            return;
        waiting += block;
        feedWholeRecords(waiting, engine, messageFooter);
    }
}

} // namespace

void ImportSMSFile(const QString &path, SMSManager &engine, const QString &messageFooter,
                   const QueueAccess &access)
{
    std::unique_ptr<ByteStream> file;
    try {
        check(access.files->openToRead(path, file));
        feed(*file, engine, messageFooter);
        check(file->close());
        check(access.files->removeForced(path));
    } catch (...) {
        file.reset();
        check(access.files->removeForced(path));
    }
}
