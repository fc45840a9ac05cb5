#pragma once

#include "gsm-simulator/PduDecoder.h"

namespace norvane {

namespace simulator {

struct Profile;

/// Reads what a terminal wrote at the prompt of a text-mode submission.
/// @param number   the recipient
/// @param entry    the bytes between the prompt and Ctrl-Z
/// @param profile  character set, coding and first octet that are in force
/// @return the part, or nothing if the bytes don't make a message of one part
std::optional<SubmittedPart> readTextSubmission(const Address &number, const QByteArray &entry,
                                                const Profile &profile);

} // namespace simulator

} // namespace norvane
