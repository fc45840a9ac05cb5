#pragma once

namespace norvane {

namespace simulator {

/// What is wrong with a PDU.
enum class PduFault {
    NotHexadecimal,
    Truncated,
    TrailingOctets,
    WrongLength,
    BadServiceCentre,
    BadType,
    BadAddress,
    BadCoding,
    BadValidity,
    BadTimestamp,
    BadHeader,
    BadUserData
};

} // namespace simulator

} // namespace norvane
