#include "TovekSMService/store/EngineFolder.h"

#include "TovekSMService/store/EngineName.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace norvane {

using namespace Qt::StringLiterals;

EngineFolder::EngineFolder(const EngineName &name)
    : m_folders(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                u"/TovekSMService"_s)
{
    if (!name.isNamed())
        return;
    m_folders << path() + u"/engines"_s;
    m_folders << path() + u'/' + name.text();
}

bool EngineFolder::make() const
{
    if (!QDir().mkpath(path()))
        return false;
    for (const QString &folder : m_folders)
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return true;
}

QString EngineFolder::storeFile() const
{
    return path() + u"/queue.sqlite"_s;
}

QString EngineFolder::lockFile() const
{
    return path() + u"/engine.lock"_s;
}

QString EngineFolder::logFile() const
{
    return path() + u"/engine.log"_s;
}

} // namespace norvane
