#include "NorvaneSheetReader/PackageParts.h"
#include "common/NumberedFailure.h"
#include "fuzz/FuzzTarget.h"

namespace norvane {

// Any bytes as the archive of a workbook: each of its parts comes out, within bounds, or fails.

extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    try {
        const PackageParts parts(bytes);
        for (const char *name : {"_rels/.rels", "xl/workbook.xml", "content.xml"}) {
            try {
                const QByteArray part = parts.bytes(QLatin1String(name));
                expectThat(part.isEmpty() || parts.contains(QLatin1String(name)),
                           "what comes out is in the index");
                expectThat(static_cast<quint64>(part.size()) <= PackageParts::maxPartBytes,
                           "a part is within its bound");
            } catch (const NumberedFailure &failure) {
                expectThat(!failure.description().isEmpty(), "a failure says what is wrong");
            }
        }
    } catch (const NumberedFailure &failure) {
        expectThat(!failure.description().isEmpty(), "a failure says what is wrong");
    }
    return 0;
}

} // namespace norvane
