#include "foundation/ui/WindowPlace.h"

#include "foundation/ui/FormSetUp.h"

#include <QEvent>
#include <QMoveEvent>
#include <QResizeEvent>
#include <QScreen>
#include <QWidget>
#include <QWindow>

namespace norvane {

WindowPlace &WindowPlace::of(QWidget *window)
{
    auto *const place = window->findChild<WindowPlace *>({}, Qt::FindDirectChildrenOnly);
    return place ? *place : *new WindowPlace(window);
}

WindowPlace::WindowPlace(QWidget *window)
    : QObject(window), m_window(window), m_notices([this](quintptr noticed) {
          if (const QWindow *const handle = m_window->windowHandle();
              handle && handle->winId() == noticed)
              followLater();
      })
{
    window->installEventFilter(this);
    if (!window->isVisible())
        return;
    window->windowHandle()->installEventFilter(this);
    m_frame = currentFrame();
    m_framed = !m_frame.isNull();
}

void WindowPlace::setOuterSize(QSize size)
{
    m_outerSize = size;
    arrange();
}

void WindowPlace::centre()
{
    // A dialog's frame is assumed to be its owner's, so that it needn't move once it is known.
    const QWidget *const owner = m_window->parentWidget();
    if (owner && !m_window->isVisible())
        if (const auto *const other =
                owner->window()->findChild<WindowPlace *>({}, Qt::FindDirectChildrenOnly))
            m_frame = other->m_frame;
    m_centred = true;
    arrange();
}

bool WindowPlace::eventFilter(QObject *watched, QEvent *event)
{
    const QWindow *const handle = m_window->windowHandle();
    switch (event->type()) {
    case QEvent::Show:
        if (watched != m_window)
            break;
        m_window->windowHandle()->installEventFilter(this);
        follow();
        break;
    case QEvent::WindowStateChange:
        if (watched == m_window)
            followLater();
        break;
    case QEvent::Resize:
        if (watched == handle)
            note({handle->position(), static_cast<QResizeEvent *>(event)->size()});
        break;
    case QEvent::Move:
        if (watched == handle)
            note({static_cast<QMoveEvent *>(event)->pos(), handle->size()});
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

QMargins WindowPlace::presentFrame() const
{
    return isEnlarged() ? m_enlargedFrame.value_or(m_frame) : m_frame;
}

QMargins WindowPlace::currentFrame() const
{
    // The widget's own frame is as old as its last move; the platform's is the present one.
    const QWindow *const handle = m_window->windowHandle();
    return handle ? handle->frameMargins() : QMargins();
}

bool WindowPlace::isEnlarged() const
{
    return m_window->isMaximized() || m_window->isFullScreen();
}

bool WindowPlace::isNormal() const
{
    return !isEnlarged() && !m_window->isMinimized();
}

/// The place that was asked for, and for what was not, that of `inner`. Both without the frame.
QRect WindowPlace::wanted(const QRect &inner) const
{
    const QSize size = keepsOuterSize() ? m_outerSize.shrunkBy(m_frame) : inner.size();
    if (!m_centred)
        return {inner.topLeft(), size};
    const QRect screen = m_window->screen()->geometry();
    return {screen.topLeft() + FormSetUp::centred(size.grownBy(m_frame), screen.size()) +
                QPoint(m_frame.left(), m_frame.top()),
            size};
}

void WindowPlace::arrange()
{
    QWindow *const handle = m_window->windowHandle();
    const QRect before = handle ? handle->geometry() : QRect();
    Q_EMIT arranging();
    const QRect inner = wanted(m_window->geometry());
    if (m_window->isVisible()) {
        m_window->setGeometry(inner);
        // The widget takes its place for that of the frame where it was given so before the
        // showing.
        handle->setGeometry(inner);
        m_requested |= handle->geometry() != before;
        return;
    }
    // The frame isn't known yet: the window manager gets the position of the outer corner.
    m_window->resize(inner.size());
    if (m_centred)
        m_window->move(inner.topLeft() - QPoint(m_frame.left(), m_frame.top()));
    m_requested = true;
}

void WindowPlace::followLater()
{
    // The toolkit is still handling the event that is followed here.
    QMetaObject::invokeMethod(this, &WindowPlace::follow, Qt::QueuedConnection);
}

void WindowPlace::follow()
{
    if (!m_window->isVisible())
        return;
    const QMargins now = currentFrame();
    m_framed |= !now.isNull();
    if (!m_framed)
        return; // it may still get its first
    if (isEnlarged())
        m_enlargedFrame = now;
    // On the way back the frame of the enlarged window may still be there for a while.
    if (isNormal() && now != m_frame && now != m_enlargedFrame) {
        m_enlargedFrame.reset();
        m_frame = now;
        arrange();
    }
    Q_EMIT followed();
}

/// The window system has reported the window's position: the requested one, one on the way there,
/// or, if neither, that to which the operator has moved it.
void WindowPlace::note(const QRect &inner)
{
    followLater();
    if (!isNormal())
        return;
    const QRect asked = wanted(inner);
    if (inner == asked) {
        if (m_requested)
            m_enlargedFrame.reset();
        m_requested = false;
    } else if (!m_requested && currentFrame() == m_frame) {
        m_centred = false;
        if (inner.size() != asked.size())
            m_outerSize = QSize();
    }
}

} // namespace norvane
