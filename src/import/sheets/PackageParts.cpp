#include "import/sheets/PackageParts.h"

#include "import/readers/SpreadsheetConnection.h"

#include <orcus/zip_archive.hpp>
#include <orcus/zip_archive_stream.hpp>

#include <exception>
#include <new>
#include <string>
#include <vector>

namespace {

/// Of one part, unpacked. A kilobyte can tell of a gigabyte of blanks.
constexpr std::size_t MostPartBytes = 256 << 20;

} // namespace

QByteArray ZipParts::part(const QString &name) const
{
    const std::string wanted = name.toStdString();
    std::vector<unsigned char> content;
    try {
        orcus::zip_archive_stream_blob stream(reinterpret_cast<const quint8 *>(m_bytes.constData()),
                                              static_cast<std::size_t>(m_bytes.size()));
        orcus::zip_archive archive(&stream);
        archive.load();
        if (!archive.read_file_entry(wanted, content))
            return {};
    } catch (const std::bad_alloc &) {
        throw;
    } catch (const std::exception &) {
        SheetFailure::raise(SheetFailure::BadFile, u"The archive is damaged."_qs);
    }
    if (content.size() > MostPartBytes)
        SheetFailure::raise(SheetFailure::BadFile, u"The workbook holds too much."_qs);
    // The library puts a terminating zero behind some entries.
    if (!content.empty() && content.back() == 0)
        content.pop_back();
    return {reinterpret_cast<const char *>(content.data()), static_cast<qsizetype>(content.size())};
}

void checkXml(const QXmlStreamReader &xml)
{
    if (xml.hasError())
        SheetFailure::raise(SheetFailure::BadFile,
                            u"The workbook is damaged (%1)."_qs.arg(xml.errorString()));
}
