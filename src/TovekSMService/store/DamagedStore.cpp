#include "TovekSMService/store/DamagedStore.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maxNoteLength = 64 * 1024;

QString noteFile(const QString &folder)
{
    return folder + u"/damaged.note"_s;
}

QString freeName(const QString &storeFile, const QDateTime &now)
{
    const QString name = storeFile + u".damaged-"_s + now.toString(u"yyyyMMddTHHmmss"_s);
    QString free = name;
    for (int number = 2; QFile::exists(free); ++number)
        free = name + u'.' + QString::number(number);
    return free;
}

/// A second store may be damaged before anyone has heard of the first.
bool writeNote(const QString &folder, const QString &line)
{
    const QString before = DamagedStore::unacknowledged(folder).value_or(QString());
    QSaveFile note(noteFile(folder));
    return note.open(QIODevice::WriteOnly) &&
           note.write((before.isEmpty() ? line : before + u"; "_s + line).toUtf8()) > 0 &&
           note.commit();
}

bool moveIfThere(const QString &from, const QString &to)
{
    return !QFile::exists(from) || QFile::rename(from, to);
}

} // namespace

bool DamagedStore::setAside(const QString &storeFile, const QDateTime &now, const QString &reason)
{
    const QString kept = freeName(storeFile, now);
    // The note is first: however this is cut short, the loss is told. The file itself is last, as
    // a log that stays beside a new store would be taken for that one's.
    return writeNote(QFileInfo(storeFile).absolutePath(),
                     u"the store was damaged (%1) and is kept as %2; the queue and "
                     "the device settings begin anew"_s.arg(reason, QFileInfo(kept).fileName())) &&
           moveIfThere(storeFile + u"-wal"_s, kept + u"-wal"_s) &&
           moveIfThere(storeFile + u"-shm"_s, kept + u"-shm"_s) && moveIfThere(storeFile, kept);
}

void DamagedStore::finishMove(const QString &storeFile)
{
    const QFileInfo store(storeFile);
    const QDir folder = store.dir();
    for (const QString &suffix : {u"-wal"_s, u"-shm"_s}) {
        const QStringList moved = folder.entryList({store.fileName() + u".damaged-*"_s + suffix},
                                                   QDir::Files | QDir::Hidden);
        for (const QString &name : moved) {
            const QString kept = folder.filePath(name.chopped(suffix.size()));
            if (QFile::exists(kept))
                continue;
            moveIfThere(storeFile + u"-shm"_s, kept + u"-shm"_s);
            moveIfThere(storeFile, kept);
        }
    }
}

std::optional<QString> DamagedStore::unacknowledged(const QString &folder)
{
    QFile note(noteFile(folder));
    if (!note.open(QIODevice::ReadOnly))
        return std::nullopt;
    return QString::fromUtf8(note.read(maxNoteLength));
}

void DamagedStore::markAcknowledged(const QString &folder)
{
    QFile::remove(noteFile(folder));
}

} // namespace norvane
