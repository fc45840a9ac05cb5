#pragma once

namespace norvane {

/// How the program ends.
namespace ExitCode {

inline constexpr int done = 0;
inline constexpr int failed = 1;
/// The store was written by a later version: to start again is no use.
inline constexpr int storeTooNew = 4;

// --status --json
inline constexpr int engineRunning = 0;
inline constexpr int engineStopped = 1;
inline constexpr int engineNotUp = 2;
inline constexpr int engineFaulty = 3;

} // namespace ExitCode

} // namespace norvane
