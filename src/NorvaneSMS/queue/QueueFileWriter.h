#pragma once

#include "NorvaneSMS/queue/QueueAccess.h"
#include "contract/SMSList.h"

#include <QDateTime>
#include <QString>

namespace norvane {

// The writers of drop files. Each makes one new file under the first free name, from "sms.0"
// upward, in a folder that the caller has checked. If another writer takes the name first, there
// are three retries, each after a random pause.
//
// A failure is shown in a message box and not reported to the caller; what has been written by then
// stays.

/// Writes one record.
/// @param message  as it stands: it is normalised here
void WriteSMSFile(const QString &phone, const QDateTime &deliveryDate, const QString &message,
                  const QString &queueFolder, const QueueAccess &access = {});

/// Writes one record for each entry of `list`, all with the same date; an empty list makes an empty
/// file.
/// @param list  messages as they stand: they are normalised here
void WriteSMSFileBulk(const SMSList &list, const QDateTime &deliveryDate,
                      const QString &queueFolder, const QueueAccess &access = {});

} // namespace norvane
