#include "NorvaneSheetReader/PackageParts.h"

#include "common/SpreadsheetConnection.h"

#include <quazip/quazip.h>
#include <quazip/quazipfileinfo.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A large workbook has some hundred.
constexpr qsizetype maxParts = 65536;

// How a part can be packed.
constexpr quint16 stored = 0;
constexpr quint16 deflated = 8;

} // namespace

PackageParts::PackageParts(const QByteArray &bytes)
{
    m_archive.setData(bytes);
    m_archive.open(QIODevice::ReadOnly);
    m_zip = std::make_unique<QuaZip>(&m_archive);
    // Names without the mark for UTF-8 are to be read alike under every locale.
    m_zip->setFileNameCodec("UTF-8");
    if (!m_zip->open(QuaZip::mdUnzip))
        PartStream::failAsDamaged();
    readIndex();
}

PackageParts::~PackageParts() = default;

void PackageParts::readIndex()
{
    for (bool isThere = m_zip->goToFirstFile(); isThere; isThere = m_zip->goToNextFile()) {
        const QString name = m_zip->getCurrentFileName();
        if (name.isEmpty() || m_names.contains(name))
            PartStream::failAsDamaged();
        m_names.insert(name);
        if (m_names.size() > maxParts)
            SheetFailure::raise(SheetFailure::BadFile, u"The archive holds too many parts."_s);
    }
    if (m_names.size() != m_zip->getEntriesCount())
        PartStream::failAsDamaged();
}

std::unique_ptr<PartStream> PackageParts::open(const QString &name) const
{
    if (!contains(name))
        return nullptr;
    QuaZipFileInfo64 info;
    if (!m_zip->setCurrentFile(name, QuaZip::csSensitive) || !m_zip->getCurrentFileInfo(&info))
        PartStream::failAsDamaged();
    if (info.isEncrypted())
        SheetFailure::raise(SheetFailure::BadFile, u"The workbook is encrypted."_s);
    // Neither kind of workbook has others. Of a part in bzip2 that breaks off, the library goes on
    // reading for ever.
    if (info.method != stored && info.method != deflated)
        SheetFailure::raise(SheetFailure::BadFile,
                            u"The archive is packed in a way that isn't read."_s);
    if (info.uncompressedSize > maxPartBytes)
        SheetFailure::raise(SheetFailure::BadFile,
                            u"A part of the archive holds more than 256 MiB."_s);
    return info.uncompressedSize == 0 ? nullptr : std::make_unique<PartStream>(*m_zip);
}

QByteArray PackageParts::bytes(const QString &name) const
{
    const std::unique_ptr<PartStream> part = open(name);
    if (!part)
        return {};
    const QByteArray bytes = part->readAll();
    part->finish();
    return bytes;
}

} // namespace norvane
