#include "NorvaneSMS/import/readers/RecipientReaders.h"

#include "fuzz/FuzzTarget.h"

namespace norvane {

// Any bytes as a text file of recipients, in readings of any length.

namespace {

class FuzzedText : public FileStreams
{
public:
    FuzzedText(const QByteArray &bytes, qsizetype reading) : m_bytes(bytes), m_reading(reading) {}

    int openToRead(const QString &, std::unique_ptr<ByteStream> &stream) override
    {
        stream = std::make_unique<Stream>(*this);
        return 0;
    }
    int createNew(const QString &, std::unique_ptr<ByteStream> &) override { return 1; }
    int removeForced(const QString &) override { return 1; }

private:
    class Stream : public ByteStream
    {
    public:
        explicit Stream(FuzzedText &text) : m_text(text) {}
        int read(qsizetype max, QByteArray &bytes) override
        {
            bytes = m_text.m_bytes.mid(m_position, qMin(max, m_text.m_reading));
            m_position += bytes.size();
            return 0;
        }
        int write(const QByteArray &) override { return 1; }
        int close() override { return 0; }

    private:
        FuzzedText &m_text;
        qsizetype m_position = 0;
    };

    const QByteArray m_bytes;
    const qsizetype m_reading;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    const qsizetype reading = 1 + input.takeByte();
    const QByteArray bytes = input.takeRest();
    FuzzedText text(bytes, reading);
    NumberedFiles files(text);
    clsCollection all;
    readTextRecipients(files, QString(), Duplicates::Keep, all);
    clsCollection unique;
    readTextRecipients(files, QString(), Duplicates::Remove, unique);
    expectThat(unique.getCount() <= all.getCount(), "removing duplicates adds nothing");
    expectThat((unique.getCount() == 0) == (all.getCount() == 0), "one of each number stays");
    qsizetype length = 0;
    for (const QVariant &item : all) {
        const QString line = item.toString();
        length += line.size();
        expectThat(!line.contains(u'\r'), "a carriage return ends a line");
        expectThat(!CleanNumber(line.left(line.indexOf(u'|'))).isEmpty(), "an item has a number");
    }
    expectThat(length <= bytes.size(), "a byte is one character at most");
    return 0;
}

} // namespace norvane
