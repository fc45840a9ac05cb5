#include "TovekSMService/admin/Backup.h"

#include "TovekSMService/platform/NewFile.h"
#include "TovekSMService/store/StoreReader.h"

#include <QFile>
#include <QFileInfo>

QString backUp(const QString &storeFile, const QString &target)
{
    try {
        const StoreReader store(storeFile);
        const QString file = QFileInfo(target).absoluteFilePath();
        if (const QString reason = NewFile::make(file); !reason.isEmpty())
            return file + QStringLiteral(": ") + reason;
        try {
            store.copyTo(file);
        } catch (const StoreFailure &) {
            QFile::remove(file);
            throw;
        }
        if (const QString reason = NewFile::bringToDisk(file); !reason.isEmpty()) {
            QFile::remove(file);
            return file + QStringLiteral(": ") + reason;
        }
        return {};
    } catch (const StoreFailure &failure) {
        return failure.text();
    }
}
