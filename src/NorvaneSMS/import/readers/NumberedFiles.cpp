#include "NorvaneSMS/import/readers/NumberedFiles.h"

#include "common/CodePages.h"
#include "common/FailureNumbers.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype blockLength = 65536;

QString source()
{
    return u"NumberedFiles"_s;
}

} // namespace

struct NumberedFiles::OpenFile
{
    std::unique_ptr<ByteStream> stream;
    QByteArray block;
    qsizetype position = 0; ///< in the block

    /// Reads the next block once this one is used up.
    /// @return whether there is another byte
    bool fill()
    {
        if (position < block.size())
            return true;
        position = 0;
        block.clear();
        if (const int error = stream->read(blockLength, block)) {
            block.clear();
            Failure::raiseErrno(error, source());
        }
        return !block.isEmpty();
    }
};

NumberedFiles::NumberedFiles(FileStreams &files) : m_files(files) {}

NumberedFiles::~NumberedFiles() = default;

void NumberedFiles::openForInput(qint16 number, const QString &path)
{
    if (m_open.contains(number))
        Failure::raise(Failure::FileAlreadyOpen, source());
    const auto file = std::make_shared<OpenFile>();
    if (const int error = m_files.openToRead(path, file->stream))
        Failure::raiseErrno(error, source());
    m_open.insert(number, file);
}

bool NumberedFiles::isAtEnd(qint16 number)
{
    return !inUse(number).fill();
}

QString NumberedFiles::lineInput(qint16 number)
{
    OpenFile &file = inUse(number);
    if (!file.fill())
        Failure::raise(Failure::InputPastEndOfFile, source());
    QString line;
    do {
        const QByteArrayView rest = QByteArrayView(file.block).sliced(file.position);
        const qsizetype end = rest.indexOf('\r');
        const qsizetype length = end >= 0 ? end : rest.size();
        line += CodePages::fromAnsi(rest.first(length));
        file.position += length;
        if (end >= 0) {
            ++file.position;
            if (file.fill() && file.block.at(file.position) == '\n')
                ++file.position;
            break;
        }
    } while (file.fill());
    return line;
}

void NumberedFiles::close(qint16 number)
{
    m_open.remove(number);
}

NumberedFiles::OpenFile &NumberedFiles::inUse(qint16 number)
{
    const auto found = m_open.constFind(number);
    if (found == m_open.constEnd())
        Failure::raise(Failure::BadFileNameOrNumber, source());
    return **found;
}

} // namespace norvane
