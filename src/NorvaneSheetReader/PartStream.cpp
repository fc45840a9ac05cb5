#include "NorvaneSheetReader/PartStream.h"

#include "common/SpreadsheetConnection.h"

#include <array>

namespace norvane {

using namespace Qt::StringLiterals;

void PartStream::failAsDamaged()
{
    SheetFailure::raise(SheetFailure::BadFile, u"The archive is damaged."_s);
}

PartStream::PartStream(QuaZip &zip) : m_file(&zip)
{
    if (!m_file.open(QIODevice::ReadOnly))
        failAsDamaged();
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 PartStream::readData(char *data, qint64 maxSize)
{
    if (m_isBroken)
        return -1;
    const qint64 count = m_file.read(data, maxSize);
    m_isBroken = count < 0;
    m_count += qMax<qint64>(count, 0);
    return count;
}

void PartStream::finish()
{
    std::array<char, 16384> rest{};
    while (read(rest.data(), rest.size()) > 0) {
    }
    const qint64 declared = m_file.usize();
    m_file.close(); // compares the checksum
    if (m_isBroken || m_count != declared || m_file.getZipError() != UNZ_OK)
        failAsDamaged();
}

} // namespace norvane
