#include "SheetExpectations.h"
#include "import/sheets/XlsxReader.h"

// A small workbook, of which one part is any bytes.

namespace {

const char *const PartNames[] = {
    "_rels/.rels",          "xl/workbook.xml", "xl/_rels/workbook.xml.rels",
    "xl/sharedStrings.xml", "xl/styles.xml",   "xl/sheet1.xml"};

class FuzzedParts : public PackageParts
{
public:
    FuzzedParts(int fuzzed, const QByteArray &bytes) : m_fuzzed(fuzzed), m_bytes(bytes) {}

    QByteArray part(const QString &name) const override
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
        for (int i = 0; i < static_cast<int>(std::size(PartNames)); ++i) {
            if (name == QLatin1String(PartNames[i]))
                return i == m_fuzzed ? m_bytes : contents[i];
        }
        return {};
    }

private:
    const int m_fuzzed;
    const QByteArray m_bytes;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    const int fuzzed = input.takeByte() % static_cast<int>(std::size(PartNames));
    const FuzzedParts parts(fuzzed, input.takeRest());
    expectSheetsOrAFailure([&] { return readXlsx(parts); });
    return 0;
}
