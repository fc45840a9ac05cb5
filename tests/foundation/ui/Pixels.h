#pragma once

#include <QColor>
#include <QImage>
#include <QRect>

#include <functional>

namespace norvane {

namespace Pixels {

/// The smallest rectangle around the pixels that `isMeant` picks; empty when there are none.
inline QRect around(const QImage &image, const std::function<bool(QColor)> &isMeant)
{
    QRect found;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (isMeant(image.pixelColor(x, y)))
                found |= QRect(x, y, 1, 1);
        }
    }
    return found;
}

inline QRect opaque(const QImage &image)
{
    return around(image, [](const QColor &colour) { return colour.alpha() > 0; });
}

/// Whether `colour` is close to pure red, whatever the scaling made of it.
inline bool isRed(const QColor &colour)
{
    return colour.red() > 200 && colour.green() < 60 && colour.blue() < 60;
}

} // namespace Pixels

} // namespace norvane
