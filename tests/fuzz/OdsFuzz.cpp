#include "SheetExpectations.h"
#include "import/sheets/OdsReader.h"

// Any bytes as the content of an OpenDocument spreadsheet.

namespace {

class FuzzedContent : public PackageParts
{
public:
    explicit FuzzedContent(const QByteArray &bytes) : m_bytes(bytes) {}

    QByteArray part(const QString &name) const override
    {
        return name == QLatin1String("content.xml") ? m_bytes : QByteArray();
    }

private:
    const QByteArray m_bytes;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    const FuzzedContent parts(
        QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    expectSheetsOrAFailure([&] { return readOds(parts); });
    return 0;
}
