#pragma once

#include "TovekSMService/modem/device/PinGate.h"
#include "TovekSMService/store/PinHistory.h"

namespace norvane {

/// The rule by which a gate decides: an accepted PIN is always tried, another one at most once and
/// only while the SIM has two tries or more left, or doesn't say.
PinGate::Decision decidePinAttempt(PinHistory history, std::optional<int> triesLeft);

} // namespace norvane
