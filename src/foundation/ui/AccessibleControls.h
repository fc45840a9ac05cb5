#pragma once

namespace norvane {

/// Describes the program's own controls to screen readers: a captioned frame is a group, a drawing
/// is a picture, the console is a window. The toolkit knows the others. To be called once.
void installAccessibleControls();

} // namespace norvane
