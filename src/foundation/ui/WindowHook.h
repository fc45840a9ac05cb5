#pragma once

#include "foundation/Globals.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

/// Holds a window to the window limits, which are of its outer size.
///
/// The window manager's frame is known only after the window has been shown, and can change later:
/// the limits of the inner size are worked out anew whenever it does, and an outer size that the
/// program asked for is kept.
class WindowHook : public QObject
{
    Q_OBJECT

public:
    /// Installs the hook; deleting it takes the limits off again.
    WindowHook(QWidget *window, const WindowLimits &limits);
    ~WindowHook() override;

    /// Changes the limits and, in the same step, the outer size of the window.
    void setLimits(const WindowLimits &limits, QSize outerSize);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QSize frame() const;
    void apply();

    QPointer<QWidget> m_window;
    WindowLimits m_limits;
    QSize m_appliedFrame{-1, -1};
    QSize m_askedOuterSize; ///< empty once the operator has changed the size
};
