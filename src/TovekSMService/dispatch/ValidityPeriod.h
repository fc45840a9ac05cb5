#pragma once

#include <QtGlobal>

#include <optional>

namespace norvane {

/// The relative validity period of a message, TP-VP (3GPP TS 23.040, 9.2.3.12.1): the longest one
/// that isn't above `minutes`, so that nothing is delivered later than it was wished.
/// @param minutes  less than 5, the shortest, gives 5; 0 gives none
std::optional<quint8> relativeValidity(int minutes);

/// The minutes of a relative validity period.
int validityMinutes(quint8 period);

} // namespace norvane
