#include "NorvaneSMS/device/DocumentsFolder.h"

#include "foundation/PlatformHelpers.h"

#include <exception>

QString GetDocumentsFolder(const Platform &platform, FileSystem &files)
{
    try {
        QString documents = platform.documentsFolder();
        if (!StripNulls(documents).isEmpty()) {
            const QString folder = files.BuildPath(documents, QStringLiteral("Norvane"));
            if (!files.FolderExists(folder))
                files.CreateFolder(folder);
            return folder;
        }
    } catch (const std::exception &) {
        // browsing starts elsewhere
    }
    return platform.programFolder();
}
