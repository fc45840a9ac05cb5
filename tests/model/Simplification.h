#pragma once

#include "model/ClaimState.h"
#include "model/Rules.h"

namespace norvane::model {

/// The state without what no rule and no property can ask for any more, so that fewer states
/// differ.
State simplified(State state, const Rules &rules);

/// The state with its engines in a fixed order: the rules are the same for both, so that states
/// which differ by the engines' names alone lead to the same.
State ordered(State state);

} // namespace norvane::model
