#pragma once

#include <QtGlobal>

namespace norvane {

/// Sets limits for this process and its children that can't be lifted again: an allocation beyond
/// the memory limit fails, and a process beyond its processor time is ended. It can write no file,
/// leaves no core, and ends with the process that started it.
/// @param memoryBytes  of address space; not held to in a build with sanitizers, which reserve
///                     far more than that
void limitThisProcess(quint64 memoryBytes, quint32 processorSeconds);

} // namespace norvane
