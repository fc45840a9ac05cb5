#pragma once

#include "TovekSMService/admin/ReportLines.h"
#include "TovekSMService/store/ReportSource.h"

#include <QString>
#include <QTextStream>

namespace norvane {

/// The received messages as an administrator reads them.
namespace InboxReport {

/// One line with its end.
QString line(const ReceivedMessage &message, ReportLines::Format format);

/// Writes what `store` received from `since` on.
[[nodiscard]] StoreResult<> write(const ReportSource &store, const QString &since,
                                  ReportLines::Format format, QTextStream &out);

} // namespace InboxReport

} // namespace norvane
