#pragma once

#include <QString>

namespace norvane {

/// The folder of this test process that XDG_CONFIG_HOME, XDG_DATA_HOME and XDG_RUNTIME_DIR lie in.
/// It is made before the first test and removed after the last one.
QString testSandbox();

} // namespace norvane
