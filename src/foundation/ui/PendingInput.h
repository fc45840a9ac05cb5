#pragma once

namespace norvane {

/// Drops what key, mouse, wheel and touch have sent to the program's windows and is not handled
/// yet: what an operator pressed while a call blocked the window, and who has seen nothing come of
/// it. All other events that wait are handled.
void dropPendingInput();

} // namespace norvane
