#include "NorvaneSMS/device/DocumentsFolder.h"

#include "foundation/PlatformHelpers.h"

#include <exception>

namespace norvane {

using namespace Qt::StringLiterals;

QString GetDocumentsFolder(const Platform &platform, FileSystem &files)
{
    try {
        QString documents = platform.documentsFolder();
        if (!StripNulls(documents).isEmpty()) {
            const QString folder = files.BuildPath(documents, u"Norvane"_s);
            if (!files.FolderExists(folder))
                files.CreateFolder(folder);
            return folder;
        }
    } catch (const std::exception &) {
        // browsing starts elsewhere
    }
    return platform.programFolder();
}

} // namespace norvane
