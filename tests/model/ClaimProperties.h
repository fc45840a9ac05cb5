#pragma once

#include "model/ClaimModel.h"

#include <string_view>

namespace norvane::model {

// What is wrong, in words; empty if nothing is.

/// What must hold in every state.
std::string_view violationIn(const State &state);

/// What must hold of every step.
std::string_view violationBy(const Move &move, const State &before);

/// What must hold where nothing can happen any more but another fault.
std::string_view violationAtEnd(const State &state);

} // namespace norvane::model
