#pragma once

#include "TovekSMService/store/StoreFailure.h"

class QTextStream;

namespace norvane {

class Store;
struct CommandLine;
struct EngineSettings;

// What an administrator asks about the queue that several engines share.

/// Lists the engines, or retires one.
/// @return the program's exit code
int askEngines(const CommandLine &commandLine, QTextStream &out);

/// Opens the database of a store that is shared, as the engine itself does. For an engine that
/// isn't up.
[[nodiscard]] StoreResult<> openQueue(Store &store, const EngineSettings &settings);

/// Carries the waiting messages to the other side, if that is asked for, and says how many.
[[nodiscard]] StoreResult<> moveQueue(Store &store, const CommandLine &commandLine,
                                      QTextStream &out);

} // namespace norvane
