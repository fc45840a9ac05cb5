#include "TovekSMService/host/PinRule.h"

namespace norvane {

PinGate::Decision decidePinAttempt(PinHistory history, std::optional<int> triesLeft)
{
    switch (history) {
    case PinHistory::Accepted:
        return PinGate::Decision::Try;
    case PinHistory::Tried:
    case PinHistory::Refused:
        return PinGate::Decision::AlreadyTried;
    case PinHistory::NeverTried:
        break;
    }
    return triesLeft && *triesLeft < 2 ? PinGate::Decision::TooFewTries : PinGate::Decision::Try;
}

} // namespace norvane
