#include "TovekSMService/dispatch/EngineSettings.h"

#include "fuzz/FuzzTarget.h"

namespace norvane {

// Any bytes as the engine's settings file: every number within its bounds.

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    const EngineSettings settings = EngineSettings::parse(input.takeRest());
    for (const EngineNumber &number : engineNumbers()) {
        const int value = settings.*number.value;
        const bool isDefault = value == EngineSettings().*number.value;
        const bool isInBounds = value >= number.least && value <= number.max;
        expectThat(isInBounds || isDefault || (number.zeroIsOff && value == 0),
                   "a number is within its bounds");
    }
    expectThat(settings.maxDelay >= settings.firstDelay, "the longest delay is the longest");
    expectThat(settings.modemTimings().sendMs > 0, "the wait for an answer is above 0");
    const RetryPolicy retries([] { return 0.999; }, settings.retryTimes());
    for (const int attempts : {1, 2, 50, 1'000'000}) {
        const qint64 delay = retries.messageDelay(attempts);
        expectThat(delay >= settings.firstDelay, "a delay isn't below the shortest");
        expectThat(delay <= qint64{settings.maxDelay} * (100 + settings.jitter) / 100 + 1,
                   "a delay isn't above the longest with its jitter");
    }
    return 0;
}

} // namespace norvane
