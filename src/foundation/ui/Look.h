#pragma once

/// Sets the program's style, face and colours. The controls' places are fixed and every caption was
/// fitted with this face and size; colours come from the desktop, with disabled texts made
/// readable.
void applyLook();
