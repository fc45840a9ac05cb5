#pragma once

#include "contract/BusTypes.h"

namespace norvane {

namespace Bus {

/// How long an engine that is ending, or has lost its bus, may still take for the part that it is
/// sending, in milliseconds.
inline constexpr int engineEndLimit = 20'000;
/// How long an engine may take to come up: the one before it may be ending.
inline constexpr int engineStartLimit = engineEndLimit + callTimeout;

} // namespace Bus

} // namespace norvane
