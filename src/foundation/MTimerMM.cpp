#include "foundation/MTimerMM.h"

#include "common/FailureNumbers.h"
#include "foundation/CTimerMM.h"
#include "foundation/MessageBoxes.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace MTimerMM {
namespace {

/// The one system clock period that is ever asked for, in milliseconds.
constexpr quint32 clockPeriod = 1;

/// The hidden windows' own procedure, one for all of them.
WindowProc mlDefWindowProc = nullptr;

template <typename Step>
void ignoringFailures(Step &&step) noexcept
{
    try {
        step();
    } catch (...) { // the next step is taken all the same
    }
}

} // namespace

std::unique_ptr<Registry> mcolTimers;

namespace {

/// Timers that still run at the process's end unregister themselves, from a registry that is gone.
struct LastTimers
{
    ~LastTimers() { const std::unique_ptr<Registry> last = std::move(mcolTimers); }
};
const LastTimers g_lastTimers;

} // namespace

WindowHandle fRegister(const std::shared_ptr<CTimerMM> &owner)
{
    if (!mcolTimers)
        mcolTimers = std::make_unique<Registry>();
    const WindowHandle window = CreateTimerWindow();
    if (window == 0)
        throw NumberedFailure(Failure::InternalError, u"MTimerMM::fRegister"_s,
                              u"Unable to create timer control window"_s);
    SubclassTimerWindow(window);
    mcolTimers->insert(QString::number(window), {owner, window});
    return window;
}

void fUnregister(WindowHandle window) noexcept
{
    ignoringFailures([&] { UnsubclassTimerWindow(window); });
    ignoringFailures([&] { CloseTimerWindow(window); });
    ignoringFailures([&] {
        if (!mcolTimers)
            return;
        // The entry may hold the last reference to its owner, whose end comes through here again.
        const CObjData removed = mcolTimers->take(QString::number(window));
        if (mcolTimers->isEmpty())
            mcolTimers.reset();
    });
}

quint32 StartTimer(qint32 interval, qint32 resolution, qint32 eventType, WindowHandle window)
{
    timerPlatform().beginPeriod(clockPeriod);
    return timerPlatform().setEvent(interval, resolution, TimerCallback, window, eventType);
}

void StopTimer(quint32 timerId)
{
    timerPlatform().killEvent(timerId);
    timerPlatform().endPeriod(clockPeriod);
}

qint32 GetClockMs()
{
    return timerPlatform().clockMs();
}

WindowHandle CreateTimerWindow()
{
    int error = 0;
    const WindowHandle window = timerPlatform().createWindow(error);
    if (window == 0)
        messageBoxes().show(u"Unable to create window, LastError = "_s + QString::number(error),
                            MessageBoxes::Icon::None, MessageBoxes::Buttons::Ok, u"Norvane SMS"_s);
    return window;
}

void SubclassTimerWindow(WindowHandle window)
{
    mlDefWindowProc = nullptr;
    const WindowProc own = timerPlatform().windowProc(window);
    if (!own)
        throw NumberedFailure(Failure::InternalError, QString(),
                              u"Unable to get default window proc handle"_s);
    timerPlatform().setWindowProc(window, TimerWindowProc);
    mlDefWindowProc = own;
}

void UnsubclassTimerWindow(WindowHandle window)
{
    timerPlatform().setWindowProc(window, mlDefWindowProc);
}

void CloseTimerWindow(WindowHandle window)
{
    timerPlatform().postMessage(window, WM_CLOSE, 0, 0);
}

void TimerCallback(quint32 /*id*/, quint32 /*message*/, quintptr user, quintptr /*reserved1*/,
                   quintptr /*reserved2*/)
{
    postWindowMessage(static_cast<WindowHandle>(user), WM_MMTIMER, 0, static_cast<qint64>(user));
}

qint64 TimerWindowProc(WindowHandle window, quint32 message, quint64 wParam, qint64 lParam)
{
    if (message != WM_MMTIMER)
        return (mlDefWindowProc ? mlDefWindowProc : defaultWindowProc)(window, message, wParam,
                                                                       lParam);
    // The reference keeps the timer alive until its event has been handled, whatever becomes of it
    // meanwhile.
    if (const std::shared_ptr<CTimerMM> owner =
            mcolTimers ? mcolTimers->value(QString::number(lParam)).Owner : nullptr)
        owner->RaiseTimerEvent();
    return defaultWindowProc(window, WM_MMTIMER, wParam, lParam);
}

} // namespace MTimerMM

} // namespace norvane
