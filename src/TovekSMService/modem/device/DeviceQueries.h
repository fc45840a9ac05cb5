#pragma once

#include "TovekSMService/modem/at/AtDialogue.h"

namespace norvane {

/// The questions that fill a DeviceDetails. None of them fails: what the device doesn't tell stays
/// as it is, or becomes empty where an earlier value would be out of date.
namespace DeviceQueries {

/// Who made it, which it is, and its SIM: what stays the same while the line is open. A field that
/// is known isn't asked for again.
QList<AtDialogue::Question> identity(DeviceDetails *details, const ModemTimings &timings);

/// The device's IMEI alone, and the SIM's number alone.
QList<AtDialogue::Question> imei(DeviceDetails *details, const ModemTimings &timings);
QList<AtDialogue::Question> iccid(QString *iccid, const ModemTimings &timings);

/// Network, signal, battery, clock, service centre: what changes.
QList<AtDialogue::Question> condition(DeviceDetails *details, const ModemTimings &timings);

} // namespace DeviceQueries

} // namespace norvane
