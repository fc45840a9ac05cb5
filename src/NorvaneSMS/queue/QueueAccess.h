#pragma once

#include "NorvaneSMS/platform/FileStreams.h"

namespace norvane {

/// How a writer waits after another one has taken the name first.
class Waiting
{
public:
    Waiting() = default;
    Waiting(const Waiting &) = delete;
    Waiting &operator=(const Waiting &) = delete;
    virtual ~Waiting() = default;

    /// Seeds the random numbers from the clock.
    virtual void seedFromClock() = 0;
    /// A random number from 0 to below 1.
    virtual double random() = 0;
    /// Blocks the calling thread.
    virtual void sleep(int milliseconds) = 0;
};

/// The waiting of a program that runs.
Waiting &realWait();

/// What drop files are written and read with. A test replaces it.
struct QueueAccess
{
    FileStreams *files = &fileStreams();
    Waiting *waiting = &realWait();
};

} // namespace norvane
