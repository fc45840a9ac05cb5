#pragma once

#include <QtGlobal>

#include <functional>

namespace norvane {

/// The numbers of a RetryPolicy.
struct RetryTimes
{
    /// How often a message is tried before a temporary failure becomes final.
    int maxAttempts = 4;
    /// Between two attempts of a message, in seconds.
    qint64 minDelay = 30;
    qint64 maxDelay = 3600;
    /// Between two openings of the device, in milliseconds.
    int minReopenMs = 1000;
    int maxReopenMs = 60'000;
    /// How much is added to a delay of a message at random, in percent of it, at most.
    int jitterPercent = 25;
};

/// When something that failed is tried again, and how often. Whether a message is sent again at all
/// is decided by Sender, for the device by DeviceBreaker.
class RetryPolicy
{
public:
    /// Gives a number in [0, 1).
    using Random = std::function<double()>;

    explicit RetryPolicy(Random random, const RetryTimes &times = {});

    /// Whether a message that has failed `attempts` times is tried again.
    bool mayRetry(int attempts) const { return attempts < m_times.maxAttempts; }

    /// Seconds until the next attempt of a message that has failed `attempts` times: the shortest
    /// delay doubling up to the longest, and the jitter.
    qint64 messageDelay(int attempts) const;

    /// Milliseconds until the device is opened again after `failures` failures in a row: the
    /// shortest delay doubling up to the longest.
    int reopenDelay(int failures) const;

private:
    Random m_random;
    RetryTimes m_times;
};

} // namespace norvane
