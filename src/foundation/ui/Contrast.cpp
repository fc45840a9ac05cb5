#include "foundation/ui/Contrast.h"

#include <algorithm>
#include <cmath>

namespace norvane {

namespace {

constexpr int steps = 64; // from one colour to another

/// Relative luminance of an sRGB colour, 0 to 1.
double luminance(const QColor &colour)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

/// The colour that stands `step` steps from `from` to `to`.
QColor between(const QColor &from, const QColor &to, int step)
{
    const auto part = [step](int start, int end) { return start + (end - start) * step / steps; };
    return QColor(part(from.red(), to.red()), part(from.green(), to.green()),
                  part(from.blue(), to.blue()));
}

} // namespace

double Contrast::ratio(const QColor &one, const QColor &other)
{
    const auto [darker, brighter] = std::minmax({luminance(one), luminance(other)});
    return (brighter + 0.05) / (darker + 0.05);
}

QColor Contrast::faded(const QColor &text, const QColor &ground)
{
    for (int step = steps / 2; step > 0; --step) {
        const QColor candidate = between(text, ground, step);
        if (ratio(candidate, ground) >= least)
            return candidate;
    }
    return text;
}

QColor Contrast::apart(const QColor &colour, const QColor &other, double wanted)
{
    const QColor away = ratio(other, Qt::black) > ratio(other, Qt::white) ? Qt::black : Qt::white;
    for (int step = 0; step < steps; ++step) {
        const QColor candidate = between(colour, away, step);
        if (ratio(candidate, other) >= wanted)
            return candidate;
    }
    return away;
}

bool Contrast::isDark(const QPalette &colours)
{
    return luminance(colours.color(QPalette::Window)) <
           luminance(colours.color(QPalette::WindowText));
}

QColor Contrast::plainGround(const QPalette &colours)
{
    return isDark(colours) ? Qt::black : Qt::white;
}

} // namespace norvane
