#include "NorvaneSMS/platform/Processes.h"

#include <QFile>

bool isProcessRunning(qint64 process)
{
    // "1234 (name) S ...": the name may hold anything, the state stands behind it.
    QFile status(QStringLiteral("/proc/%1/stat").arg(process));
    if (!status.open(QIODevice::ReadOnly))
        return false;
    const QByteArray line = status.readAll();
    const qsizetype state = line.lastIndexOf(')') + 2;
    return state < line.size() && line.at(state) != 'Z' && line.at(state) != 'X';
}
