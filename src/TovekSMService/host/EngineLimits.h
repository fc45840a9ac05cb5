#pragma once

#include "contract/EngineStartLimits.h"

namespace norvane {

/// Time limits of the engine as a program, in milliseconds.
struct EngineLimits
{
    /// For the part in progress, whatever makes the engine end: a signal or the loss of its bus.
    int endMs = Bus::engineEndLimit;
    /// For an engine that holds the lock and is not on the bus: it is ending, or coming up.
    int lockMs = Bus::engineEndLimit + 5'000;
    /// Between two tries for the lock.
    int lockIntervalMs = 100;
    /// Between two tries to open the store.
    int openAgainMs = 2'000;
    /// Between two looks whether the part in progress is over.
    int partIntervalMs = 500;
};

} // namespace norvane
