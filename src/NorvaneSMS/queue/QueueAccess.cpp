#include "NorvaneSMS/queue/QueueAccess.h"

#include <QRandomGenerator>
#include <QThread>

#include <chrono>

namespace norvane {

namespace {

class RealWait : public Waiting
{
public:
    void seedFromClock() override
    {
        const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
        m_numbers.seed(static_cast<quint32>(ticks));
    }
    double random() override { return m_numbers.generateDouble(); }
    void sleep(int milliseconds) override
    {
        QThread::msleep(static_cast<unsigned long>(milliseconds));
    }

private:
    QRandomGenerator m_numbers;
};

} // namespace

Waiting &realWait()
{
    static RealWait waiting;
    return waiting;
}

} // namespace norvane
