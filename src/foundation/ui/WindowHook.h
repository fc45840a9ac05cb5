#pragma once

#include "foundation/Globals.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

namespace norvane {

/// Holds a window to the window limits, which are of its outer size: those of its inner size follow
/// the frame.
class WindowHook : public QObject
{
    Q_OBJECT

public:
    /// Installs the hook; deleting it takes the limits off again.
    WindowHook(QWidget *window, const WindowLimits &limits);
    ~WindowHook() override;

    /// Changes the limits and, in the same step, the outer size of the window.
    void setLimits(const WindowLimits &limits, QSize outerSize);

private:
    void onArranging();
    void onFollowed();
    QSize smallest() const;
    QSize largest() const;
    void apply();

    QPointer<QWidget> m_window;
    WindowLimits m_limits;
};

} // namespace norvane
