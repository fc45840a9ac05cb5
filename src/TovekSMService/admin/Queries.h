#pragma once

namespace norvane {

struct CommandLine;

/// Carries out what `commandLine` asks, over the bus where an engine runs, else in the store
/// itself.
/// @return the program's exit code
int carryOut(const CommandLine &commandLine);

} // namespace norvane
