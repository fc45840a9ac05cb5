#pragma once

#include "TovekSMService/time/TimeSource.h"

#include <QDateTime>
#include <QString>

namespace norvane {

inline constexpr qint64 secondsOfDay = 24 * 60 * 60;

/// The engine's clocks.
class Clock
{
public:
    Clock() = default;
    Clock(const Clock &) = delete;
    Clock &operator=(const Clock &) = delete;
    virtual ~Clock() = default;

    /// The wall clock without a zone (told as Qt::UTC), cut to whole seconds.
    virtual QDateTime wallClock() const = 0;

    /// What limits and timers run on. It takes no notice of a wall clock that is set.
    virtual TimeSource &time() const { return TimeSource::system(); }

    /// The wall clock as the queue writes dates: "yyyy-MM-ddTHH:mm:ss".
    QString wallClockText() const;
    /// The wall clock `seconds` from now, in the same form.
    QString wallClockText(qint64 seconds) const;
};

/// A date of the queue as a moment of the same wall clock; invalid if it is none.
QDateTime momentOf(const QString &date);

/// The machine's. It looks at the rules of its zone once a second, however often it is asked.
class SystemClock : public Clock
{
public:
    QDateTime wallClock() const override;

private:
    mutable qint64 m_second = -1; ///< since 1970, that m_wallClock belongs to
    mutable QDateTime m_wallClock;
};

} // namespace norvane
