#pragma once

namespace norvane {

/// What is on record about a PIN and a SIM.
enum class PinHistory {
    NeverTried,
    Tried, ///< it left, and what became of it isn't known
    Accepted,
    Refused,
};

} // namespace norvane
