#pragma once

#include <QtGlobal>

namespace norvane {

/// Whether the process with that number runs. One that has ended and that nobody has asked about
/// does not.
bool isProcessRunning(qint64 process);

} // namespace norvane
