#include "NorvaneSMS/console/PollingTick.h"

#include "NorvaneSMS/queue/FindFiles.h"
#include "NorvaneSMS/queue/QueueDropFile.h"
#include "NorvaneSMS/queue/QueueFileReader.h"
#include "foundation/FileSystem.h"
#include "foundation/ui/FatalReport.h"

#include <QCoreApplication>

#include <utility>

namespace norvane {

namespace {

/// Events are processed after the first of so many files.
constexpr qsizetype filesBetweenEvents = 20;

} // namespace

PollingTick::PollingTick(const std::unique_ptr<SMSManager> &engine, const QueueAccess &access,
                         IsPolled isPolled)
    : m_engine(engine), m_access(access), m_isPolled(std::move(isPolled))
{}

PollingTick::Outcome PollingTick::run(const FileSystem &files, QString folder,
                                      const QString &messageFooter)
{
    // While the fatal report is open the engine may be the very thing that failed: a file that is
    // taken then could be lost, and waits for the next server instead.
    if (mbImporting || FatalReport::isShown())
        return Outcome::Skipped;
    mbImporting = true;
    const bool exists = files.FolderExists(folder);
    if (exists)
        importFolder(folder, messageFooter);
    mbImporting = false;
    return exists ? Outcome::Done : Outcome::FolderMissing;
}

void PollingTick::importFolder(const QString &folder, const QString &messageFooter)
{
    QString searched = folder;
    qint16 fileCount = 0;
    qint16 folderCount = 0;
    FileSearchResult found;
    FindFiles(searched, QString::fromUtf16(QueueDropFile::pattern), fileCount, folderCount, found,
              Descent::StayInFolder);
    importFiles(found.Files, folder, messageFooter);
}

void PollingTick::importFiles(const QStringList &files, const QString &folder,
                              const QString &messageFooter)
{
    // The files from one processing of events to the next are taken together.
    qsizetype next = 0;
    while (next < files.size()) {
        // While events were processed or a box was open, the operator may have changed the mode or
        // the folder, or closed the console: then the rest is left for others.
        if (!m_isPolled(folder))
            return;
        const qsizetype count = qMin(next == 0 ? 1 : filesBetweenEvents, files.size() - next);
        ImportSMSFiles(files.sliced(next, count), *m_engine, messageFooter, m_access);
        next += count;
        if ((next - 1) % filesBetweenEvents == 0)
            QCoreApplication::processEvents();
    }
}

} // namespace norvane
