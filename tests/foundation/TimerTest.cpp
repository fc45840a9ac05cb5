#include "foundation/TimerFixture.h"

#include "common/NumberedFailure.h"

namespace norvane {

using namespace Qt::StringLiterals;

TEST_F(TimerTest, everythingStartsAtZero)
{
    const auto timer = CTimerMM::create();
    EXPECT_FALSE(timer->Enabled());
    EXPECT_EQ(timer->Interval(), 0);
    EXPECT_EQ(timer->Resolution(), 0);
    EXPECT_EQ(timer->EventType(), 0);
    EXPECT_EQ(MTimerMM::mcolTimers, nullptr);
}

TEST_F(TimerTest, disablingAStoppedTimerDoesNothingEvenWithoutAnInterval)
{
    CTimerMM::create()->setEnabled(false);
    EXPECT_TRUE(timers.calls.isEmpty());
}

TEST_F(TimerTest, startAsksForOneMillisecondAndHandsTheRestOn)
{
    const auto timer = makeTimer();
    timer->setResolution(25);
    timer->setEventType(7);
    timer->setEnabled(true);
    EXPECT_EQ(timers.calls, (QStringList{u"begin 1"_s, u"set 10000 25 7"_s}));
    EXPECT_TRUE(timer->Enabled());
}

TEST_F(TimerTest, stopEndsTheTimerAndThenThePeriod)
{
    const auto timer = makeRunning();
    timers.calls.clear();
    timer->setEnabled(false);
    EXPECT_EQ(timers.calls, (QStringList{u"kill 1"_s, u"end 1"_s}));
    EXPECT_FALSE(timer->Enabled());
}

TEST_F(TimerTest, valueThatItHasAlreadyDoesNothing)
{
    const auto timer = makeRunning();
    timers.calls.clear();
    timer->setEnabled(true);
    EXPECT_TRUE(timers.calls.isEmpty());
    EXPECT_EQ(entries(), 1);
}

TEST_F(TimerTest, intervalWrittenWhileRunningCountsFromTheNextStart)
{
    const auto timer = makeRunning();
    timers.calls.clear();
    timer->setInterval(500);
    timer->setResolution(3);
    EXPECT_TRUE(timers.calls.isEmpty());
    timer->setEnabled(false);
    timer->setEnabled(true);
    EXPECT_EQ(timers.calls.last(), u"set 500 3 1"_s);
}

TEST_F(TimerTest, tickTellsTheTimeSinceTheStart)
{
    timers.now = 1'000;
    makeRunning();
    timers.now = 11'003;
    timers.tick();
    EXPECT_TRUE(heard.isEmpty()) << "an event is raised by the event loop";
    processWindowMessages();
    EXPECT_EQ(heard, (QList<qint32>{10'003}));
}

TEST_F(TimerTest, timeThatHandlersTookIsLeftOut)
{
    const auto timer = makeRunning();
    QObject::connect(timer.get(), &CTimerMM::Timer, timer.get(), [&] { timers.now += 700; });
    timers.now = 10'000;
    timers.tick();
    processWindowMessages();
    timers.now += 300;
    timers.tick();
    processWindowMessages();
    EXPECT_EQ(heard, (QList<qint32>{10'000, 300}));
}

TEST_F(TimerTest, ticksThatPileUpRaiseOneEventEach)
{
    makeRunning();
    timers.now = 10'000;
    for (int i = 0; i < 5; ++i)
        timers.tick();
    processWindowMessages();
    EXPECT_EQ(heard, (QList<qint32>{10'000, 0, 0, 0, 0}));
}

TEST_F(TimerTest, handlerThatPumpsMessagesIsEnteredAgain)
{
    const auto timer = makeRunning();
    int depth = 0;
    int deepest = 0;
    QObject::connect(timer.get(), &CTimerMM::Timer, timer.get(), [&] {
        deepest = qMax(deepest, ++depth);
        processWindowMessages();
        --depth;
    });
    timers.tick();
    timers.tick();
    timers.tick();
    processWindowMessages();
    EXPECT_EQ(heard.size(), 3);
    EXPECT_EQ(deepest, 3);
}

TEST_F(TimerTest, oneShotTimerStaysEnabledAfterItsTick)
{
    const auto timer = makeTimer();
    timer->setEventType(TimerPlatform::OneShot);
    timer->setEnabled(true);
    timers.tick();
    timers.tick();
    processWindowMessages();
    EXPECT_EQ(heard.size(), 1);
    EXPECT_TRUE(timer->Enabled());
    EXPECT_EQ(entries(), 1);
    timer->setEnabled(false);
    EXPECT_EQ(timers.calls.mid(2), (QStringList{u"kill 1"_s, u"end 1"_s}));
}

TEST_F(TimerTest, timerThatThePlatformRefusesNeverTicksAndStopsAsAnyOther)
{
    timers.refusesEvents = true;
    const auto timer = makeRunning();
    EXPECT_TRUE(timer->Enabled());
    EXPECT_EQ(entries(), 1);
    timer->setEnabled(false);
    EXPECT_EQ(timers.calls,
              (QStringList{u"begin 1"_s, u"set 10000 1 1"_s, u"kill 0"_s, u"end 1"_s}));
    EXPECT_EQ(MTimerMM::mcolTimers, nullptr);
}

TEST_F(TimerTest, twoTimersHaveTwoWindowsAndTheRegistryLivesUntilTheSecondStops)
{
    const auto first = makeRunning();
    const WindowHandle firstWindow = windowOfLast();
    const auto second = makeRunning();
    const WindowHandle secondWindow = windowOfLast();
    EXPECT_NE(firstWindow, secondWindow);
    ASSERT_EQ(entries(), 2);
    EXPECT_EQ(MTimerMM::mcolTimers->value(QString::number(firstWindow)).Owner, first);
    EXPECT_EQ(MTimerMM::mcolTimers->value(QString::number(secondWindow)).Owner, second);
    EXPECT_EQ(MTimerMM::mcolTimers->value(QString::number(secondWindow)).hWnd, secondWindow);

    first->setEnabled(false);
    ASSERT_EQ(entries(), 1);
    timers.tick();
    processWindowMessages();
    EXPECT_EQ(heard.size(), 1);
    second->setEnabled(false);
    EXPECT_EQ(MTimerMM::mcolTimers, nullptr);
}

TEST_F(TimerTest, tickThatIsQueuedWhenTheTimerStopsIsDropped)
{
    const auto timer = makeRunning();
    timers.tick();
    timers.tick();
    timer->setEnabled(false);
    processWindowMessages();
    EXPECT_TRUE(heard.isEmpty());
}

TEST_F(TimerTest, windowOfAStoppedTimerHasItsOwnProcedureAgainUntilItCloses)
{
    const auto timer = makeRunning();
    const WindowHandle window = windowOfLast();
    EXPECT_EQ(MessageWindows::procedure(window), &MTimerMM::TimerWindowProc);
    timer->setEnabled(false);
    EXPECT_EQ(MessageWindows::procedure(window), &defaultWindowProc);
    processWindowMessages();
    EXPECT_EQ(MessageWindows::procedure(window), nullptr);
}

TEST_F(TimerTest, queuedTickDoesNotReachTheNextTimer)
{
    const auto former = makeRunning();
    const WindowHandle window = windowOfLast();
    timers.tick();
    former->setEnabled(false);
    makeRunning(); // while the tick and the end of the former window are still waiting
    EXPECT_NE(windowOfLast(), window);
    processWindowMessages();
    EXPECT_TRUE(heard.isEmpty());

    const auto next = makeRunning(); // the handle is free again, and used again
    EXPECT_EQ(windowOfLast(), window);
    processWindowMessages();
    EXPECT_TRUE(heard.isEmpty());
}

TEST_F(TimerTest, tickAfterAFullQueueIsLostAndTheWindowClosesAllTheSame)
{
    const auto timer = makeRunning();
    const WindowHandle window = windowOfLast();
    int queued = 0;
    while (postWindowMessage(window, MTimerMM::WM_MMTIMER, 0, window))
        ++queued;
    EXPECT_GT(queued, 1'000);
    timers.tick(); // finds no room, and neither waits nor fails
    timer->setEnabled(false);
    timer->setEnabled(true);
    EXPECT_NE(windowOfLast(), window) << "the window isn't closed before its messages are taken";
    timers.tick();
    processWindowMessages();
    EXPECT_EQ(heard.size(), 1) << "only the tick of the second start";
    makeRunning();
    EXPECT_EQ(windowOfLast(), window);
}

TEST_F(TimerTest, runningTimerLivesOnWhenItsOwnerDropsIt)
{
    std::weak_ptr<CTimerMM> timer = makeRunning();
    forget();
    timers.tick();
    processWindowMessages();
    EXPECT_EQ(heard.size(), 1);
    ASSERT_FALSE(timer.expired());
    timer.lock()->setEnabled(false);
    EXPECT_TRUE(timer.expired());
}

TEST_F(TimerTest, timerThatIsStoppedAndDroppedByItsHandlerLivesUntilTheCallHasReturned)
{
    std::weak_ptr<CTimerMM> timer = makeRunning();
    forget();
    bool alive = false;
    QObject::connect(timer.lock().get(), &CTimerMM::Timer, qApp, [&] {
        timer.lock()->setEnabled(false);
        alive = !timer.expired();
    });
    timers.tick();
    processWindowMessages();
    EXPECT_TRUE(alive);
    EXPECT_TRUE(timer.expired());
}

TEST_F(TimerTest, timerThatEndsWhileItRunsIsStoppedAndItsWindowClosed)
{
    std::weak_ptr<CTimerMM> timer = makeRunning();
    const WindowHandle window = windowOfLast();
    forget();
    timers.calls.clear();
    MTimerMM::fUnregister(window); // nobody holds it any more
    EXPECT_TRUE(timer.expired());
    EXPECT_EQ(timers.calls, (QStringList{u"kill 1"_s, u"end 1"_s}));
    EXPECT_EQ(MTimerMM::mcolTimers, nullptr);
    processWindowMessages();
    makeRunning();
    EXPECT_EQ(windowOfLast(), window);
}

TEST_F(TimerTest, timerThatEndsWithTheRegistryIsStoppedAndItsWindowClosed)
{
    const std::weak_ptr<CTimerMM> timer = makeRunning();
    const WindowHandle window = windowOfLast();
    forget();
    timers.calls.clear();
    MTimerMM::mcolTimers.reset();
    EXPECT_TRUE(timer.expired());
    EXPECT_EQ(timers.calls, (QStringList{u"kill 1"_s, u"end 1"_s}));
    EXPECT_EQ(MessageWindows::procedure(window), &defaultWindowProc);
    processWindowMessages();
    EXPECT_EQ(MessageWindows::procedure(window), nullptr);
}

TEST_F(TimerTest, stoppedTimerEndsWithoutACall)
{
    makeTimer();
    makeRunning()->setEnabled(false);
    timers.calls.clear();
    forget();
    EXPECT_TRUE(timers.calls.isEmpty());
}

TEST_F(TimerTest, windowWhoseProcedureCantBePutBackIsClosedAndForgottenAllTheSame)
{
    const auto timer = makeRunning();
    const WindowHandle window = windowOfLast();
    timers.proceduresFail = true;
    timer->setEnabled(false);
    EXPECT_EQ(MTimerMM::mcolTimers, nullptr);
    timers.proceduresFail = false;
    processWindowMessages();
    EXPECT_EQ(MessageWindows::procedure(window), nullptr);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(TimerTest, windowThatCantBeClosedIsForgottenAllTheSame)
{
    const auto timer = makeRunning();
    const WindowHandle window = windowOfLast();
    timers.postsFail = true;
    timer->setEnabled(false);
    EXPECT_EQ(MTimerMM::mcolTimers, nullptr);
    EXPECT_EQ(MessageWindows::procedure(window), &defaultWindowProc);
    EXPECT_TRUE(boxes.shown.isEmpty());

    timers.postsFail = false;
    MTimerMM::CloseTimerWindow(window);
    processWindowMessages();
}

TEST_F(TimerTest, windowThatIsNotRegisteredIsClosedWithoutAWord)
{
    makeRunning();
    const WindowHandle stray = MTimerMM::CreateTimerWindow();
    MTimerMM::SubclassTimerWindow(stray);
    MTimerMM::fUnregister(stray);
    MTimerMM::fUnregister(4711); // there is none
    EXPECT_EQ(entries(), 1);
    EXPECT_EQ(MessageWindows::procedure(stray), &defaultWindowProc);
    processWindowMessages();
    EXPECT_EQ(MessageWindows::procedure(stray), nullptr);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(TimerTest, otherMessagesOfTheWindowGoToItsOwnProcedure)
{
    makeRunning();
    const WindowHandle window = windowOfLast();
    EXPECT_EQ(MTimerMM::TimerWindowProc(window, MTimerMM::WM_MMTIMER + 1, 0, window), 0);
    EXPECT_TRUE(heard.isEmpty());
    EXPECT_NE(MessageWindows::procedure(window), nullptr);
    MTimerMM::TimerWindowProc(window, WM_CLOSE, 0, 0);
    EXPECT_EQ(MessageWindows::procedure(window), nullptr);
}

namespace {

struct Message
{
    WindowHandle window;
    quint32 message;
    quint64 wParam;
    qint64 lParam;
    bool operator==(const Message &) const = default;
};
QList<Message> g_received;

/// A procedure of a window's own, which nothing else calls.
qint64 ownProcedure(WindowHandle window, quint32 message, quint64 wParam, qint64 lParam)
{
    g_received.append({window, message, wParam, lParam});
    return 4711;
}

} // namespace

TEST_F(TimerTest, procedureThatAWindowHadIsKeptCalledAndPutBack)
{
    g_received.clear();
    timers.ownProcedure = ownProcedure;
    const auto timer = makeRunning();
    const WindowHandle window = windowOfLast();
    EXPECT_EQ(MTimerMM::TimerWindowProc(window, 17, 18, 19), 4711);
    EXPECT_EQ(g_received, (QList<Message>{{window, 17, 18, 19}}));
    EXPECT_EQ(MTimerMM::TimerWindowProc(window, MTimerMM::WM_MMTIMER, 0, window), 0);
    EXPECT_EQ(g_received.size(), 1) << "a tick goes to the default procedure";

    timer->setEnabled(false);
    EXPECT_EQ(MessageWindows::procedure(window), &ownProcedure);
    processWindowMessages();
    EXPECT_EQ(g_received.last(), (Message{window, WM_CLOSE, 0, 0}));
    defaultWindowProc(window, WM_CLOSE, 0, 0);
}

TEST_F(TimerTest, procedureOfTheNewestWindowIsThatOfAllOfThem)
{
    g_received.clear();
    timers.ownProcedure = ownProcedure;
    makeRunning();
    const WindowHandle former = windowOfLast();
    timers.ownProcedure = nullptr;
    makeRunning();
    EXPECT_EQ(MTimerMM::TimerWindowProc(former, 17, 0, 0), 0);
    EXPECT_TRUE(g_received.isEmpty());
}

TEST_F(TimerTest, procedureThatWasKeptIsClearedBeforeTheNextWindowIsAskedForIts)
{
    g_received.clear();
    timers.ownProcedure = ownProcedure;
    const auto timer = makeRunning();
    const WindowHandle window = windowOfLast();
    timers.windowsHaveProcedures = false;
    EXPECT_THROW(makeRunning(), NumberedFailure);
    EXPECT_EQ(MTimerMM::TimerWindowProc(window, 17, 0, 0), 0);
    EXPECT_TRUE(g_received.isEmpty());
    timer->setEnabled(false);
    EXPECT_EQ(MessageWindows::procedure(window), &defaultWindowProc);
}

TEST_F(TimerTest, tickMessageFindsItsTimerByTheHandleInIt)
{
    makeRunning();
    const WindowHandle window = windowOfLast();
    MTimerMM::TimerWindowProc(window, MTimerMM::WM_MMTIMER, 0, window);
    EXPECT_EQ(heard.size(), 1);
    MTimerMM::TimerWindowProc(window, MTimerMM::WM_MMTIMER, 0, window + 1000);
    EXPECT_EQ(heard.size(), 1);
    EXPECT_EQ(MTimerMM::WM_MMTIMER, 5121U);
}

} // namespace norvane
