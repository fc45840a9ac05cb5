#pragma once

#include "foundation/Globals.h"

#include <QSize>
#include <QSizeF>

namespace norvane {

/// What the operation mode makes of the console's window.
namespace ModeWindow {

/// Outer size of the window in twips: wide on a server, narrow on a client.
QSize outerSize(bool serverMode);

/// The same in pixels.
QSize outerPixels(bool serverMode, QSizeF twipsPerPixel);

/// The window limits in pixels.
/// @param screen         the screen's size in twips
/// @param twipsPerPixel  horizontal and vertical measure of the screen
WindowLimits limits(bool serverMode, QSize screen, QSizeF twipsPerPixel);

} // namespace ModeWindow

} // namespace norvane
