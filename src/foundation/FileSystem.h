#pragma once

#include "common/platform/PlatformFiles.h"

#include <QString>

namespace norvane {

/// Paths, tests for files and folders, and folder creation, for the console and its dialogs.
class FileSystem
{
public:
    explicit FileSystem(PlatformFiles &files = platformFiles());

    /// `path` and `name` with exactly one separator between them; with either of them empty, the
    /// other one.
    QString BuildPath(const QString &path, const QString &name) const;

    /// Whether `path` is a file, or a link to one; a folder is none.
    bool FileExists(const QString &path) const;
    bool FolderExists(const QString &path) const;

    /// The drive that `path` lies on. This platform has one tree for all, so it is empty.
    QString GetDriveName(const QString &path) const;

    /// Makes one folder.
    /// @throws NumberedFailure 58 if something of that name exists, 76 if the folder above it
    ///         doesn't, 5 for an empty path, 52 for a name that can't be, else by the platform's
    ///         error (70, 61 ...)
    void CreateFolder(const QString &path);

private:
    PlatformFiles &m_files;
};

} // namespace norvane
