#pragma once

#include "NorvaneSMS/platform/FolderListing.h"

#include <QString>
#include <QStringList>

namespace norvane {

enum class Descent { StayInFolder, IntoSubfolders };

struct FileSearchResult
{
    qint32 Count = 0;
    QStringList Files; ///< full paths, in the order of the file system
};

/// Whether `name` matches `pattern`, in which "*" stands for any characters and "?" for one.
/// Capital and small letters are the same; letters that only sound so, as "s" and the long "ſ", are
/// not.
bool matchesPattern(QStringView name, QStringView pattern);

/// Adds the regular files of a folder whose names match `pattern` to `result`; links and whatever
/// else is no regular file are left out. Both counters and the result start at 0 and empty, and are
/// carried on into sub-folders. A folder that can't be listed adds nothing. Any failure, the
/// overflow of a counter among them, is shown in a message box and ends the folder it happened in.
/// @param folderPath  given a "/" at its end if it has none
/// @return the sum over all files: the low half of the size as a signed number, minus the high half
qint64 FindFiles(QString &folderPath, const QString &pattern, qint16 &fileCount,
                 qint16 &folderCount, FileSearchResult &result, Descent descent,
                 const FolderListing &listing = folderListing());

} // namespace norvane
