#pragma once

#include <QPalette>

namespace norvane {

/// Sets the program's style, face, colours and icon. The controls' places are fixed and every
/// caption was fitted with this face and size; colours come from the desktop, made readable where
/// they aren't. The program's own controls are described to screen readers.
void applyLook();

/// `colours` with disabled texts faded no further than they can be read, and the ground of a
/// selection moved away from its text where it is too close.
QPalette readable(QPalette colours);

} // namespace norvane
