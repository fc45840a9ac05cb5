#pragma once

#include <QObject>

#include <functional>
#include <memory>

namespace norvane {

class CTimerMM;

/// The timer that the queue folder is polled by: every ten seconds.
class PollingTimer : public QObject
{
    Q_OBJECT

public:
    /// Takes the milliseconds since the tick before. A failure that it throws ends the tick and
    /// nothing else.
    using Tick = std::function<void(qint32)>;

    explicit PollingTimer(Tick tick);
    ~PollingTimer() override;

    /// Starts a new timer in the place of the one that may be running.
    void start();
    void stop();

private:
    void onTimer(qint32 lMilliseconds);

    Tick m_tick;
    std::shared_ptr<CTimerMM> m_timer;
};

} // namespace norvane
