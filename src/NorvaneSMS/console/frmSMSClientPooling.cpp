#include "NorvaneSMS/console/TerminalView.h"
#include "NorvaneSMS/console/frmSMSClient.h"
#include "NorvaneSMS/queue/FindFiles.h"
#include "NorvaneSMS/queue/QueueDropFile.h"
#include "NorvaneSMS/queue/QueueFileReader.h"
#include "foundation/CTimerMM.h"
#include "foundation/Globals.h"
#include "foundation/ui/FatalReport.h"

#include <QCoreApplication>

namespace {

constexpr qint32 PoolingInterval = 10'000; // milliseconds
constexpr qint32 PoolingResolution = 1;
constexpr qint32 PeriodicEvents = 1;

/// Events are processed after the first of so many files.
constexpr qsizetype FilesBetweenEvents = 20;

} // namespace

void frmSMSClient::startPooling()
{
    // A timer that is replaced while it runs stays registered and ticks on, unheard.
    if (moImportSMSPooling)
        moImportSMSPooling->disconnect(this);
    moImportSMSPooling = CTimerMM::create();
    connect(moImportSMSPooling.get(), &CTimerMM::Timer, this, [this](qint32 lMilliseconds) {
        try {
            moImportSMSPooling_Timer(lMilliseconds);
        } catch (...) { // ends this tick and nothing else; mbImporting stays as the tick left it
        }
    });
    moImportSMSPooling->setEnabled(false);
    moImportSMSPooling->setInterval(PoolingInterval);
    moImportSMSPooling->setResolution(PoolingResolution);
    moImportSMSPooling->setEventType(PeriodicEvents);
    moImportSMSPooling->setEnabled(true);
}

void frmSMSClient::releasePooling()
{
    if (!moImportSMSPooling)
        return;
    moImportSMSPooling->setEnabled(false);
    moImportSMSPooling->disconnect(this);
    moImportSMSPooling.reset();
}

void frmSMSClient::moImportSMSPooling_Timer(qint32 /*lMilliseconds*/)
{
    // While the fatal report is open the engine may be the very thing that failed: a file that is
    // taken then could be lost, and waits for the next server instead.
    if (mbImporting || FatalReport::isShown())
        return;
    mbImporting = true;
    if (!moFileSystem->FolderExists(msQueueFolder)) {
        m_ui.txtTerm->appendLine(GS(3760050));
        mbImporting = false;
        return;
    }
    const QString polled = msQueueFolder;
    QString folder = polled;
    qint16 fileCount = 0;
    qint16 folderCount = 0;
    FileSearchResult found;
    FindFiles(folder, QString::fromUtf16(QueueDropFile::Pattern), fileCount, folderCount, found,
              Descent::StayInFolder);
    importFiles(found.Files, polled);
    mbImporting = false;
}

void frmSMSClient::importFiles(const QStringList &files, const QString &polledFolder)
{
    // The files from one processing of events to the next are taken together.
    qsizetype next = 0;
    while (next < files.size()) {
        // What the operator did while events were processed, or a box was open, may have made the
        // rest none of this console's business.
        if (m_unloaded || !mbServerMode || msQueueFolder != polledFolder)
            return;
        const qsizetype count = qMin(next == 0 ? 1 : FilesBetweenEvents, files.size() - next);
        ImportSMSFiles(files.sliced(next, count), *moSMSManager, msMessageFooter,
                       m_environment.queueAccess);
        next += count;
        if ((next - 1) % FilesBetweenEvents == 0)
            QCoreApplication::processEvents();
    }
}
