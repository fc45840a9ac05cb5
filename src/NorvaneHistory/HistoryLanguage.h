#pragma once

#include <QString>

namespace norvane {

class PlatformHelpers;

namespace HistoryLanguage {

/// The language of the user's locale if there is a file for it, else Spanish: "ESN", "CAT" or
/// "PTG".
QString chosen(const PlatformHelpers &helpers);

/// Loads that language's file; a failure is shown in a box.
bool load(const PlatformHelpers &helpers);

/// The toolkit's name for a language: "es", "ca" or "pt_BR", the one Portuguese that it has.
QString toolkitName(const QString &language);

} // namespace HistoryLanguage

} // namespace norvane
