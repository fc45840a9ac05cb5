#include "foundation/platform/Processes.h"

#include <QFile>

namespace norvane {

using namespace Qt::StringLiterals;

bool isProcessRunning(qint64 process)
{
    // "1234 (name) S ...": the name may hold anything, the state stands behind it.
    QFile status(u"/proc/%1/stat"_s.arg(process));
    if (!status.open(QIODevice::ReadOnly))
        return false;
    const QByteArray line = status.readAll();
    const qsizetype state = line.lastIndexOf(')') + 2;
    return state < line.size() && line.at(state) != 'Z' && line.at(state) != 'X';
}

} // namespace norvane
