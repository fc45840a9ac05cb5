#pragma once

#include <QtGlobal>

namespace norvane {

/// Puts this process, and what it starts, under limits that it can't take back: beyond its memory
/// nothing is allocated, beyond its processor time it is ended. It can write no file, leaves no
/// core, and ends with the process that started it.
/// @param memoryBytes  of address space; not held to in a build with sanitizers, which reserve
///                     far more than that
void limitThisProcess(quint64 memoryBytes, quint32 processorSeconds);

} // namespace norvane
