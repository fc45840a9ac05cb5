#pragma once

#include "gsm-simulator/ControlFault.h"
#include "gsm-simulator/DeliverMessage.h"

#include <chrono>
#include <variant>
#include <vector>

namespace norvane {

namespace simulator {

/// A message that somebody wants the network to deliver.
struct DeliverRequest
{
    DeliverMessage message;
    std::vector<int> order; ///< the parts to deliver, from 1; empty: each once and in order
    std::chrono::milliseconds delay{0};
};

/// Reads a request that is written as a JSON object. Its members, all but `from` and one of `text`
/// and `data` optional:
///   from       "+" and digits (international), digits, or up to 11 letters
///   type       "international", "national", "unknown" or "alphanumeric", where `from` leaves it
///   open text       the text; data: octets in hexadecimal digits, for an 8-bit message coding
///   "gsm7", "ucs2" or "8bit"; left out, a text is gsm7 where it can be, else ucs2 single     "es"
///   or "pt": the single shift table; locking: "es" or "pt", the locking shift table class      0
///   to 3 dcs, pid   the octets of data coding scheme and protocol; dcs has to fit the coding time
///   with its zone, as in "2026-03-09T12:00:00+01:00"; left out, it is `now` reference  that parts
///   share, 0 to 255, with bits 16 to 65535; bits: 8 or 16 part, parts  the message is that part of
///   so many order      a list of part numbers: those parts are delivered, in this order port,
///   fromPort, portBits   application ports, of 16 bits or 8 delay      milliseconds from now on
std::variant<DeliverRequest, ControlFault> readDeliverRequest(const QByteArray &json,
                                                              const QDateTime &now);

} // namespace simulator

} // namespace norvane
