#include "NorvaneSMS/console/WindowSizer.h"

#include "NorvaneSMS/app/mode/ModeWindow.h"
#include "foundation/Globals.h"
#include "foundation/ui/FormSetUp.h"
#include "foundation/ui/Twips.h"
#include "foundation/ui/WindowHook.h"
#include "foundation/ui/WindowPlace.h"

#include <QScreen>
#include <QWidget>

namespace norvane {

WindowSizer::WindowSizer(QWidget *window) : m_window(window) {}

WindowSizer::~WindowSizer() = default;

void WindowSizer::setMode(bool serverMode)
{
    const QSizeF twipsPerPixel = norvane::twipsPerPixel(m_window);
    const QSize screen = m_window->screen()->size();
    const QSize screenTwips(qRound(screen.width() * twipsPerPixel.width()),
                            qRound(screen.height() * twipsPerPixel.height()));
    gWindowLimits = ModeWindow::limits(serverMode, screenTwips, twipsPerPixel);

    const QSize outerPixels = ModeWindow::outerPixels(serverMode, twipsPerPixel);
    m_window->setWindowState(m_window->windowState() &
                             ~(Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen));
    if (m_hook)
        m_hook->setLimits(gWindowLimits, outerPixels);
    else
        WindowPlace::of(m_window).setOuterSize(outerPixels);
    CenterForm(m_window);
}

void WindowSizer::watch()
{
    m_hook = std::make_unique<WindowHook>(m_window, gWindowLimits);
}

void WindowSizer::unwatch()
{
    m_hook.reset();
}

} // namespace norvane
