#pragma once

#include <QtGlobal>

namespace norvane {

// Windows that are never seen: places that messages are sent to. Any thread may send one; the
// interface thread takes them one by one, in the order in which they were sent, from its event
// loop.

using WindowHandle = qint32;

/// What receives the messages of a window, on the interface thread.
using WindowProc = qint64 (*)(WindowHandle window, quint32 message, quint64 wParam, qint64 lParam);

/// Asks a window to go away.
inline constexpr quint32 WM_CLOSE = 16;

/// Queues a message for `window`: one write to a pipe and nothing else, so that any thread may call
/// it at any time. A message for which the queue has no room is lost.
/// @return whether it was queued
bool postWindowMessage(WindowHandle window, quint32 message, quint64 wParam,
                       qint64 lParam) noexcept;

/// The default handling of a message: WM_CLOSE ends the window and frees its handle; every other
/// message is dropped.
/// @return 0
qint64 defaultWindowProc(WindowHandle window, quint32 message, quint64 wParam, qint64 lParam);

/// The windows of the platform itself. Used from the interface thread alone.
namespace MessageWindows {

/// A new window with the lowest handle that is free.
/// @param error  the platform's error where there is no window to be had
/// @return 0 in that case
WindowHandle create(int &error);

/// @return null for a window that doesn't exist
WindowProc procedure(WindowHandle window);
/// Does nothing for a window that doesn't exist.
void setProcedure(WindowHandle window, WindowProc procedure);

/// As postWindowMessage, but a message for which the queue has no room takes its place behind those
/// that are waiting.
void post(WindowHandle window, quint32 message, quint64 wParam, qint64 lParam);

} // namespace MessageWindows

} // namespace norvane
