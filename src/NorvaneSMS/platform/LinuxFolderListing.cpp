#include "NorvaneSMS/platform/FolderListing.h"

#include <QFile>

#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace norvane {

namespace {

struct CloseFolder
{
    void operator()(DIR *folder) const { ::closedir(folder); }
};

quint64 sizeOf(DIR *folder, const char *name)
{
    struct stat status = {};
    if (::fstatat(::dirfd(folder), name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return 0;
    return static_cast<quint64>(status.st_size);
}

class LinuxFolderListing : public FolderListing
{
public:
    QList<Entry> entries(const QString &folderPath) const override
    {
        QList<Entry> result;
        const std::unique_ptr<DIR, CloseFolder> folder(
            ::opendir(QFile::encodeName(folderPath).constData()));
        if (!folder)
            return result;
        while (const dirent *entry = ::readdir(folder.get())) {
            const QByteArray raw(entry->d_name);
            const QString name = QFile::decodeName(raw);
            // A name that isn't text can't be passed on. Nor can one that ends in a blank: without
            // the blank it would name another file.
            if (raw == "." || raw == ".." || QFile::encodeName(name) != raw || name.endsWith(u' '))
                continue;
            result.append({name, sizeOf(folder.get(), entry->d_name)});
        }
        return result;
    }

    std::optional<EntryKind> kind(const QString &path) const override
    {
        struct stat status = {};
        if (::lstat(QFile::encodeName(path).constData(), &status) != 0)
            return std::nullopt;
        if (S_ISREG(status.st_mode))
            return EntryKind::File;
        return S_ISDIR(status.st_mode) ? EntryKind::Folder : EntryKind::Other;
    }
};

} // namespace

const FolderListing &folderListing()
{
    static const LinuxFolderListing listing;
    return listing;
}

} // namespace norvane
