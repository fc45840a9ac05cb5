#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

#include <cmath>

namespace norvane {

/// Lengths on screen are given in twips (1/1440 inch) as single-precision numbers.
namespace Twips {

/// Place and size in twips, relative to the container.
struct Rect
{
    float left = 0;
    float top = 0;
    float width = 0;
    float height = 0;

    bool operator==(const Rect &) const = default;
};

inline constexpr float perInch = 1440;

/// Twips that a pixel stands for at `dotsPerInch`: 15 at 96.
inline constexpr float perPixel(float dotsPerInch)
{
    return perInch / dotsPerInch;
}

/// Both edges are rounded by themselves, so that controls that touch in twips touch in pixels.
inline QRect toPixels(const Rect &rect, QSizeF twipsPerPixel)
{
    const auto pixel = [](float twips, qreal scale) {
        return static_cast<int>(std::lround(static_cast<qreal>(twips) / scale));
    };
    const int left = pixel(rect.left, twipsPerPixel.width());
    const int top = pixel(rect.top, twipsPerPixel.height());
    const int right = pixel(rect.left + rect.width, twipsPerPixel.width());
    const int bottom = pixel(rect.top + rect.height, twipsPerPixel.height());
    return {left, top, right - left, bottom - top};
}

} // namespace Twips

} // namespace norvane
