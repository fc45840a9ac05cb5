#pragma once

#include <QColor>
#include <QPalette>

namespace norvane {

/// How well a text reads on its ground.
namespace Contrast {

/// What a text of ordinary size needs to be read by people with weak sight.
inline constexpr double least = 4.5;

/// What an outline or a picture needs.
inline constexpr double leastOfOutlines = 3;

/// The ratio of the two colours' luminances, from 1 (the same) to 21 (black and white); it doesn't
/// matter which of them is the text.
double ratio(const QColor &one, const QColor &other);

/// `text`, as far on the way to `ground` as it can go and still be read, half-way at most.
QColor faded(const QColor &text, const QColor &ground);

/// `colour`, moved away from `other` until their ratio is `wanted`, as far as black or white allow.
QColor apart(const QColor &colour, const QColor &other, double wanted = least);

/// Whether `colours` are those of a dark desktop.
bool isDark(const QPalette &colours);

/// Black on a dark desktop and white on a bright one: the ground on which a text whose colour is
/// given reads best without leaving the desktop's look.
QColor plainGround(const QPalette &colours);

} // namespace Contrast

} // namespace norvane
