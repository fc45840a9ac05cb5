#include "foundation/ui/WindowHook.h"

#include <QEvent>

WindowHook::WindowHook(QWidget *window, const WindowLimits &limits)
    : QObject(window), m_window(window), m_limits(limits), m_askedOuterSize(window->frameSize())
{
    window->installEventFilter(this);
    apply();
}

WindowHook::~WindowHook()
{
    if (!m_window)
        return;
    m_window->removeEventFilter(this);
    m_window->setMinimumSize(0, 0);
    m_window->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
}

void WindowHook::setLimits(const WindowLimits &limits, QSize outerSize)
{
    m_limits = limits;
    m_askedOuterSize = outerSize;
    apply();
}

bool WindowHook::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Resize:
        if (frame() == m_appliedFrame && m_window->frameSize() != m_askedOuterSize)
            m_askedOuterSize = QSize();
        [[fallthrough]];
    case QEvent::Show:
    case QEvent::Move:
    case QEvent::WindowActivate:
    case QEvent::WindowStateChange:
        if (frame() != m_appliedFrame)
            apply();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

QSize WindowHook::frame() const
{
    return m_window->frameSize() - m_window->size();
}

void WindowHook::apply()
{
    m_appliedFrame = frame();
    const QSize minimum(m_limits.minimumWidth, m_limits.minimumHeight);
    const QSize maximum(m_limits.maximumWidth, m_limits.maximumHeight);
    const QSize smallest = (minimum - m_appliedFrame).expandedTo({0, 0});
    const QSize asked = m_askedOuterSize;

    // Lower bound first and upper bound after it, so that no step in between is contradictory.
    m_window->setMinimumSize(0, 0);
    m_window->setMaximumSize((maximum - m_appliedFrame).expandedTo(smallest));
    m_window->setMinimumSize(smallest);
    if (asked.isValid() && !m_window->isMaximized() && !m_window->isFullScreen())
        m_window->resize(asked - m_appliedFrame);
    m_askedOuterSize = asked;
}
