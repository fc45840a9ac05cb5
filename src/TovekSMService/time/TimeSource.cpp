#include "TovekSMService/time/TimeSource.h"

#include <QTimer>

#include <chrono>
#include <utility>

namespace norvane {

namespace {

class SystemAlarm : public TimeSource::Alarm
{
public:
    explicit SystemAlarm(std::function<void()> due)
    {
        m_timer.setSingleShot(true);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, std::move(due));
    }

    void set(int milliseconds, Qt::TimerType type) override
    {
        m_timer.setTimerType(type);
        m_timer.start(milliseconds);
    }
    void cancel() override { m_timer.stop(); }
    bool isSet() const override { return m_timer.isActive(); }

private:
    QTimer m_timer;
};

class SystemTime : public TimeSource
{
public:
    qint64 nanoseconds() const override
    {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
    }
    std::unique_ptr<Alarm> makeAlarm(std::function<void()> due) override
    {
        return std::make_unique<SystemAlarm>(std::move(due));
    }
};

} // namespace

TimeSource &TimeSource::system()
{
    static SystemTime time;
    return time;
}

} // namespace norvane
