#pragma once

#include "TovekSMService/time/TimeSource.h"

#include <QObject>

namespace norvane {

/// A single-shot timer on a time source that is given to it.
class Timer : public QObject
{
    Q_OBJECT

public:
    /// @param time  must outlive this object
    explicit Timer(TimeSource &time, Qt::TimerType type = Qt::CoarseTimer,
                   QObject *parent = nullptr);

    /// Begins anew if it runs already.
    void start(int milliseconds);
    /// With the interval of the last start.
    void start() { start(m_interval); }
    void stop() { m_alarm->cancel(); }
    bool isActive() const { return m_alarm->isSet(); }
    /// Of the last start, in milliseconds.
    int interval() const { return m_interval; }

Q_SIGNALS:
    void timeout();

private:
    const Qt::TimerType m_type;
    int m_interval = 0;
    const std::unique_ptr<TimeSource::Alarm> m_alarm;
};

} // namespace norvane
