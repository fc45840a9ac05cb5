// Reads a spreadsheet for the console, which starts this program, and answers its questions on
// standard input by answers on standard output until the console goes away. Spreadsheets come from
// strangers: what a file does to the libraries that read it, it does to this process alone.

#include "NorvaneSheetReader/WorkbookReader.h"
#include "common/SheetFrames.h"
#include "common/platform/ProcessLimits.h"

#include <QFile>

#include <cstdio>
#include <cstdlib>

namespace norvane {

namespace {

constexpr quint64 memoryBytes = quint64{1} << 30;
constexpr quint32 processorSeconds = 25;

} // namespace

} // namespace norvane

using namespace norvane;

int main()
{
    limitThisProcess(memoryBytes, processorSeconds);
    QFile input;
    QFile output;
    if (!input.open(stdin, QIODevice::ReadOnly) || !output.open(stdout, QIODevice::WriteOnly))
        return EXIT_FAILURE;
    WorkbookReader reader;
    for (;;) {
        const QByteArray length = input.read(sizeof(quint32));
        if (length.size() != sizeof(quint32))
            return EXIT_SUCCESS; // the console has gone
        const quint32 size = SheetFrames::bodyLength(length);
        if (size > SheetFrames::maxBytes)
            return EXIT_FAILURE;
        const auto question = SheetFrames::decodeQuestion(input.read(size));
        if (!question)
            return EXIT_FAILURE;
        output.write(SheetFrames::framed(SheetFrames::encode(reader.answer(*question))));
        if (!output.flush())
            return EXIT_FAILURE;
    }
}
