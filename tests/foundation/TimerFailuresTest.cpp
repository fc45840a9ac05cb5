#include "foundation/TimerFixture.h"

#include "support/RaisedFailure.h"

#include <functional>
#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

struct Raised
{
    qint32 number = 0;
    QString source;
    QString description;

    bool operator==(const Raised &) const = default;
};

void PrintTo(const Raised &raised, std::ostream *out)
{
    *out << raised.number << " \"" << raised.source.toStdString() << "\" \""
         << raised.description.toStdString() << '"';
}

Raised raisedBy(const std::function<void()> &action)
{
    const auto failure = raisedFailure(action);
    return failure ? Raised{failure->number(), failure->source(), failure->description()}
                   : Raised{};
}

} // namespace

TEST_F(TimerTest, newTimerCannotBeEnabled)
{
    const auto timer = CTimerMM::create();
    EXPECT_EQ(raisedBy([&] { timer->setEnabled(true); }),
              (Raised{380, u"CTimerMM::Enabled"_s, u"Interval property must be positive"_s}));
    EXPECT_FALSE(timer->Enabled());
    EXPECT_TRUE(timers.calls.isEmpty());
}

TEST_F(TimerTest, badValuesAreRefusedAndTheOldOnesStay)
{
    const auto timer = makeTimer();
    for (const qint32 interval : {0, -1, std::numeric_limits<qint32>::min()}) {
        EXPECT_EQ(raisedBy([&] { timer->setInterval(interval); }),
                  (Raised{380, u"CTimerMM::Interval"_s, u"Interval property must be positive"_s}));
    }
    for (const qint32 resolution : {-1, std::numeric_limits<qint32>::min()}) {
        EXPECT_EQ(raisedBy([&] { timer->setResolution(resolution); }),
                  (Raised{380, u"CTimerMM::Resolution"_s,
                          u"Resolution property must be non-negative"_s}));
    }
    EXPECT_EQ(timer->Interval(), 10'000);
    EXPECT_EQ(timer->Resolution(), 1);
    timer->setInterval(1);
    timer->setResolution(0);
    EXPECT_EQ(timer->Interval(), 1);
    EXPECT_EQ(timer->Resolution(), 0);
}

TEST_F(TimerTest, withoutAWindowABoxTellsTheErrorAndTheStartFails)
{
    timers.windowError = 24;
    const auto timer = makeTimer();
    EXPECT_EQ(raisedBy([&] { timer->setEnabled(true); }),
              (Raised{51, u"MTimerMM::fRegister"_s, u"Unable to create timer control window"_s}));
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().text, u"Unable to create window, LastError = 24"_s);
    EXPECT_EQ(boxes.shown.first().icon, MessageBoxes::Icon::None);
    EXPECT_EQ(boxes.shown.first().buttons, MessageBoxes::Buttons::Ok);
    EXPECT_TRUE(timers.calls.isEmpty());

    // The new value was stored before the window was asked for, so the way back is a stop.
    EXPECT_TRUE(timer->Enabled());
    timer->setEnabled(false);
    timers.windowError = 0;
    timer->setEnabled(true);
    EXPECT_EQ(entries(), 1);
}

TEST_F(TimerTest, windowWithoutAProcedureIsAFailureWithoutASource)
{
    timers.windowsHaveProcedures = false;
    const auto timer = makeTimer();
    EXPECT_EQ(raisedBy([&] { timer->setEnabled(true); }),
              (Raised{51, QString(), u"Unable to get default window proc handle"_s}));
    EXPECT_EQ(entries(), 0);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(TimerTest, clockThatPassesItsGreatestValueOverflowsAndRaisesNoEvent)
{
    timers.now = 0x7FFF'FFFF;
    makeRunning();
    const WindowHandle window = windowOfLast();
    timers.now = std::numeric_limits<qint32>::min(); // 0x80000000
    EXPECT_EQ(raisedBy([&] { MTimerMM::TimerWindowProc(window, MTimerMM::WM_MMTIMER, 0, window); }),
              (Raised{6, u"CTimerMM::RaiseTimerEvent"_s, u"Overflow"_s}));
    EXPECT_TRUE(heard.isEmpty());
}

TEST_F(TimerTest, clockDifferencesThatFitAreNoFailure)
{
    struct Case
    {
        qint32 start;
        qint32 tick;
        qint32 difference;
    };
    constexpr qint32 smallest = std::numeric_limits<qint32>::min();
    constexpr qint32 greatest = std::numeric_limits<qint32>::max();
    for (const Case &c : {Case{-1, 0, 1}, Case{-10'000, 5, 10'005}, Case{0, greatest, greatest},
                          Case{-1, greatest - 1, greatest}, Case{smallest, -1, greatest},
                          Case{5, 0, -5}, Case{0, smallest, smallest}}) {
        heard.clear();
        timers.now = c.start;
        const auto timer = makeRunning();
        timers.now = c.tick;
        const WindowHandle window = windowOfLast();
        EXPECT_EQ(
            raisedBy([&] { MTimerMM::TimerWindowProc(window, MTimerMM::WM_MMTIMER, 0, window); }),
            Raised{});
        EXPECT_EQ(heard, (QList<qint32>{c.difference}));
        timer->setEnabled(false);
    }
}

} // namespace norvane
