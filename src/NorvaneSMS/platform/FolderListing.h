#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace norvane {

enum class EntryKind { File, Folder, Other };

/// What a folder holds, in the order of the file system.
class FolderListing
{
public:
    FolderListing() = default;
    FolderListing(const FolderListing &) = delete;
    FolderListing &operator=(const FolderListing &) = delete;
    virtual ~FolderListing() = default;

    struct Entry
    {
        QString name;
        quint64 size = 0; ///< in bytes; 0 if unknown
    };

    /// All entries of a folder but "." and ".."; none if it can't be listed. A name that can't be
    /// written as text is left out, as its file could not be opened by it.
    virtual QList<Entry> entries(const QString &folderPath) const = 0;

    /// What stands at `path`: a regular file, a folder or anything else, links included. Nothing if
    /// that can't be read.
    virtual std::optional<EntryKind> kind(const QString &path) const = 0;
};

/// The platform's own listing.
const FolderListing &folderListing();

} // namespace norvane
