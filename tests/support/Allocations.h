#pragma once

#include <QtGlobal>

#include <functional>

namespace norvane {

/// What a piece of work cost, in a measure that is the same on every machine. A program that links
/// this has allocation functions that count.
struct Allocations
{
    qint64 count = 0;
    qint64 bytes = 0;
};

/// From now on what this thread allocates is added to `counted`, until it is given nothing.
void countAllocations(Allocations *counted);

/// What is allocated by this thread while `work` runs.
Allocations allocationsOf(const std::function<void()> &work);

} // namespace norvane
