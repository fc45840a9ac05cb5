#include "NorvaneSMS/queue/QueueFileReader.h"

#include "NorvaneSMS/queue/QueueDropFile.h"
#include "fuzz/FuzzTarget.h"
#include "support/RaisedFailure.h"
#include "support/RecordingEngine.h"

#include <cerrno>

namespace norvane {

using namespace Qt::StringLiterals;

// Any bytes as a drop file, in readings of any length.

namespace {

/// One file in memory, which notes what is done with it.
class FuzzedFile : public FileStreams
{
public:
    FuzzedFile(const QByteArray &bytes, qsizetype reading, qsizetype failsAt)
        : m_bytes(bytes), m_reading(reading), m_failsAt(failsAt)
    {}

    int openToRead(const QString &, std::unique_ptr<ByteStream> &stream) override
    {
        stream = std::make_unique<Stream>(*this);
        return 0;
    }
    int createNew(const QString &, std::unique_ptr<ByteStream> &) override { return EROFS; }
    int removeForced(const QString &) override
    {
        ++removals;
        return 0;
    }

    int open = 0;
    int removals = 0;

private:
    class Stream : public ByteStream
    {
    public:
        explicit Stream(FuzzedFile &file) : m_file(file) { ++m_file.open; }
        ~Stream() override { --m_file.open; }

        int read(qsizetype max, QByteArray &bytes) override
        {
            if (m_position >= m_file.m_failsAt)
                return EIO;
            bytes = m_file.m_bytes.mid(m_position, qMin(max, m_file.m_reading));
            m_position += bytes.size();
            return 0;
        }
        int write(const QByteArray &) override { return EBADF; }
        int close() override { return 0; }

    private:
        FuzzedFile &m_file;
        qsizetype m_position = 0;
    };

    const QByteArray m_bytes;
    const qsizetype m_reading;
    const qsizetype m_failsAt;
};

bool isClean(const QueueDropFile::Record &record)
{
    return record.phone.size() <= QueueDropFile::phoneLength && !record.phone.contains(u' ') &&
           !record.phone.contains(u'-') && record.message.size() <= QueueDropFile::messageLength &&
           !record.message.startsWith(u' ') && !record.message.endsWith(u' ') &&
           record.deliveryDate.isValid() && record.deliveryDate.date().year() >= 100 &&
           record.deliveryDate.date().year() <= 9999;
}

/// How many records stand in front of the first bad one; each is looked at.
int goodRecords(const QByteArray &bytes)
{
    int count = 0;
    for (qsizetype at = 0; at + 199 <= bytes.size(); at += 199) {
        QueueDropFile::Record record;
        const qint32 failure = raisedNumber(
            [&] { record = QueueDropFile::decode(QByteArrayView(bytes).sliced(at, 199)); });
        expectThat(failure == 0 || failure == 5 || failure == 6 || failure == 13,
                   "a record decodes or has one of three failures");
        if (failure != 0)
            return count;
        expectThat(isClean(record), "what was decoded is clean");
        const QueueDropFile::Record again = QueueDropFile::decode(QueueDropFile::encode(record));
        expectThat(again == record, "a record comes back as it was written");
        ++count;
    }
    return count;
}

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    const qsizetype reading = input.takeByte() + 1;
    const bool fails = input.takeByte() % 4 == 0;
    const qsizetype failsAt = input.takeNumber(65536);
    const QByteArray bytes = input.takeRest();
    const int good = goodRecords(bytes);

    FuzzedFile file(bytes, reading, fails ? failsAt : bytes.size() + 1);
    RecordingEngine::Script script;
    {
        RecordingEngine engine(script);
        ImportSMSFile(u"sms.0"_s, engine, QString(), {&file, nullptr});
    }
    const auto added = script.calls.filter(u"AddSMS("_s).size();
    expectThat(fails ? added <= good : added == good, "records reach the engine up to a bad one");
    expectThat(file.open == 0, "the file is closed");
    expectThat(file.removals == 1, "the file is taken away");
    return 0;
}

} // namespace norvane
