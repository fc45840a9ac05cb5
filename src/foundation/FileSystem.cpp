#include "foundation/FileSystem.h"

#include "common/FailureNumbers.h"

#include <cerrno>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {
constexpr QChar separator = u'/';
}

FileSystem::FileSystem(PlatformFiles &files) : m_files(files) {}

QString FileSystem::BuildPath(const QString &path, const QString &name) const
{
    if (path.isEmpty() || name.isEmpty())
        return path + name;
    const bool closed = path.endsWith(separator);
    const bool opened = name.startsWith(separator);
    if (closed && opened)
        return path + name.sliced(1);
    return closed || opened ? path + name : path + separator + name;
}

bool FileSystem::FileExists(const QString &path) const
{
    return m_files.kind(path) == PlatformFiles::Kind::File;
}

bool FileSystem::FolderExists(const QString &path) const
{
    return m_files.kind(path) == PlatformFiles::Kind::Folder;
}

QString FileSystem::GetDriveName(const QString & /*path*/) const
{
    return {};
}

void FileSystem::CreateFolder(const QString &path)
{
    const QString source = u"FileSystem::CreateFolder"_s;
    if (path.isEmpty())
        Failure::raise(Failure::InvalidProcedureCall, source);
    if (path.contains(QChar::Null))
        Failure::raise(Failure::BadFileNameOrNumber, source);
    const int error = m_files.makeFolder(path, PlatformFiles::Access::Usual);
    if (error == ENOENT)
        Failure::raise(Failure::PathNotFound, source);
    if (error != 0)
        Failure::raiseErrno(error, source);
}

} // namespace norvane
