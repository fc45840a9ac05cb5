#include "NorvaneSheetReader/OdsReader.h"
#include "NorvaneSheetReader/SheetFile.h"
#include "fuzz/SheetExpectations.h"

namespace norvane {

// Any bytes as the content of an OpenDocument spreadsheet.

extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    const QByteArray archive =
        zipOf({{"content.xml",
                QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size))}});
    expectSheetsOrAFailure([&] { return readOds(PackageParts(archive)); });
    return 0;
}

} // namespace norvane
