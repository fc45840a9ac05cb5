#include "NorvaneSheetReader/SheetFile.h"

#include "NorvaneSheetReader/LittleEndian.h"

#include <array>

namespace norvane {

namespace {

quint32 crcOf(const QByteArray &bytes)
{
    static const std::array<quint32, 256> table = [] {
        std::array<quint32, 256> made{};
        for (quint32 i = 0; i < made.size(); ++i) {
            quint32 crc = i;
            for (int bit = 0; bit < 8; ++bit)
                crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
            made[i] = crc;
        }
        return made;
    }();
    quint32 crc = 0xFFFFFFFF;
    for (const char byte : bytes)
        crc = (crc >> 8) ^ table[(crc ^ static_cast<quint8>(byte)) & 0xFF];
    return ~crc;
}

/// qCompress puts a length of four bytes and a header of two in front, and a sum of four behind.
QByteArray deflated(const QByteArray &content)
{
    // Of nothing it makes no stream at all, where a stream has one empty block.
    return content.isEmpty() ? QByteArray("\x03\0", 2) : qCompress(content, 9).mid(6).chopped(4);
}

} // namespace

QByteArray zipOf(const QList<ZipEntry> &entries)
{
    QByteArray archive;
    QByteArray directory;
    for (const ZipEntry &entry : entries) {
        const QByteArray packed = deflated(entry.content);
        const QByteArray common =
            little<quint16>(20) + little<quint16>(0) + little<quint16>(8) + little<quint32>(0) +
            little(crcOf(entry.content)) + little(static_cast<quint32>(packed.size())) +
            little(static_cast<quint32>(entry.content.size())) +
            little(static_cast<quint16>(entry.name.size())) + little<quint16>(0);
        directory += "PK\x01\x02" + little<quint16>(20) + common + QByteArray(10, '\0') +
                     little(static_cast<quint32>(archive.size())) + entry.name;
        archive += "PK\x03\x04" + common + entry.name + packed;
    }
    const auto count = static_cast<quint16>(entries.size());
    return archive + directory + "PK\x05\x06" + little<quint32>(0) + little(count) + little(count) +
           little(static_cast<quint32>(directory.size())) +
           little(static_cast<quint32>(archive.size())) + little<quint16>(0);
}

QByteArray zip64Of(const QList<ZipEntry> &entries)
{
    constexpr quint32 elsewhere = 0xFFFFFFFF; // in the extra field, or the larger record
    QByteArray archive;
    QByteArray directory;
    for (const ZipEntry &entry : entries) {
        const QByteArray packed = deflated(entry.content);
        const QByteArray sizes = little(static_cast<quint64>(entry.content.size())) +
                                 little(static_cast<quint64>(packed.size()));
        const QByteArray front = little<quint16>(45) + little<quint16>(0) + little<quint16>(8) +
                                 little<quint32>(0) + little(crcOf(entry.content)) +
                                 little(elsewhere) + little(elsewhere) +
                                 little(static_cast<quint16>(entry.name.size()));
        directory += "PK\x01\x02" + little<quint16>(45) + front + little<quint16>(28) +
                     QByteArray(10, '\0') + little(elsewhere) + entry.name + little<quint16>(1) +
                     little<quint16>(24) + sizes + little(static_cast<quint64>(archive.size()));
        archive += "PK\x03\x04" + front + little<quint16>(20) + entry.name + little<quint16>(1) +
                   little<quint16>(16) + sizes + packed;
    }
    const auto count = static_cast<quint64>(entries.size());
    return archive + directory + "PK\x06\x06" + little<quint64>(44) + little<quint16>(45) +
           little<quint16>(45) + little<quint32>(0) + little<quint32>(0) + little(count) +
           little(count) + little(static_cast<quint64>(directory.size())) +
           little(static_cast<quint64>(archive.size())) + "PK\x06\x07" + little<quint32>(0) +
           little(static_cast<quint64>(archive.size() + directory.size())) + little<quint32>(1) +
           "PK\x05\x06" + little<quint32>(0) + QByteArray(12, '\xFF') + little<quint16>(0);
}

QByteArray xlsxOf(const QByteArray &rows, const QByteArray &sharedStrings)
{
    const QByteArray relation = "<Relationships><Relationship Id=\"%1\" Type=\"x/%2\" "
                                "Target=\"%3\"/>%4</Relationships>";
    const auto relations = [&](const QByteArray &id, const QByteArray &type,
                               const QByteArray &target, const QByteArray &more = {}) {
        return QByteArray(relation)
            .replace("%1", id)
            .replace("%2", type)
            .replace("%3", target)
            .replace("%4", more);
    };
    return zipOf(
        {{"_rels/.rels", relations("r0", "officeDocument", "xl/workbook.xml")},
         {"xl/workbook.xml", "<workbook xmlns:r=\"r\"><sheets><sheet name=\"Hoja1\" r:id=\"r1\"/>"
                             "</sheets></workbook>"},
         {"xl/_rels/workbook.xml.rels",
          relations("r1", "worksheet", "sheet1.xml",
                    "<Relationship Id=\"r2\" Type=\"x/sharedStrings\" Target=\"/xl/s.xml\"/>")},
         {"xl/s.xml", "<sst>" + sharedStrings + "</sst>"},
         {"xl/sheet1.xml", "<worksheet><sheetData>" + rows + "</sheetData></worksheet>"}});
}

QByteArray odsOf(const QByteArray &rows, const QByteArray &prologue)
{
    const QByteArray content =
        "<?xml version=\"1.0\"?>" + prologue +
        "<o:document-content xmlns:o=\"o\" xmlns:t=\"t\" xmlns:x=\"x\" xmlns:calcext=\"calcext\">"
        "<o:body><o:spreadsheet><t:table t:name=\"Hoja1\">" +
        rows + "</t:table></o:spreadsheet></o:body></o:document-content>";
    return zipOf({{"mimetype", "application/vnd.oasis.opendocument.spreadsheet"},
                  {"content.xml", content},
                  {"META-INF/manifest.xml", "<manifest/>"}});
}

} // namespace norvane
