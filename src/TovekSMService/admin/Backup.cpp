#include "TovekSMService/admin/Backup.h"

#include "TovekSMService/platform/NewFile.h"
#include "TovekSMService/store/StoreReader.h"

#include <QFile>
#include <QFileInfo>

namespace norvane {

using namespace Qt::StringLiterals;

QString backUp(const QString &storeFile, const QString &target)
{
    try {
        const StoreReader store(storeFile);
        const QString file = QFileInfo(target).absoluteFilePath();
        if (const QString reason = NewFile::make(file); !reason.isEmpty())
            return file + u": "_s + reason;
        try {
            store.copyTo(file);
        } catch (const StoreFailure &) {
            QFile::remove(file);
            throw;
        }
        if (const QString reason = NewFile::flushFile(file); !reason.isEmpty()) {
            QFile::remove(file);
            return file + u": "_s + reason;
        }
        return {};
    } catch (const StoreFailure &failure) {
        return failure.text();
    }
}

} // namespace norvane
