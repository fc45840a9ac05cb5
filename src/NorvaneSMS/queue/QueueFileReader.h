#pragma once

#include "NorvaneSMS/queue/QueueAccess.h"
#include "contract/SMSManager.h"

#include <QString>
#include <QStringList>

namespace norvane {

/// Hands the records of a drop file to the engine, in their order, and takes the file away,
/// whatever it held. A short tail is dropped. What a writer adds meanwhile is read as well, as far
/// as a file that grows is followed.
///
/// Any failure, be it of the file, of a record or of the engine, silently ends the reading: the
/// records before it are with the engine, those after it are lost, and the file is removed.
/// @param messageFooter  put behind each message
/// @throws NumberedFailure if the file can't be taken away; 53 if it is gone already
void ImportSMSFile(const QString &path, SMSManager &engine, const QString &messageFooter,
                   const QueueAccess &access = {});

/// Does the same for one file after the other, at less cost: their records reach the engine in
/// batches, and a file is removed once all of its records are on the engine's disk. Nothing is read
/// after a file that can't be removed, unless that could not be foreseen: the files that were read
/// together with it are queued and removed then.
/// @throws NumberedFailure for the first one that can't be taken away
void ImportSMSFiles(const QStringList &paths, SMSManager &engine, const QString &messageFooter,
                    const QueueAccess &access = {});

} // namespace norvane
