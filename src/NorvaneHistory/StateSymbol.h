#pragma once

#include "contract/History.h"

#include <QIcon>
#include <QPalette>

namespace norvane {

/// Drawings of what became of a message: each has a shape of its own, so that they can be told
/// apart without their colours.
namespace StateSymbol {

/// @param palette  the colours of the list that it stands in
/// @param ground   what it stands on there while it isn't selected
QIcon icon(MessageState state, const QPalette &palette,
           QPalette::ColorRole ground = QPalette::Base);

/// The symbol's colour, which can be seen on `ground`.
QColor colour(MessageState state, const QColor &ground);

} // namespace StateSymbol

} // namespace norvane
