#include "NorvaneSMS/queue/FindFiles.h"

#include "common/FailureNumbers.h"
#include "foundation/MessageBoxes.h"
#include "foundation/PlatformHelpers.h"

#include <exception>
#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr QChar separator = u'/';

/// Everything that one search hands on from folder to folder.
struct Search
{
    const QString &pattern;
    qint16 &fileCount;
    qint16 &folderCount;
    FileSearchResult &result;
    Descent descent;
    const FolderListing &listing;
};

void increment(qint16 &counter)
{
    if (counter == std::numeric_limits<qint16>::max())
        Failure::raise(Failure::Overflow, u"FindFiles"_s);
    ++counter;
}

/// The number in decimal, with a blank in the place of the sign when there is none.
QString signedText(qint32 number)
{
    return (number < 0 ? QString() : u" "_s) + QString::number(number);
}

qint64 sizeTerm(quint64 size)
{
    const auto low = static_cast<qint32>(static_cast<quint32>(size));
    const auto high = static_cast<qint32>(static_cast<quint32>(size >> 32));
    return qint64{low} - qint64{high};
}

// An entry whose kind can't be read counts as a folder, so that a file which another machine has
// just taken away isn't listed.
EntryKind kindOf(const Search &search, const QString &path)
{
    return search.listing.kind(path).value_or(EntryKind::Folder);
}

/// The entry's name as it is used; empty for an entry to be skipped. A name that trimming turns
/// into the folder itself must not be followed.
QString usableName(const FolderListing::Entry &entry)
{
    QString raw = entry.name;
    const QString name = StripNulls(raw);
    return name == u"." || name == u".." ? QString() : name;
}

QStringList subfolders(const Search &search, const QString &folderPath)
{
    if (search.descent == Descent::StayInFolder)
        return {};
    QStringList names;
    for (const FolderListing::Entry &entry : search.listing.entries(folderPath)) {
        const QString name = usableName(entry);
        if (name.isEmpty() || kindOf(search, folderPath + name) != EntryKind::Folder)
            continue;
        names.append(name);
        increment(search.folderCount);
    }
    return names;
}

void listFiles(const Search &search, const QString &folderPath, qint64 &sum)
{
    for (const FolderListing::Entry &entry : search.listing.entries(folderPath)) {
        const QString name = usableName(entry);
        if (name.isEmpty() || !matchesPattern(entry.name, search.pattern))
            continue;
        const QString path = folderPath + name;
        if (kindOf(search, path) != EntryKind::File)
            continue;
        sum += sizeTerm(entry.size);
        increment(search.fileCount);
        search.result.Files.append(path);
        search.result.Count = search.fileCount;
    }
}

qint64 searchFolder(const Search &search, QString &folderPath)
{
    qint64 sum = 0;
    try {
        if (!folderPath.endsWith(separator))
            folderPath += separator;
        const QStringList names = subfolders(search, folderPath);
        listFiles(search, folderPath, sum);
        for (const QString &name : names) {
            QString inner = folderPath + name + separator;
            sum += searchFolder(search, inner);
        }
    } catch (...) {
        const NumberedFailure failure = Failure::fromException(std::current_exception());
        messageBoxes().show(signedText(failure.number()) + u" - "_s + failure.description(),
                            MessageBoxes::Icon::Critical, MessageBoxes::Buttons::Ok, u"Error"_s);
    }
    return sum;
}

} // namespace

bool matchesPattern(QStringView name, QStringView pattern)
{
    // On a mismatch the last "*" takes one character more; earlier ones need never be changed.
    qsizetype n = 0;
    qsizetype p = 0;
    qsizetype star = -1;
    qsizetype starName = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            star = p++;
            starName = n;
        } else if (p < pattern.size() &&
                   (pattern[p] == u'?' || pattern[p].toLower() == name[n].toLower())) {
            ++p;
            ++n;
        } else if (star >= 0) {
            p = star + 1;
            n = ++starName;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == u'*')
        ++p;
    return p == pattern.size();
}

qint64 FindFiles(QString &folderPath, const QString &pattern, qint16 &fileCount,
                 qint16 &folderCount, FileSearchResult &result, Descent descent,
                 const FolderListing &listing)
{
    return searchFolder({pattern, fileCount, folderCount, result, descent, listing}, folderPath);
}

} // namespace norvane
