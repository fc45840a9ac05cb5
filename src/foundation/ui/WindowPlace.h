#pragma once

#include "foundation/platform/WindowNotices.h"

#include <QMargins>
#include <QObject>
#include <QRect>

#include <optional>

class QWidget;

namespace norvane {

/// The outer size and place that the program requested for a window, kept while the window
/// manager changes the frame around it.
///
/// The frame is known only after the window has been shown, and may change at any time later, also
/// because the window was given another size or other limits. Each time the window is arranged
/// anew, until the operator moves or resizes it. A maximised window is left alone: its size is the
/// window manager's, and so is the way back.
class WindowPlace : public QObject
{
    Q_OBJECT

public:
    /// The one of `window`, which owns it.
    static WindowPlace &of(QWidget *window);

    /// The frame that the window has when it is neither maximised nor full screen; null until it
    /// has been shown.
    QMargins frame() const { return m_frame; }
    /// The frame that it has now, as far as that has been followed.
    QMargins presentFrame() const;

    /// True while the window keeps the outer size that the program gave it.
    bool keepsOuterSize() const { return m_outerSize.isValid(); }
    /// Gives the window an outer size, at once and with every other frame.
    void setOuterSize(QSize size);
    /// Puts the window in the middle of its screen, at once and with every other frame.
    void centre();

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    /// The window is about to be arranged, perhaps for another frame or outer size.
    void arranging();
    /// The last notice of the window system has been handled.
    void followed();

private:
    explicit WindowPlace(QWidget *window);

    QMargins currentFrame() const;
    bool isEnlarged() const;
    bool isNormal() const;
    QRect wanted(const QRect &inner) const;
    void arrange();
    void followLater();
    void follow();
    void note(const QRect &inner);

    QWidget *m_window;
    WindowNotices m_notices;
    QMargins m_frame;
    std::optional<QMargins> m_enlargedFrame; ///< not to be taken for that of the normal window
    bool m_framed = false;                   ///< it has had a frame since it was made
    QSize m_outerSize;                       ///< empty once the operator has changed the size
    bool m_centred = false;                  ///< the operator hasn't moved it since
    bool m_requested = false;                ///< the window system hasn't confirmed it yet
};

} // namespace norvane
