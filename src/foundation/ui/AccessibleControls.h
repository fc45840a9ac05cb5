#pragma once

namespace norvane {

/// Tells screen readers what the program's own controls are: a captioned frame is a group, a
/// drawing is a picture, the console is a window. The toolkit knows the others. To be called once.
void installAccessibleControls();

} // namespace norvane
