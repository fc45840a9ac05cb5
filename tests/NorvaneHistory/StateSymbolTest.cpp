#include "NorvaneHistory/StateSymbol.h"

#include "NorvaneHistory/HistoryTexts.h"
#include "foundation/ui/Contrast.h"

#include <QImage>
#include <QPixmap>
#include <QSet>

#include <gtest/gtest.h>

namespace norvane {

namespace {

/// Which points of a symbol are drawn at all.
QImage shapeOf(MessageState state, const QPalette &palette)
{
    return StateSymbol::icon(state, palette)
        .pixmap(32, 32)
        .toImage()
        .convertToFormat(QImage::Format_Alpha8);
}

TEST(StateSymbol, everyStateHasAShapeOfItsOwn)
{
    const QPalette palette(Qt::white);
    for (const MessageState one : HistoryTexts::states) {
        const QImage shape = shapeOf(one, palette);
        EXPECT_FALSE(shape.isNull());
        EXPECT_NE(shape, QImage(shape.size(), shape.format()));
        for (const MessageState other : HistoryTexts::states) {
            if (one != other) {
                EXPECT_NE(shape, shapeOf(other, palette));
            }
        }
    }
}

TEST(StateSymbol, everyStateCanBeSeenOnBrightDarkAndSelectedRows)
{
    for (const QColor &ground : {QColor(Qt::white), QColor(Qt::black), QColor(0x30, 0x8C, 0xC6),
                                 QColor(0x2A, 0x2A, 0x2A), QColor(0xF7, 0xF7, 0xF7)}) {
        for (const MessageState state : HistoryTexts::states)
            EXPECT_GE(Contrast::ratio(StateSymbol::colour(state, ground), ground),
                      Contrast::leastOfOutlines)
                << qPrintable(ground.name()) << static_cast<int>(state);
    }
}

} // namespace

} // namespace norvane
