#pragma once

#include "foundation/CTimerMM.h"
#include "support/ManualTimers.h"
#include "support/RecordingMessageBoxes.h"
#include "support/WindowMessages.h"

#include <gtest/gtest.h>

namespace norvane {

/// Timers whose ticks come when told, over the hidden windows of the platform.
class TimerTest : public ::testing::Test
{
protected:
    ~TimerTest() override
    {
        for (const auto &timer : m_made)
            timer->setEnabled(false);
        processWindowMessages();
    }

    /// A timer of 10,000 ms whose ticks are noted in `heard`.
    std::shared_ptr<CTimerMM> makeTimer()
    {
        auto timer = CTimerMM::create();
        timer->setInterval(10'000);
        timer->setResolution(1);
        timer->setEventType(TimerPlatform::Periodic);
        QObject::connect(timer.get(), &CTimerMM::Timer, timer.get(),
                         [this](qint32 milliseconds) { heard.append(milliseconds); });
        m_made.append(timer);
        return timer;
    }
    std::shared_ptr<CTimerMM> makeRunning()
    {
        auto timer = makeTimer();
        timer->setEnabled(true);
        return timer;
    }

    /// The test lets go of a timer, which is then held by whoever else holds it.
    void forget() { m_made.clear(); }

    static qsizetype entries() { return MTimerMM::mcolTimers ? MTimerMM::mcolTimers->size() : 0; }
    WindowHandle windowOfLast() const { return timers.events.last().user; }

    ManualTimers timers;
    RecordingMessageBoxes boxes;
    QList<qint32> heard;

private:
    QList<std::shared_ptr<CTimerMM>> m_made;
};

} // namespace norvane
