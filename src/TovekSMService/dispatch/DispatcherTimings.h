#pragma once

#include "TovekSMService/dispatch/OutcomePruner.h"
#include "TovekSMService/dispatch/RunPace.h"
#include "contract/BusTypes.h"

namespace norvane {

/// Time limits of the dispatcher, in milliseconds.
struct DispatcherTimings
{
    /// Within this time TestDevice has its answer, whatever the device does.
    int testAnswerMs = Bus::testDeviceAnswer;
    /// For how long a device that has passed a test stays open for the start behind the test, and
    /// isn't reported anew.
    int keepTestedMs = 5000;
    /// Between two attempts to write to the store.
    int storeRetryMs = 500;
    /// For how long the store may fail until that is reported, and until it is opened anew, again
    /// and again.
    int storeFaultMs = 10'000;
    /// Between two looks at the queue: the wall clock may be set meanwhile.
    int maxSleepMs = 1000;
    /// For how long a device must be ready until its trouble is forgotten.
    int steadyMs = 60'000;
    /// Between two questions for the signal and the like, while the device is ready.
    int conditionMs = 60'000;
    /// After this time, what a run has not handed over waits again: the device has become slow.
    /// Where commits are slow, and runs longer therefore, it is longer.
    int runLateMs = 20;
    /// Of engines that share a queue: between two signs of life, and from a change until the others
    /// are told of it.
    int lifeMs = 5000;
    int newsMs = 50;
    /// For which the database is waited for at most: an engine that shows no life is taken over.
    int callMs = 20'000;
    RunPace::Limits run;
    /// At which old outcomes are forgotten.
    OutcomePruner::Pace pruning;
};

} // namespace norvane
