#include "NorvaneSMS/app/mode/DataFolder.h"

#include "common/FailureNumbers.h"
#include "foundation/FailureTexts.h"
#include "foundation/FileSystem.h"
#include "foundation/IniFile.h"

#include <QStringList>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString expanded(const PlatformHelpers &helpers, const FileSystem &files)
{
    QString path = u"%CommonAppDataFolder%/KELD/Norvane"_s;
    path.replace(u"%PrimaryVolumePath%"_s, files.GetDriveName(helpers.GetProgramFilesFolder()));
    path.replace(u"%CommonAppDataFolder%"_s, helpers.GetCommonAppDataFolder());
    return path;
}

QString withoutSeparator(const QString &path)
{
    return path.size() > 1 && path.endsWith(u'/') ? path.chopped(1) : path;
}

void makeFolder(const QString &path, FileSystem &files)
{
    try {
        files.CreateFolder(path);
    } catch (const NumberedFailure &failure) {
        // Another console that starts at this moment may have made it first.
        if (failure.number() != Failure::FileAlreadyExists || !files.FolderExists(path))
            throw NumberedFailure(failure.number(), failure.source(),
                                  FailureText::dataFolderNotMade(withoutSeparator(path)));
    }
}

void makeTree(const QString &path, FileSystem &files)
{
    QString prefix;
    for (const QString &part : path.split(u'/')) {
        prefix += part + u'/';
        if (!files.FolderExists(prefix))
            makeFolder(prefix, files);
    }
}

} // namespace

bool ResolveDataFolder(const PlatformHelpers &helpers, QString &dataFolder, PlatformFiles &platform)
{
    FileSystem files(platform);
    const QString defaultFolder = expanded(helpers, files);
    makeTree(defaultFolder, files);

    const QString configuration = files.BuildPath(helpers.programFolder(), u"Norvane.ini"_s);
    if (!files.FileExists(configuration))
        return false;
    dataFolder = ReadIniValue(u"General"_s, u"DataFolder"_s, defaultFolder, configuration);
    if (dataFolder.isEmpty())
        dataFolder = defaultFolder;
    return true;
}

} // namespace norvane
