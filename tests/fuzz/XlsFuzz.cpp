#include "NorvaneSheetReader/CompoundFile.h"
#include "NorvaneSheetReader/XlsReader.h"
#include "fuzz/SheetExpectations.h"

namespace norvane {

// Any bytes as a workbook in a compound file, and as a workbook's stream.

extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    expectSheetsOrAFailure(
        [&] { return CompoundFile::isOne(bytes) ? readXls(bytes) : readBiff(bytes); });
    return 0;
}

} // namespace norvane
