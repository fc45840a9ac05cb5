#pragma once

#include "foundation/platform/TimerPlatform.h"

#include <QHash>
#include <QString>

#include <memory>

namespace norvane {

class CTimerMM;

/// The shared part of the CTimerMM objects: the callback, the hidden window of each running timer,
/// and the registry that finds the timer of a window.
///
/// The callback runs on the platform's thread and does nothing but send a message. Everything else
/// runs on the interface thread.
namespace MTimerMM {

/// The message of one tick; its lParam is the hidden window's handle.
inline constexpr quint32 WM_MMTIMER = 0x1401;

/// One entry of the registry.
struct CObjData
{
    std::shared_ptr<CTimerMM> Owner;
    WindowHandle hWnd = 0;
};

using Registry = QHash<QString, CObjData>;

/// The running timers under the decimal texts of their windows' handles; null while there is none.
extern std::unique_ptr<Registry> mcolTimers;

/// Makes a hidden window and registers it for `owner`, which lives as long as it is registered.
/// @throws NumberedFailure 51 if no window can be created, or it has no procedure
WindowHandle fRegister(const std::shared_ptr<CTimerMM> &owner);

/// Takes a window out of the registry and closes it. If one step fails, the others are still done.
void fUnregister(WindowHandle window) noexcept;

/// Starts a timer that ticks into `window`.
/// @param interval    milliseconds
/// @param resolution  milliseconds
/// @return its id; 0 for one that could not be started, and so never ticks
quint32 StartTimer(qint32 interval, qint32 resolution, qint32 eventType, WindowHandle window);
void StopTimer(quint32 timerId);

/// The platform's millisecond clock of 32 bits.
qint32 GetClockMs();

/// @return 0 if no window can be created, which a message box has shown
WindowHandle CreateTimerWindow();
/// @throws NumberedFailure 51 if the window has no procedure
void SubclassTimerWindow(WindowHandle window);
void UnsubclassTimerWindow(WindowHandle window);
/// Sends the window the message that closes it, behind the ticks that are still waiting.
void CloseTimerWindow(WindowHandle window);

/// Called at each tick, on the platform's thread.
void TimerCallback(quint32 id, quint32 message, quintptr user, quintptr reserved1,
                   quintptr reserved2);
/// Called with each message of a hidden window, on the interface thread.
/// @throws NumberedFailure whatever the timer's event raises
qint64 TimerWindowProc(WindowHandle window, quint32 message, quint64 wParam, qint64 lParam);

} // namespace MTimerMM

} // namespace norvane
