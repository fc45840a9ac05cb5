#include "TovekSMService/admin/Backup.h"

#include "TovekSMService/platform/NewFile.h"
#include "TovekSMService/store/StoreReader.h"

#include <QFile>
#include <QFileInfo>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

Result<void, AdminFailure> failedWith(const QString &file, const PlatformFailure &failure)
{
    return failed(AdminFailure{file + u": "_s + failure.text});
}

} // namespace

Result<void, AdminFailure> backUp(const QString &storeFile, const QString &target)
{
    StoreReader store(storeFile);
    if (const StoreResult<> opened = store.open(); !opened)
        return failed(AdminFailure{opened.error().text()});
    const QString file = QFileInfo(target).absoluteFilePath();
    if (const auto made = NewFile::make(file); !made)
        return failedWith(file, made.error());
    if (const StoreResult<> copied = store.copyTo(file); !copied) {
        QFile::remove(file);
        return failed(AdminFailure{copied.error().text()});
    }
    if (const auto flushed = NewFile::flushFile(file); !flushed) {
        QFile::remove(file);
        return failedWith(file, flushed.error());
    }
    return {};
}

} // namespace norvane
