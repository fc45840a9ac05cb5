#include "TovekSMService/store/EngineFolder.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

QString EngineFolder::path()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/TovekSMService");
}

QString EngineFolder::make()
{
    const QString folder = path();
    if (!QDir().mkpath(folder))
        return {};
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return folder;
}

QString EngineFolder::storeFile(const QString &folder)
{
    return folder + QStringLiteral("/queue.sqlite");
}

QString EngineFolder::lockFile(const QString &folder)
{
    return folder + QStringLiteral("/engine.lock");
}

QString EngineFolder::logFile(const QString &folder)
{
    return folder + QStringLiteral("/engine.log");
}
