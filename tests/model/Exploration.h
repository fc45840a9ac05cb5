#pragma once

#include "model/Rules.h"
#include "model/Step.h"

#include <array>
#include <cstddef>
#include <string>

namespace norvane::model {

struct Exploration
{
    std::size_t states = 0;
    std::array<bool, stepKindCount> taken{};     ///< the kinds of steps that were taken
    std::array<bool, stepKindCount> takenLate{}; ///< those that nobody waited for any more
    std::string violation;                       ///< empty if there is none
    std::string trace;                           ///< a shortest way to it, a line for each step
};

/// Looks at every state that can be reached until a violation is found. Without one, every message
/// is also known to end: from each state an end can be reached without another fault.
Exploration explore(const Rules &rules);

} // namespace norvane::model
