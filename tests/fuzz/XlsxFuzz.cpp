#include "NorvaneSheetReader/SheetFile.h"
#include "NorvaneSheetReader/XlsxReader.h"
#include "fuzz/SheetExpectations.h"

namespace norvane {

// A small workbook, of which one part is any bytes.

namespace {

const char *const partNames[] = {
    "_rels/.rels",          "xl/workbook.xml", "xl/_rels/workbook.xml.rels",
    "xl/sharedStrings.xml", "xl/styles.xml",   "xl/sheet1.xml"};

QByteArray workbookWith(std::size_t fuzzed, const QByteArray &bytes)
{
    static const QByteArray contents[] = {
        "<R><r Id=\"a\" Type=\"x/officeDocument\" Target=\"xl/workbook.xml\"/></R>",
        "<w xmlns:r=\"r\"><sheets><sheet name=\"A\" r:id=\"b\"/></sheets></w>",
        "<R><r Id=\"b\" Type=\"x/worksheet\" Target=\"sheet1.xml\"/>"
        "<r Id=\"c\" Type=\"x/sharedStrings\" Target=\"sharedStrings.xml\"/>"
        "<r Id=\"d\" Type=\"x/styles\" Target=\"styles.xml\"/></R>",
        "<sst><si><t>N</t></si></sst>",
        "<s><cellXfs><xf numFmtId=\"0\"/><xf numFmtId=\"14\"/></cellXfs></s>",
        "<s><sheetData><row r=\"1\"><c r=\"A1\" t=\"s\"><v>0</v></c></row>"
        "<row r=\"2\"><c r=\"A2\" s=\"1\"><v>46346</v></c></row></sheetData></s>"};
    QList<ZipEntry> entries;
    for (std::size_t i = 0; i < std::size(partNames); ++i)
        entries.append({partNames[i], i == fuzzed ? bytes : contents[i]});
    return zipOf(entries);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    const std::size_t fuzzed = input.takeByte() % std::size(partNames);
    const QByteArray archive = workbookWith(fuzzed, input.takeRest());
    expectSheetsOrAFailure([&] { return readXlsx(PackageParts(archive)); });
    return 0;
}

} // namespace norvane
