#pragma once

#include "TovekSMService/admin/ReportLines.h"
#include "TovekSMService/store/ReportSource.h"

#include <QString>
#include <QTextStream>

namespace norvane {

/// The outcome log as an administrator reads it.
namespace OutcomeReport {

/// One line with its end.
QString line(const OutcomeRow &row, ReportLines::Format format);

/// Writes the outcomes of `store` from `since` on.
[[nodiscard]] StoreResult<> write(const ReportSource &store, const QString &since,
                                  ReportLines::Format format, QTextStream &out);

} // namespace OutcomeReport

} // namespace norvane
