#pragma once

#include "TovekSMService/store/StoreReader.h"

#include <QString>
#include <QTextStream>

#include <optional>

namespace norvane {

/// The outcome log as an administrator reads it.
namespace OutcomeReport {

enum class Format { Text, Csv };

std::optional<Format> formatNamed(const QString &name);

/// A day or a moment, "yyyy-MM-dd" or "yyyy-MM-ddTHH:mm:ss", as the log writes it.
std::optional<QString> moment(const QString &text);

/// A field of a CSV record (RFC 4180). What a spreadsheet would take for a formula begins with an
/// apostrophe; a phone number with its plus sign is none.
QString csvField(const QString &text);

/// One line with its end.
QString line(const OutcomeRow &row, Format format);

/// Writes the outcomes of `store` from `since` on.
[[nodiscard]] StoreResult<> write(const StoreReader &store, const QString &since, Format format,
                                  QTextStream &out);

} // namespace OutcomeReport

} // namespace norvane
