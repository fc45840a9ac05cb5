#include "foundation/ui/Look.h"

#include "foundation/ui/AccessibleControls.h"
#include "foundation/ui/ConsoleStyle.h"
#include "foundation/ui/Contrast.h"
#include "foundation/ui/SvgPicture.h"

#include <QApplication>
#include <QFont>
#include <QPixmapCache>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int pointSize = 8;

/// The toolkit keeps what it has drawn under names that are new with each box, which therefore
/// never serves again. Its own limit is five times as high.
constexpr int keptDrawings = 2 * 1024; // KiB

struct TextOnGround
{
    QPalette::ColorRole text;
    QPalette::ColorRole ground;
};

/// What a text on `ground` stands on at worst: the style draws its buttons shaded, and on a dark
/// desktop much brighter than their colour.
QColor drawn(QPalette::ColorRole ground, const QColor &colour, const QPalette &colours)
{
    constexpr int brighter = 145; // per cent
    constexpr int darker = 104;
    if (ground != QPalette::Button)
        return colour;
    return Contrast::isDark(colours) ? colour.lighter(brighter) : colour.darker(darker);
}

void fadeDisabled(QPalette &colours, TextOnGround pair)
{
    const QColor ground =
        drawn(pair.ground, colours.color(QPalette::Disabled, pair.ground), colours);
    colours.setColor(QPalette::Disabled, pair.text,
                     Contrast::faded(colours.color(QPalette::Active, pair.text), ground));
}

void partSelection(QPalette &colours, QPalette::ColorGroup group)
{
    colours.setColor(group, QPalette::Highlight,
                     Contrast::apart(colours.color(group, QPalette::Highlight),
                                     colours.color(group, QPalette::HighlightedText)));
}

/// In each size that window managers and task bars ask for.
QIcon programIcon()
{
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256})
        icon.addPixmap(SvgPicture::pixmap(u":/images/app-icon.svg"_s, {size, size}, 1));
    return icon;
}

} // namespace

QPalette readable(QPalette colours)
{
    for (const TextOnGround pair : {TextOnGround{QPalette::WindowText, QPalette::Window},
                                    TextOnGround{QPalette::Text, QPalette::Base},
                                    TextOnGround{QPalette::ButtonText, QPalette::Button}})
        fadeDisabled(colours, pair);
    for (const QPalette::ColorGroup group :
         {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        partSelection(colours, group);
        // What tells how to fill an empty field.
        colours.setColor(group, QPalette::PlaceholderText,
                         Contrast::faded(colours.color(group, QPalette::Text),
                                         colours.color(group, QPalette::Base)));
    }
    return colours;
}

void applyLook()
{
    QApplication::setStyle(new ConsoleStyle);
    QFont font(u"Liberation Sans"_s, pointSize);
    font.setStyleHint(QFont::SansSerif);
    QApplication::setFont(font);
    QApplication::setPalette(readable(QApplication::palette()));
    QApplication::setWindowIcon(programIcon());
    QPixmapCache::setCacheLimit(keptDrawings);
    installAccessibleControls();
}

} // namespace norvane
