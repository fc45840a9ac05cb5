#pragma once

#include "engine/contract/BusTypes.h"

/// Time limits of the dispatcher, in milliseconds.
struct DispatcherTimings
{
    /// Within this time TestDevice has its answer, whatever the device does.
    int testAnswerMs = Bus::TestDeviceAnswer;
    /// Between two tries to bring something to disk.
    int storeAgainMs = 500;
    /// Between two looks at the queue: the wall clock may be set meanwhile.
    int longestSleepMs = 1000;
    /// For how long a device must be ready until its trouble is forgotten.
    int steadyMs = 60'000;
};
