#pragma once

/// How the program ends.
namespace ExitCode {

inline constexpr int Done = 0;
inline constexpr int Failed = 1;
/// The store was written by a later version: to start again is no use.
inline constexpr int StoreTooNew = 4;

// --status --json
inline constexpr int EngineRunning = 0;
inline constexpr int EngineStopped = 1;
inline constexpr int EngineNotUp = 2;
inline constexpr int EngineInTrouble = 3;

} // namespace ExitCode
