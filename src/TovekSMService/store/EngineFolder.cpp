#include "TovekSMService/store/EngineFolder.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace norvane {

using namespace Qt::StringLiterals;

QString EngineFolder::path()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           u"/TovekSMService"_s;
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
    return folder + u"/queue.sqlite"_s;
}

QString EngineFolder::lockFile(const QString &folder)
{
    return folder + u"/engine.lock"_s;
}

QString EngineFolder::logFile(const QString &folder)
{
    return folder + u"/engine.log"_s;
}

} // namespace norvane
