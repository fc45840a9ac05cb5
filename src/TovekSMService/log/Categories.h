#pragma once

#include <QLoggingCategory>

namespace norvane {

// What the engine logs, by where it happens. A line bears the name of its category; debug lines are
// off until `EngineLog::install` is told to log them.

/// "engine.at": every line to and from the device, at debug level, with PIN and payload masked.
Q_DECLARE_LOGGING_CATEGORY(logAt)
/// "engine.device": the device as a whole: found, powered, lost.
Q_DECLARE_LOGGING_CATEGORY(logDevice)
/// "engine.store": the database and what can't be written to it.
Q_DECLARE_LOGGING_CATEGORY(logStore)
/// "engine.dispatch": what is sent, refused and tried again, and the settings for that.
Q_DECLARE_LOGGING_CATEGORY(logDispatch)
/// "engine.bus": the session bus and its callers.
Q_DECLARE_LOGGING_CATEGORY(logBus)
/// "engine.host": start and end of the process.
Q_DECLARE_LOGGING_CATEGORY(logHost)

} // namespace norvane
