#pragma once

#include "NorvaneSMS/queue/QueueAccess.h"

#include <QList>

#include <functional>

namespace norvane {

/// Random numbers that a test gives, and sleeps that take no time.
class NotedWaiting : public Waiting
{
public:
    void seedFromClock() override { ++seeds; }
    double random() override { return numbers.isEmpty() ? 0 : numbers.takeFirst(); }
    void sleep(int milliseconds) override
    {
        sleeps.append(milliseconds);
        if (whileAsleep)
            whileAsleep();
    }

    int seeds = 0;
    QList<double> numbers;
    QList<int> sleeps;
    std::function<void()> whileAsleep;
};

} // namespace norvane
