#pragma once

#include "TovekSMService/log/EngineLog.h"

#include <QByteArray>

#include <optional>

namespace norvane {

class EngineName;

/// How much is logged where the command line doesn't tell, as with an engine that the bus or a
/// console starts: `Level` of the section `Log` in the settings file.
namespace LogLevelSetting {

/// @param settings  what the file holds
/// @return nothing if it names no level; one that doesn't exist is logged
std::optional<EngineLog::Level> parse(const QByteArray &settings);

/// That of the engine's settings file. A file that can't be read is as one that names none.
std::optional<EngineLog::Level> load(const EngineName &name);

} // namespace LogLevelSetting

} // namespace norvane
