#pragma once

#include <QString>

namespace norvane {

/// Where the engine keeps what is its own: `$XDG_DATA_HOME/TovekSMService`, for its owner alone.
namespace EngineFolder {

QString path();

/// Makes the folder if need be.
/// @return its path; empty when it can't be made
QString make();

QString storeFile(const QString &folder);
QString lockFile(const QString &folder);
/// Where a console that starts the engine leads its standard error.
QString logFile(const QString &folder);

} // namespace EngineFolder

} // namespace norvane
