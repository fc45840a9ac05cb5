#include "foundation/ui/WindowHook.h"

#include "foundation/ui/WindowPlace.h"

namespace norvane {

WindowHook::WindowHook(QWidget *window, const WindowLimits &limits)
    : QObject(window), m_window(window), m_limits(limits)
{
    WindowPlace &place = WindowPlace::of(window);
    connect(&place, &WindowPlace::arranging, this, &WindowHook::onArranging);
    connect(&place, &WindowPlace::followed, this, &WindowHook::onFollowed);
    if (!place.keepsOuterSize())
        place.setOuterSize(window->frameSize());
    apply();
}

WindowHook::~WindowHook()
{
    if (!m_window)
        return;
    m_window->setMinimumSize(0, 0);
    m_window->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
}

void WindowHook::setLimits(const WindowLimits &limits, QSize outerSize)
{
    m_limits = limits;
    WindowPlace::of(m_window).setOuterSize(outerSize);
}

void WindowHook::onArranging()
{
    if (WindowPlace::of(m_window).keepsOuterSize())
        apply(); // and that size is what the window gets next
    else
        onFollowed();
}

void WindowHook::onFollowed()
{
    // The toolkit resizes a window that new limits don't fit, and would do so with one that is
    // still as large as the maximised window that it was: such limits wait.
    const QSize size = m_window->size();
    if (size == size.expandedTo(smallest()) && size == size.boundedTo(largest()))
        apply();
}

QSize WindowHook::smallest() const
{
    return QSize(m_limits.minimumWidth, m_limits.minimumHeight)
        .shrunkBy(WindowPlace::of(m_window).frame())
        .expandedTo({0, 0});
}

QSize WindowHook::largest() const
{
    // A maximised window has a frame of its own, and fills the screen only if it is let.
    return QSize(m_limits.maximumWidth, m_limits.maximumHeight)
        .shrunkBy(WindowPlace::of(m_window).presentFrame())
        .expandedTo(smallest());
}

void WindowHook::apply()
{
    const QSize minimum = smallest();
    const QSize maximum = largest();
    if (m_window->minimumSize() == minimum && m_window->maximumSize() == maximum)
        return;
    // Lower bound first and upper bound after it, so that no step in between is contradictory.
    m_window->setMinimumSize(0, 0);
    m_window->setMaximumSize(maximum);
    m_window->setMinimumSize(minimum);
}

} // namespace norvane
