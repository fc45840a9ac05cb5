#pragma once

#include <memory>

class QThread;

namespace norvane {

/// Threads that outlast whoever started them, as a server may take long to answer them.
namespace LeftThreads {

/// Waits for the thread, and so many milliseconds at most; behind that it is left to itself.
void endOrLeave(std::unique_ptr<QThread> thread, int ms);
/// Whether one still runs. The program can't be taken apart under it.
bool areAny();

} // namespace LeftThreads

} // namespace norvane
