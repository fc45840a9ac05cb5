#pragma once

namespace norvane {

/// Drops the key, mouse, wheel and touch events of the program's windows that are not handled yet:
/// an operator caused them while a call blocked the window and showed no reaction. All other events
/// that wait are handled.
void dropPendingInput();

} // namespace norvane
