#pragma once

#include <QtGlobal>

namespace norvane {

/// True while the process with that number runs. A process that has ended but whose exit status
/// has not been collected yet doesn't run.
bool isProcessRunning(qint64 process);

} // namespace norvane
