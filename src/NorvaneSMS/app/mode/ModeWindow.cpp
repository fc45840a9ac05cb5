#include "NorvaneSMS/app/mode/ModeWindow.h"

namespace norvane {

namespace {

constexpr QSize serverSize{15135, 7785};
constexpr QSize clientSize{8610, 7785};

int pixels(int twips, qreal twipsPerPixel)
{
    return static_cast<int>(twips / twipsPerPixel);
}

} // namespace

QSize ModeWindow::outerSize(bool serverMode)
{
    return serverMode ? serverSize : clientSize;
}

QSize ModeWindow::outerPixels(bool serverMode, QSizeF twipsPerPixel)
{
    const QSize twips = outerSize(serverMode);
    return {pixels(twips.width(), twipsPerPixel.width()),
            pixels(twips.height(), twipsPerPixel.height())};
}

WindowLimits ModeWindow::limits(bool serverMode, QSize screen, QSizeF twipsPerPixel)
{
    const QSize smallest = outerSize(serverMode);
    const QSize largest = serverMode ? screen : clientSize;
    const qreal horizontal = twipsPerPixel.width();
    const qreal vertical = twipsPerPixel.height();
    // The maximum height goes by the horizontal measure, in both modes.
    return {pixels(smallest.width(), horizontal), pixels(smallest.height(), vertical),
            pixels(largest.width(), horizontal), pixels(largest.height(), horizontal)};
}

} // namespace norvane
