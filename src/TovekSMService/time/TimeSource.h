#pragma once

#include <Qt>

#include <functional>
#include <memory>

namespace norvane {

/// How time passes for everything that waits: the machine's monotonic clock, or one that a test
/// turns. Nothing in the engine asks the machine for it in another way.
class TimeSource
{
public:
    /// Calls its function once, from the event loop, when its time is over.
    class Alarm
    {
    public:
        Alarm() = default;
        Alarm(const Alarm &) = delete;
        Alarm &operator=(const Alarm &) = delete;
        virtual ~Alarm() = default;

        /// Begins anew if it is set already.
        virtual void set(int milliseconds, Qt::TimerType type) = 0;
        virtual void cancel() = 0;
        virtual bool isSet() const = 0;
    };

    TimeSource() = default;
    TimeSource(const TimeSource &) = delete;
    TimeSource &operator=(const TimeSource &) = delete;
    virtual ~TimeSource() = default;

    /// Nanoseconds since a moment that stays the same while the program runs; never goes back.
    virtual qint64 nanoseconds() const = 0;
    /// @param due  may set the alarm anew, and delete it
    virtual std::unique_ptr<Alarm> makeAlarm(std::function<void()> due) = 0;

    /// The machine's.
    static TimeSource &system();
};

} // namespace norvane
