#pragma once

#include "NorvaneSMS/platform/FileStreams.h"

namespace norvane {

/// What a writer waits with when another one was quicker.
class Waiting
{
public:
    Waiting() = default;
    Waiting(const Waiting &) = delete;
    Waiting &operator=(const Waiting &) = delete;
    virtual ~Waiting() = default;

    /// Lets the random numbers begin anew, at a place that the clock tells.
    virtual void seedFromClock() = 0;
    /// A random number from 0 to below 1.
    virtual double random() = 0;
    /// Blocks the calling thread.
    virtual void sleep(int milliseconds) = 0;
};

/// The waiting of a program that runs.
Waiting &realWait();

/// What drop files are written and read with. A test puts its own in the places of these.
struct QueueAccess
{
    FileStreams *files = &fileStreams();
    Waiting *waiting = &realWait();
};

} // namespace norvane
